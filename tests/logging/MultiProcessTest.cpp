// Real processes sharing one module's log: many writers rolling the file
// over while they write, and a lock holder that dies.
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "platform/ProcessLock.h"
#include "support/CountingNew.h"

namespace {

using namespace ZuLogTest;

std::string ChildProgram() {
  const std::string self = FXPlatform::ExecutablePath();
  return self.substr(0, self.find_last_of("/\\") + 1) + ZU_LOG_CHILD;
}

// A line split into its columns; `ok` when it has them all.
struct TLine {
  bool ok = false;
  std::string job, function, message;
};

TLine Split(const std::string& line) {
  TLine split;
  const std::string masked = MaskTime(line);
  std::size_t at = masked.find("MM/DD hh:mm:ss ");
  if (at == std::string::npos) return split;
  at += 15;
  const std::size_t jobEnd = masked.find(' ', at);
  if (jobEnd == std::string::npos) return split;
  split.job = masked.substr(at, jobEnd - at);
  at = masked.find_first_not_of(' ', jobEnd);
  const std::string prefix = kPrefixField;
  if (at == std::string::npos || masked.compare(at, prefix.size(), prefix) != 0) return split;
  at += prefix.size();
  const std::size_t dash = masked.find(") - ", at);
  if (dash == std::string::npos) return split;
  split.function = masked.substr(at, dash + 1 - at);
  split.message = masked.substr(dash + 4);
  split.ok = true;
  return split;
}

TEST(LoggerProcesses, ManyProcessesShareOneRollingFile) {
  // Linux: 8 x 20,000 lines; under wine, where each process and call costs
  // far more, 4 x 2,000 longer lines. Either way the output is many times
  // the 1 MiB limit, so that the file rolls over every second they write.
  const int children = kZuIsWindows ? 4 : 8;
  const int linesEach = kZuIsWindows ? 2000 : 20000;
  const int payload = kZuIsWindows ? 2000 : 150;
  const std::string app = TestApp("SharedApp");
  CScratchFolder folder("processes");

  std::vector<std::unique_ptr<FXPlatform::CChildProcess>> running;
  for (int k = 0; k < children; ++k) {
    running.emplace_back(new FXPlatform::CChildProcess);
    const CZuError started = running.back()->Start(
        ChildProgram(), {"write", folder.Path(), app, std::to_string(k), std::to_string(linesEach), std::to_string(payload)});
    ASSERT_FALSE(started.IsError()) << started.AsString();
  }
  for (auto& child : running) {
    int exitCode = -1;
    ASSERT_FALSE(child->Wait(exitCode).IsError());
    EXPECT_EQ(0, exitCode);
  }

  std::vector<std::string> files = RolledFiles(folder.Path(), app);
  const std::size_t rolled = files.size();
  EXPECT_GE(rolled, 1u);
  files.push_back(app + ".log");

  std::vector<std::vector<char>> seen(static_cast<std::size_t>(children),
                                      std::vector<char>(static_cast<std::size_t>(linesEach), 0));
  const std::string padding(static_cast<std::size_t>(payload), 'x');
  const std::string rolledOver = "Log file for Module [" + app + "] rolled over. File size is ";
  const std::string hookText = "Failed to allocate memory, error handling is compromised, ErrorItem=child ";
  std::size_t rollLines = 0, hookLines = 0, duplicates = 0, torn = 0;
  for (const std::string& name : files) {
    const std::string text = ReadFile(folder.File(name));
    // Every file is headed and ends with a whole line; rolled files reached
    // the limit, so none was rolled twice.
    EXPECT_EQ(0u, text.find(std::string(80, '*') + "\r\n* Machine    : ")) << name;
    EXPECT_EQ("\r\n", text.substr(text.size() - 2)) << name;
    if (name != files.back()) {
      EXPECT_GE(text.size(), 1u << 20) << name;
    }
    const std::vector<std::string> lines = BodyLines(folder.File(name));
    for (const std::string& line : lines) {
      const TLine split = Split(line);
      int k = -1, i = -1;
      if (split.ok && std::sscanf(split.message.c_str(), "child %d line %d", &k, &i) == 2 && k >= 0 &&
          k < children && i >= 0 && i < linesEach &&
          split.message == "child " + std::to_string(k) + " line " + std::to_string(i) + " " + padding &&
          split.job == std::to_string(k + 1) && split.function == "LogChild::Write(" + std::to_string(i + 1) + ")") {
        char& mark = seen[static_cast<std::size_t>(k)][static_cast<std::size_t>(i)];
        duplicates += mark;
        mark = 1;
      } else if (split.ok && split.function.compare(0, 20, "CZuLogger::RollOver(") == 0 &&
                 split.message.compare(0, rolledOver.size(), rolledOver) == 0) {
        ++rollLines;
      } else if (split.ok && split.job == "###" && split.function == "CZuError::CZuError(20)" &&
                 split.message.compare(0, hookText.size(), hookText) == 0) {
        ++hookLines;
      } else if (torn++ < 5) {
        ADD_FAILURE() << name << ": " << line.substr(0, 300);
      }
    }
  }
  EXPECT_EQ(0u, torn);
  EXPECT_EQ(0u, duplicates);
  std::size_t missing = 0;
  for (const auto& child : seen)
    for (const char mark : child) missing += mark ? 0 : 1;
  EXPECT_EQ(0u, missing);
  EXPECT_EQ(rolled, rollLines);  // each roll-over said once: none lost, none twice
  EXPECT_EQ(static_cast<std::size_t>(children), hookLines);
  std::printf("%d processes x %d lines: %zu roll-overs\n", children, linesEach, rolled);
}

TEST(LoggerProcesses, AHolderKilledWithTheLockDoesNotBlockOthers) {
  const std::string app = TestApp("KilledApp");
  CScratchFolder folder("killed");
  const std::string marker = folder.File("locked.txt");
  FXPlatform::CChildProcess holder;
  ASSERT_FALSE(holder.Start(ChildProgram(), {"hold", folder.Path(), app, marker}).IsError());
  for (int i = 0; i < 3000 && !FXPlatform::PathExists(marker); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  ASSERT_TRUE(FXPlatform::PathExists(marker));

  // Held: others wait, and give up when their time is out.
  std::string name;
  ASSERT_FALSE(CZuLogger::GetLockName(app.c_str(), folder.Path(), name).IsError());
  FXPlatform::CProcessLock lock;
  ASSERT_FALSE(lock.Create(name).IsError());
  bool abandoned = false;
  EXPECT_TRUE(FXErrorUtil::IsWin32(lock.Acquire(200, abandoned), WAIT_TIMEOUT));

  ASSERT_FALSE(holder.Kill().IsError());
  int exitCode = 0;
  ASSERT_FALSE(holder.Wait(exitCode).IsError());
  EXPECT_NE(0, exitCode);

  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(app, folder.Path()).IsError());
  const auto start = std::chrono::steady_clock::now();
  const CZuError result = logger.logMessages("after the holder died");
  EXPECT_FALSE(result.IsError()) << result.AsString();
  // Well within the lock's time-out: the dead holder's lock was released.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  logger.LogMessage(1, "F", 1, nullptr, "and the next line");
  // The holder died in the middle of a line: the next one starts afresh.
  const std::vector<std::string> expected = {"torn tail", "after the holder died",
                                             LineStart() + "--- " + kPrefixField + "F(1) - and the next line"};
  std::vector<std::string> body = BodyLines(logger.GetLogFilePath());
  if (body.size() == 3) body[2] = MaskTime(body[2]);
  EXPECT_EQ(expected, body);

  // The lock itself is free and whole again.
  ASSERT_FALSE(lock.Acquire(1000, abandoned).IsError());
  EXPECT_FALSE(abandoned);
  lock.Release();
}

TEST(LoggerProcesses, AFaultInsideTheLockedWriteLeavesTheLockFree) {
  if (kZuIsWindows) GTEST_SKIP() << "the library's own allocations are counted on Linux only";
  {
    // Everything a process sets up once happens before the lock: done here.
    CScratchFolder warm("lockwarm");
    CZuLogger first;
    ASSERT_FALSE(first.Initialize(TestApp("LockWarmApp"), warm.Path()).IsError());
    first.LogMessage(1, "F", 1, nullptr, "warm");
  }
  CScratchFolder folder("lockfault");
  const std::string app = TestApp("LockFaultApp");
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(app, folder.Path()).IsError());
  logger.SetLoggingMode(LOGGING_MODE_DIRECT);
  // The first line of a new file allocates under the lock (the file's name,
  // its header): that allocation fails.
  ZuTest::FailNextAllocation();
  logger.LogMessage(1, "F", 1, nullptr, "lost %d", 1);
  // The exception's lines take the lock again...
  const std::vector<std::string> lines = {
      "@@@@@@@@@@@@@@@@@@", ">>>>>>>>>>>>>>>>>> GOT AN EXCEPTION DURING DEBUG MESSAGE HANDLING [lost %d]",
      "@@@@@@@@@@@@@@@@@@"};
  EXPECT_EQ(lines, BodyLines(logger.GetLogFilePath()));

  // ...and so does another process, at once.
  const auto start = std::chrono::steady_clock::now();
  FXPlatform::CChildProcess child;
  ASSERT_FALSE(child.Start(ChildProgram(), {"write", folder.Path(), app, "0", "1", "10"}).IsError());
  int exitCode = -1;
  ASSERT_FALSE(child.Wait(exitCode).IsError());
  EXPECT_EQ(0, exitCode);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  EXPECT_EQ(lines.size() + 2, BodyLines(logger.GetLogFilePath()).size());  // its alarm and its line
}

}  // namespace
