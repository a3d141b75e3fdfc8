// The file side of CZuLogger: roll-over, pruning, faults and recovery, and a
// file kept open while another writer rolls it over.
#include <algorithm>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/FileSystem.h"
#include "platform/Clock.h"
#include "platform/Process.h"
#include "text/StringFormat.h"

namespace {

using namespace ZuLogTest;

const std::string kPayload(1000, 'r');
// Enough 1000-byte lines to pass a 1 MiB limit once.
constexpr int kLinesPastOneMiB = 1100;

void FillPastOneMiB(CZuLogger& logger) {
  for (int i = 1; i <= kLinesPastOneMiB; ++i)
    logger.LogMessage(1, "Fill", static_cast<unsigned long>(i), nullptr, "%s", kPayload.c_str());
}

bool Contains(const std::vector<std::string>& lines, const std::string& part) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(part) != std::string::npos; });
}

TEST(LoggerFile, RollOverRenamesTheFileAndStartsANewOne) {
  CScratchFolder folder("roll");
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(TestApp("RollApp"), folder.Path()).IsError());
  logger.SetLogFileSize(1);
  FillPastOneMiB(logger);

  // The old file ends with the line that reached the limit; the new one is
  // headed and opens with the roll-over line.
  const std::vector<std::string> rolled = RolledFiles(folder.Path(), "RollApp");
  ASSERT_EQ(1u, rolled.size());
  const std::size_t oldSize = ReadFile(folder.File(rolled[0])).size();
  EXPECT_TRUE(oldSize >= (1u << 20) && oldSize < (1u << 20) + 1200u) << oldSize;
  EXPECT_EQ(0u, ReadFile(logger.GetLogFilePath()).find(std::string(80, '*') + "\r\n* Machine"));
  const std::vector<std::string> oldLines = BodyLines(folder.File(rolled[0]));
  const std::vector<std::string> newLines = BodyLines(logger.GetLogFilePath());
  ASSERT_EQ(kLinesPastOneMiB + 1u, oldLines.size() + newLines.size());
  EXPECT_NE(std::string::npos, oldLines.back().find("Fill(" + std::to_string(oldLines.size()) + ")"));
  const std::string said = MaskTime(newLines[0]);
  const std::string text = "Log file for Module [RollApp] rolled over. File size is 1MB, Create time [";
  ASSERT_EQ(0u, said.find(LineStart() + "--- " + kPrefixField + "CZuLogger::RollOver(")) << said;
  const std::string created = said.substr(said.find(text) + text.size());
  EXPECT_TRUE(created == "INVALID TIME        ]." || MatchesPattern(created, "dddd/dd/dd dd:dd:dd ].")) << said;
}

TEST(LoggerFile, ARollOverNeverReplacesAFile) {
  CScratchFolder folder("collide");
  CSyslogCapture syslog;
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(TestApp("CollideApp"), folder.Path()).IsError());
  logger.SetLogFileSize(1);
  // Every name a roll-over could take in the next seconds is taken.
  std::vector<std::string> taken;
  const long long now = static_cast<long long>(std::time(nullptr));
  for (long long second = now - 1; second < now + 20; ++second) {
    FXPlatform::TLocalTime t;
    ASSERT_TRUE(FXPlatform::LocalTimeOf(second, t));
    taken.push_back(FXString::Format("CollideApp_%04d_%02d_%02d_%02d_%02d_%02d.log", t.year, t.month, t.day, t.hour,
                                     t.minute, t.second));
    WriteFile(folder.File(taken.back()), "taken");
  }

  CZuError failure = CZuError::Success();
  int written = 0;
  while (!failure.IsError() && written < kLinesPastOneMiB)
    failure = logger.logMessages((kPayload + std::to_string(++written)).c_str());
  EXPECT_TRUE(FXErrorUtil::IsWin32(failure, ERROR_ALREADY_EXISTS)) << failure.AsString();
  const std::string moving =
      "Failed moving log file [" + logger.GetLogFilePath() + "] to [" + folder.Path() + "CollideApp_";
  EXPECT_NE(std::string::npos, failure.AsString().find(moving)) << failure.AsString();
  EXPECT_TRUE(syslog.Contains(moving) && syslog.Contains("], Module=[CollideApp], error=["));

  // The lines stay in the current file; nothing was overwritten.
  for (int i = 0; i < 20; ++i) logger.logMessages("more");
  const std::vector<std::string> lines = Lines(ReadFile(logger.GetLogFilePath()));
  EXPECT_EQ(11u + static_cast<std::size_t>(written) + 20u, lines.size());
  EXPECT_EQ(kPayload + std::to_string(written), lines[10 + static_cast<std::size_t>(written)]);
  for (const std::string& name : taken) EXPECT_EQ("taken", ReadFile(folder.File(name))) << name;
  EXPECT_EQ(taken.size(), RolledFiles(folder.Path(), "CollideApp").size());
}

