// A child made by fork() logs with its own process and thread ids, although
// its parent had logged (and so looked them up) before.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "logging/ZuLogger.h"

namespace {

using namespace ZuLogTest;

TEST(LoggerFork, AChildLogsItsOwnIds) {
  CScratchFolder folder("fork");
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(TestApp("ForkApp"), folder.Path()).IsError());
  logger.LogMessage(1, "F", 1, nullptr, "parent");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    logger.LogMessage(1, "F", 2, nullptr, "child");
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  ASSERT_TRUE(WIFEXITED(status));

  const std::vector<std::string> body = BodyLines(logger.GetLogFilePath());
  ASSERT_EQ(2u, body.size());
  long pid = 0;
  unsigned long tid = 0;
  ASSERT_EQ(2, std::sscanf(body[1].c_str(), "%ld %lx", &pid, &tid)) << body[1];
  // The forking thread is the child's only thread: its id is the process id.
  EXPECT_EQ(static_cast<long>(child), pid) << body[1];
  EXPECT_EQ(static_cast<unsigned long>(child), tid) << body[1];
  ASSERT_EQ(2, std::sscanf(body[0].c_str(), "%ld %lx", &pid, &tid)) << body[0];
  EXPECT_EQ(static_cast<long>(::getpid()), pid);
}

}  // namespace
