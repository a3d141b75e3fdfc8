// A logged line costs no heap allocation once the logger is set up (the
// count covers the library on Linux only: see support/CountingNew.h).
#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "logging/ZuLogger.h"
#include "support/CountingNew.h"

namespace {

using namespace ZuLogTest;

TEST(LoggerAllocation, LoggingALineAllocatesNothing) {
  CScratchFolder folder("allocation");
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(TestApp("AllocationApp"), folder.Path(), 2, true).IsError());
  const std::string message(100, 'm');
  for (const bool keepOpen : {true, false}) {
    logger.SetKeepLogFileOpen(keepOpen);
    // The first line loads what a process needs once (the service attempt,
    // the time zone, the file's path in the platform's form).
    logger.LogMessage(1, "CTest::Run", 1, 7LL, "ctx", "warm-up %s", message.c_str());
    const long before = ZuTest::AllocationCount();
    for (int i = 0; i < 100; ++i) logger.LogMessage(1, "CTest::Run", 2, 7LL, "ctx", "line %d %s", i, message.c_str());
    logger.LogMessage(5, "CTest::Run", 3, nullptr, "filtered");
    EXPECT_EQ(before, ZuTest::AllocationCount()) << "keep open " << keepOpen;
  }
  EXPECT_EQ(202u, BodyLines(logger.GetLogFilePath()).size());
}

}  // namespace
