#include "ThreadTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <thread>

#include "logging/ZuLogger.h"
#include "platform/ZuTypes.h"

namespace ZuThreadTest {

namespace {

const char kApp[] = "zu_threads_tests";

std::mutex g_lock;
std::vector<std::string> g_lines;

bool Capture(CZuLogger*, int, const char* text) {
  std::lock_guard<std::mutex> guard(g_lock);
  g_lines.emplace_back(text);
  return true;
}

class CLogEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    m_folder = std::filesystem::temp_directory_path() / "zu_threads_tests_log";
    std::filesystem::create_directories(m_folder);
    CZuLogger::SetLogMessageHook(&Capture);
    ASSERT_FALSE(CZuLogger::GetGlobalInstance().Initialize(kApp, m_folder.string() + "/", 2).IsError());
  }
  void TearDown() override {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
    // The logger's machine-wide lock is a file on Linux.
    if (!kZuIsWindows) std::filesystem::remove(std::string("/dev/shm/ZuLogger_") + kApp, ignored);
  }

 private:
  std::filesystem::path m_folder;
};

}  // namespace

void InstallLogCapture() {
  static const bool installed = [] {
    ::testing::AddGlobalTestEnvironment(new CLogEnvironment);
    return true;
  }();
  (void)installed;
}

std::vector<std::string> CapturedLines() {
  std::lock_guard<std::mutex> guard(g_lock);
  return g_lines;
}

void ClearCapturedLines() {
  std::lock_guard<std::mutex> guard(g_lock);
  g_lines.clear();
}

int CountLines(const std::string& part) {
  std::lock_guard<std::mutex> guard(g_lock);
  int count = 0;
  for (const std::string& line : g_lines)
    if (line.find(part) != std::string::npos) ++count;
  return count;
}

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace ZuThreadTest
