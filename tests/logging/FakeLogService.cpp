// A stand-in for the logging service library: it keeps the lines it is
// handed, and refuses them while told to. The test reads them back through
// the exports below.
#include <string>
#include <vector>

namespace {

std::vector<std::string> g_lines;
bool g_refuse = false;

int Take(const char* exportName, const char* module, const char* directory, const char* line, unsigned int length) {
  if (g_refuse) return 1;
  g_lines.push_back(std::string(exportName) + "|" + module + "|" + directory + "|" + std::string(line, length));
  return 0;
}

}  // namespace

extern "C" {

int LogMessageAsyncSameProcess(const char* module, const char* directory, const char* line, unsigned int length) {
  return Take("LogMessageAsyncSameProcess", module, directory, line, length);
}

int LogMessageAsync(const char* module, const char* directory, const char* line, unsigned int length) {
  return Take("LogMessageAsync", module, directory, line, length);
}

int FakeServiceLineCount() { return static_cast<int>(g_lines.size()); }
const char* FakeServiceLine(int index) { return g_lines.at(static_cast<std::size_t>(index)).c_str(); }
void FakeServiceRefuse(int refuse) { g_refuse = refuse != 0; }

}  // extern "C"
