#include "LogTestSupport.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>

#include <gtest/gtest.h>

#include "logging/ZuLogger.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "platform/ZuTypes.h"
#include "text/StringFormat.h"

namespace ZuLogTest {

namespace {

std::mutex g_syslogLock;
std::vector<std::string> g_syslog;

void CaptureSyslog(const char* text) {
  std::lock_guard<std::mutex> guard(g_syslogLock);
  g_syslog.push_back(text);
}

std::mutex g_appsLock;
std::vector<std::string> g_apps;

// Removes the locks of the modules the tests used; see platform/ProcessLock.h
// for where Linux keeps them.
class CLockCleanup : public ::testing::Environment {
 public:
  void TearDown() override {
    if (kZuIsWindows) return;
    std::lock_guard<std::mutex> guard(g_appsLock);
    std::error_code ignored;
    for (const std::string& app : g_apps) std::filesystem::remove("/dev/shm/ZuLogger_" + app, ignored);
  }
};

::testing::Environment* const g_cleanup = ::testing::AddGlobalTestEnvironment(new CLockCleanup);

}  // namespace

std::string TestApp(const std::string& name) {
  std::lock_guard<std::mutex> guard(g_appsLock);
  if (std::find(g_apps.begin(), g_apps.end(), name) == g_apps.end()) g_apps.push_back(name);
  return name;
}

CScratchFolder::CScratchFolder(const std::string& tag) {
  static std::atomic<int> counter{0};
  m_path = FXPlatform::TempDirectory() + "zu_log_" + tag + "_" + std::to_string(FXPlatform::CurrentProcessId()) +
           "_" + std::to_string(counter++);
  std::filesystem::remove_all(m_path);
  std::filesystem::create_directories(m_path);
  m_path += FXPlatform::kPathSeparator;
}

CScratchFolder::~CScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary);
  out << content;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find("\r\n", start);
    if (end == std::string::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    lines.push_back(text.substr(start, end - start));
    start = end + 2;
  }
  return lines;
}

std::vector<std::string> BodyLines(const std::string& path) {
  std::vector<std::string> lines = Lines(ReadFile(path));
  // The header block: a border, the framed lines, a border.
  std::size_t skip = 0;
  if (!lines.empty() && lines[0].find_first_not_of('*') == std::string::npos) {
    skip = 1;
    while (skip < lines.size() && lines[skip].find_first_not_of('*') != std::string::npos) ++skip;
    if (skip < lines.size()) ++skip;
  }
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(std::min(skip, lines.size())));
  return lines;
}

std::vector<std::string> RolledFiles(const std::string& folder, const std::string& appName) {
  std::vector<std::string> names, rolled;
  FXPlatform::ListDirectory(folder, names);
  const std::string prefix = appName + "_";
  for (const std::string& name : names) {
    // app_YYYY_MM_DD_hh_mm_ss.log
    if (name.compare(0, prefix.size(), prefix) == 0 &&
        MatchesPattern(name.substr(prefix.size()), "dddd_dd_dd_dd_dd_dd.log"))
      rolled.push_back(name);
  }
  std::sort(rolled.begin(), rolled.end());
  return rolled;
}

bool MatchesPattern(const std::string& text, const char* pattern) {
  if (text.size() != std::strlen(pattern)) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool digit = std::isdigit(static_cast<unsigned char>(text[i])) != 0;
    if (pattern[i] == 'd' ? !digit : text[i] != pattern[i]) return false;
  }
  return true;
}

std::string MaskTime(const std::string& line) {
  // Past the process id and the thread id, each followed by blanks.
  std::size_t at = 0;
  for (int column = 0; column < 2; ++column) {
    at = line.find(' ', at);
    if (at == std::string::npos) return line;
    at = line.find_first_not_of(' ', at);
    if (at == std::string::npos) return line;
  }
  if (!MatchesPattern(line.substr(at, 15), "dd/dd dd:dd:dd ")) return line;
  return line.substr(0, at) + "MM/DD hh:mm:ss " + line.substr(at + 15);
}

std::string LineStart(int threadWidth) {
  const std::string thread = FXString::Format("%lx", FXPlatform::CurrentThreadId());
  const int width = std::max(threadWidth, static_cast<int>(thread.size()));
  return FXString::Format("%-5ld %-*s MM/DD hh:mm:ss ", static_cast<long>(FXPlatform::CurrentProcessId()), width,
                          thread.c_str());
}

CSyslogCapture::CSyslogCapture() {
  Clear();
  CZuLogger::SetSyslogCallback(CaptureSyslog);
}

CSyslogCapture::~CSyslogCapture() { CZuLogger::SetSyslogCallback(nullptr); }

const std::vector<std::string>& CSyslogCapture::Texts() const { return g_syslog; }

bool CSyslogCapture::Contains(const std::string& part) const {
  std::lock_guard<std::mutex> guard(g_syslogLock);
  return std::any_of(g_syslog.begin(), g_syslog.end(),
                     [&](const std::string& text) { return text.find(part) != std::string::npos; });
}

void CSyslogCapture::Clear() {
  std::lock_guard<std::mutex> guard(g_syslogLock);
  g_syslog.clear();
}

}  // namespace ZuLogTest
