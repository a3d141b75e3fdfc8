// The child process of the RunProcess tests:
//   zu_task_child <exit code> <milliseconds to sleep> [text]
// exits with the code after the sleep, or with the text's length when a
// text is given (so that the test sees how the command line was split).
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

int main(int argc, char** argv) {
  if (argc < 3) return 100;
  std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(argv[2])));
  if (argc > 4) return 101;
  return argc == 4 ? static_cast<int>(std::strlen(argv[3])) : std::atoi(argv[1]);
}
