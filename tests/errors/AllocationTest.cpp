// "Success is free": the success path of the result object never allocates.
#include <cstdarg>
#include <cstdio>
#include <new>
#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "logging/LogHook.h"
#include "support/CountingNew.h"

namespace {

#if defined(__GNUC__)
#define ZU_NOINLINE __attribute__((noinline))
#else
#define ZU_NOINLINE
#endif

ZU_NOINLINE CZuError Inner() { return CZuError::Success(); }
ZU_NOINLINE CZuError Middle() {
  CZuError r = Inner();
  if (r.IsError()) return r.Push(FXCodeLocation("a.cpp", "Middle", 1));
  return r;
}
ZU_NOINLINE CZuError Outer() {
  CZuError r = Middle();
  if (!r) return r;
  return r.Push(FXCodeLocation("a.cpp", "Outer", 2));
}

TEST(Allocation, SuccessPathAllocatesNothing) {
  FXErrorUtil::CompileErrorMappingsIntoContainer();
  const CZuError failure = FXErrorUtil::ErrorWin32(FXCodeLocation("a.cpp", "f", 1), 2);

  const long before = ZuTest::AllocationCount();
  CZuError ok = CZuError::Success();
  CZuError copy = ok;
  copy = Outer();
  bool all = !copy && !ok.IsError() && !copy.Is(E_FAIL) && copy.Is(0);
  all = all && failure.Is(static_cast<HRESULT>(0xECCC0002)) && failure.IsNot(static_cast<HRESULT>(0x80070003));
  EXPECT_EQ(before, ZuTest::AllocationCount());
  EXPECT_TRUE(all);
}

struct TCaptured {
  int level = 0;
  std::string function;
  unsigned line = 0;
  std::string text;
};
TCaptured g_captured;

void Capture(int level, const char* function, unsigned line, const char* format, va_list args) {
  char buffer[512];
  std::vsnprintf(buffer, sizeof buffer, format, args);
  g_captured = {level, function, line, buffer};
}

TEST(Allocation, LostChainIsLoggedAndTheCodeKept) {
  if (kZuIsWindows) GTEST_SKIP() << "the DLL's own operator new cannot be made to fail from here";
  FXLogHook::LineWriter previous = FXLogHook::SetWriter(Capture);
  const FXCodeLocation here("a.cpp", "CTest::Run", 3);
  boost::shared_ptr<FXErrorItem> item = boost::make_shared<FXErrorItemDescription>(here, "lost");

  ZuTest::FailNextAllocation();
  const CZuError r(E_FAIL, item);
  EXPECT_EQ(E_FAIL, r.GetErrorCode());
  EXPECT_EQ("0x80004005", r.AsString());
  EXPECT_EQ(-1, g_captured.level);
  EXPECT_EQ("CZuError::CZuError", g_captured.function);
  EXPECT_EQ(20u, g_captured.line);
  EXPECT_EQ("Failed to allocate memory, error handling is compromised, ErrorItem=CTest::Run(3)/lost",
            g_captured.text);

  CZuError pushed = CZuError::Success();
  ZuTest::FailNextAllocation();
  pushed.Push(item);
  EXPECT_EQ("Success", pushed.AsString());
  EXPECT_EQ("CZuError::Push", g_captured.function);
  EXPECT_EQ(97u, g_captured.line);
  FXLogHook::SetWriter(previous);
}

}  // namespace
