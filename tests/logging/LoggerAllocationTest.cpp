// A logged line costs no heap allocation once the logger is set up.
//
// This program's operator new counts its calls. On Linux it also serves the
// library (ELF symbol interposition); a Windows DLL keeps its own, so there
// the count proves nothing and the Linux run carries the test.
#include <atomic>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "logging/ZuLogger.h"

namespace {
std::atomic<long> g_allocations{0};
}  // namespace

void* operator new(std::size_t size) {
  ++g_allocations;
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

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
    const long before = g_allocations.load();
    for (int i = 0; i < 100; ++i) logger.LogMessage(1, "CTest::Run", 2, 7LL, "ctx", "line %d %s", i, message.c_str());
    logger.LogMessage(5, "CTest::Run", 3, nullptr, "filtered");
    EXPECT_EQ(before, g_allocations.load()) << "keep open " << keepOpen;
  }
  EXPECT_EQ(202u, BodyLines(logger.GetLogFilePath()).size());
}

}  // namespace