TEST(LoggerFile, RollOverPrunesOldVersions) {
  CScratchFolder folder("prune");
  for (const char* app : {"KeepApp", "AgeApp"})
    for (int i = 1; i <= 4; ++i) WriteFile(folder.File(FXString::Format("%s_2001_01_01_00_00_0%d.log", app, i)), "old");
  for (const char* other : {"KeepApp_1.log", "KeepApp_other.log", "KeepAppX_2001_01_01_00_00_00.log"})
    WriteFile(folder.File(other), "not a rolled version of KeepApp");

  // At most three versions; and rolled files older than a day go.
  CZuLogger keep, age;
  ASSERT_FALSE(keep.Initialize(TestApp("KeepApp"), folder.Path()).IsError());
  ASSERT_FALSE(age.Initialize(TestApp("AgeApp"), folder.Path()).IsError());
  keep.SetLogfileParams(3, 1, 0, 0, 0);
  age.SetLogfileParams(10, 1, 1, 0, 0);
  FillPastOneMiB(keep);
  FillPastOneMiB(age);

  const std::vector<std::string> kept = RolledFiles(folder.Path(), "KeepApp");
  ASSERT_EQ(3u, kept.size());
  EXPECT_EQ("KeepApp_2001_01_01_00_00_03.log", kept[0]);
  EXPECT_EQ("KeepApp_2001_01_01_00_00_04.log", kept[1]);
  EXPECT_GE(ReadFile(folder.File(kept[2])).size(), 1u << 20);
  const std::vector<std::string> young = RolledFiles(folder.Path(), "AgeApp");
  ASSERT_EQ(1u, young.size());
  EXPECT_GE(ReadFile(folder.File(young[0])).size(), 1u << 20);
  for (const char* other : {"KeepApp_1.log", "KeepApp_other.log", "KeepAppX_2001_01_01_00_00_00.log"})
    EXPECT_TRUE(FXPlatform::PathExists(folder.File(other))) << other;
}

TEST(LoggerFile, OpenFailuresAreReportedOnceAndLoggingResumes) {
  CScratchFolder folder("reopen");
  CSyslogCapture syslog;
  CZuLogger logger;
  const std::string logs = folder.File("logs");
  ASSERT_FALSE(logger.Initialize(TestApp("ReopenApp"), logs).IsError());
  const std::string path = logger.GetLogFilePath();
  std::filesystem::remove_all(logs);

  CZuError result = logger.logMessages("lost 1");
  EXPECT_TRUE(FXErrorUtil::IsWin32(result, kZuIsWindows ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND))
      << result.AsString();
  const std::string failed = "Failed open log file [" + path + "], Module[ReopenApp], Error ";
  EXPECT_NE(std::string::npos, result.AsString().find(failed)) << result.AsString();
  ASSERT_EQ(1u, syslog.Texts().size());
  const std::string report = syslog.Texts()[0];
  EXPECT_EQ(0u, report.find(std::to_string(FXPlatform::CurrentProcessId()) + ":ReopenApp:" + failed)) << report;
  EXPECT_NE(std::string::npos, report.find(". Make sure this log file is not locked and has full permissions. Some of "
                                           "the log lines will not be logged because of this error"));
  EXPECT_TRUE(logger.logMessages("lost 2").IsError());
  EXPECT_EQ(1u, syslog.Texts().size());  // once while the fault lasts

  std::filesystem::create_directories(logs);
  EXPECT_FALSE(logger.logMessages("after").IsError());
  EXPECT_TRUE(
      syslog.Contains("Successfully opened log [" + path + "] Module[ReopenApp]. Reseting the last failure time"));
  EXPECT_EQ(std::vector<std::string>{"after"}, BodyLines(path));

  // Without retries a file that failed is left alone for a while.
  CZuLogger::SetRetryOnLogOpenFail(false);
  std::filesystem::remove_all(logs);
  EXPECT_TRUE(logger.logMessages("lost 3").IsError());
  std::filesystem::create_directories(logs);
  EXPECT_TRUE(FXErrorUtil::IsWin32(logger.logMessages("not tried"), ERROR_OPEN_FAILED));
  EXPECT_FALSE(FXPlatform::PathExists(path));
  CZuLogger::SetRetryOnLogOpenFail(true);
  EXPECT_FALSE(logger.logMessages("tried again").IsError());
  EXPECT_EQ(std::vector<std::string>{"tried again"}, BodyLines(path));
}

