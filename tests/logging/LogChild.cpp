// The helper program that the multi-process tests start as child processes.
//   zu_log_child write <folder> <app> <index> <lines> <payload bytes>
//     logs the lines from two threads through the process-wide logger,
//     1 MiB files
//   zu_log_child hold <folder> <app> <marker file>
//     takes the module's lock, starts a line in the log that it never ends,
//     creates the marker and waits to be killed
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "logging/LogHook.h"
#include "logging/ZuLogger.h"
#include "platform/ProcessLock.h"

namespace {

int Write(const std::string& folder, const std::string& app, int index, int lines, int payload) {
  CZuLogger& logger = CZuLogger::GetGlobalInstance();
  if (logger.Initialize(app, folder).IsError()) return 2;
  logger.SetLogfileParams(100000, 1, 0, 0, 0);
  // A line of the lowest layers, as the result object writes when it runs
  // out of memory: it reaches the process-wide logger.
  FXLogHook::Write(-1, "CZuError::CZuError", 20,
                   "Failed to allocate memory, error handling is compromised, ErrorItem=child %d", index);
  // Two threads, so that lines meet inside the process as well as across.
  const std::string text(static_cast<std::size_t>(payload), 'x');
  auto writeEvery = [&](int first) {
    for (int i = first; i < lines; i += 2)
      logger.LogMessage(1, "LogChild::Write", static_cast<unsigned long>(i) + 1, index + 1LL, nullptr,
                        "child %d line %d %s", index, i, text.c_str());
  };
  std::thread other(writeEvery, 1);
  writeEvery(0);
  other.join();
  return 0;
}

int Hold(const std::string& folder, const std::string& app, const std::string& marker) {
  std::string name;
  if (CZuLogger::GetLockName(app.c_str(), folder, name).IsError()) return 2;
  FXPlatform::CProcessLock lock;
  bool abandoned = false;
  if (lock.Create(name).IsError() || lock.Acquire(CZuLogger::kLockTimeoutMs, abandoned).IsError()) return 3;
  std::ofstream(folder + app + ".log", std::ios::binary | std::ios::app) << "torn tail";
  std::ofstream(marker) << "locked";
  // Killed long before; the limit only spares a lost child.
  std::this_thread::sleep_for(std::chrono::minutes(2));
  return 4;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "write" && argc == 7)
    return Write(argv[2], argv[3], std::atoi(argv[4]), std::atoi(argv[5]), std::atoi(argv[6]));
  if (mode == "hold" && argc == 5) return Hold(argv[2], argv[3], argv[4]);
  return 1;
}