TEST(LoggerFile, AFullDiskLosesTheLinesButNotTheLogger) {
  if (kZuIsWindows) GTEST_SKIP() << "needs /dev/full";
  CScratchFolder folder("full");
  CSyslogCapture syslog;
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(TestApp("FullApp"), folder.Path()).IsError());
  const std::string path = logger.GetLogFilePath();
  std::filesystem::create_symlink("/dev/full", path);

  const CZuError result = logger.logMessages("lost");
  EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_DISK_FULL)) << result.AsString();
  EXPECT_TRUE(syslog.Contains("Failed writing log header to log [" + path + "] Module [FullApp]"));
  EXPECT_TRUE(syslog.Contains("Failed writing log message to log [" + path + "] Module [FullApp] Errorcode[112]"));

  std::filesystem::remove(path);
  logger.LogMessage(1, "F", 1, nullptr, "space again");
  EXPECT_EQ(std::vector<std::string>{LineStart() + "--- " + kPrefixField + "F(1) - space again"},
            std::vector<std::string>{MaskTime(BodyLines(path).at(0))});
}

int g_reports = 0;
CZuLogger* g_reporting = nullptr;

// Logs each failure report through the logger that failed, as a host's
// syslog callback may well do.
void LogTheReport(const char* text) {
  if (++g_reports > 20) return;  // unguarded, the recursion would never end
  g_reporting->logMessages(text);
}

TEST(LoggerFile, AReportThatLogsThroughTheFailingLoggerEndsThere) {
  CZuLogger logger;  // never initialised: every write fails and is reported
  g_reporting = &logger;
  g_reports = 0;
  const CZuLogger::SyslogCallback previous = CZuLogger::SetSyslogCallback(LogTheReport);
  EXPECT_TRUE(logger.logMessages("refused").IsError());
  CZuLogger::SetSyslogCallback(previous);
  EXPECT_EQ(1, g_reports);
}

TEST(LoggerFile, AKeptOpenFileReplacedOrDeletedBehindTheLoggerIsLeft) {
  CScratchFolder folder("replaced");
  const std::string app = TestApp("ReplacedApp");
  CZuLogger keeper, other;
  ASSERT_FALSE(keeper.Initialize(app, folder.Path(), 2, true).IsError());
  ASSERT_FALSE(other.Initialize(app, folder.Path()).IsError());
  const std::string path = keeper.GetLogFilePath();
  keeper.LogMessage(1, "F", 1, nullptr, "first");

  // Moved away and replaced by a copy of the same size, as a rotating tool
  // may leave it: the path names another file now.
  const std::string moved = folder.File("moved.log");
  std::filesystem::rename(path, moved);
  WriteFile(path, ReadFile(moved));
  keeper.LogMessage(1, "F", 2, nullptr, "second");
  EXPECT_FALSE(Contains(BodyLines(moved), "second"));
  EXPECT_TRUE(Contains(BodyLines(path), "second"));

  if (!kZuIsWindows) {
    // Deleted (Windows keeps an open file's name until it is closed).
    std::filesystem::remove(path);
    keeper.LogMessage(1, "F", 3, nullptr, "third");
    other.LogMessage(1, "F", 4, nullptr, "fourth");
    keeper.LogMessage(1, "F", 5, nullptr, "fifth");
    // One new file, headed once, with every line in order.
    const std::string text = ReadFile(path);
    EXPECT_EQ(0u, text.find(std::string(80, '*') + "\r\n* Machine")) << text.substr(0, 200);
    const std::vector<std::string> body = BodyLines(path);
    ASSERT_EQ(3u, body.size());
    EXPECT_NE(std::string::npos, body[0].find("third"));
    EXPECT_NE(std::string::npos, body[1].find("fourth"));
    EXPECT_NE(std::string::npos, body[2].find("fifth"));
  }
}

TEST(LoggerFile, AFileKeptOpenFollowsAnotherWritersRollOver) {
  CScratchFolder folder("follow");
  CZuLogger keeper, roller;
  ASSERT_FALSE(keeper.Initialize(TestApp("FollowApp"), folder.Path(), 2, true).IsError());
  ASSERT_FALSE(roller.Initialize(TestApp("FollowApp"), folder.Path()).IsError());
  roller.SetLogFileSize(1);
  keeper.LogMessage(1, "F", 1, nullptr, "keeper before");
  FillPastOneMiB(roller);
  keeper.LogMessage(1, "F", 2, nullptr, "keeper after");
  EXPECT_TRUE(keeper.isLogFileOpen());

  const std::vector<std::string> rolled = RolledFiles(folder.Path(), "FollowApp");
  ASSERT_EQ(1u, rolled.size());
  const std::vector<std::string> old = BodyLines(folder.File(rolled[0]));
  const std::vector<std::string> current = BodyLines(keeper.GetLogFilePath());
  EXPECT_TRUE(Contains(old, "keeper before"));
  EXPECT_FALSE(Contains(old, "keeper after"));
  ASSERT_FALSE(current.empty());
  EXPECT_NE(std::string::npos, current.back().find("keeper after"));
}

}  // namespace
