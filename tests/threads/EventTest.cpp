// FXEvent and queued calls: the waits' results as Windows gives them, with
// the system's QueueUserAPC on Windows and the library's elsewhere.
#include "threads/Event.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/ThreadApi.h"

namespace {

std::vector<int> g_ran;  // only ever touched by the thread the calls run on

void Record(ULONG_PTR data) { g_ran.push_back(static_cast<int>(data)); }

TEST(Event, FlagsSelectInitialStateAndReset) {
  struct TCase {
    DWORD flags;
    DWORD first;   // the first wait without time
    DWORD second;  // the next one
  };
  const TCase cases[] = {
      {0, WAIT_TIMEOUT, WAIT_TIMEOUT},
      {FXEvent::kInitiallySet, WAIT_OBJECT_0, WAIT_TIMEOUT},
      {FXEvent::kManualReset, WAIT_TIMEOUT, WAIT_TIMEOUT},
      {FXEvent::kInitiallySet | FXEvent::kManualReset, WAIT_OBJECT_0, WAIT_OBJECT_0},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.flags);
    FXEvent event(c.flags);
    ASSERT_TRUE(event.IsValid());
    EXPECT_EQ(event.WaitAlertable(DWORD{0}), c.first);
    EXPECT_EQ(event.WaitAlertable(DWORD{0}), c.second);
    EXPECT_TRUE(event.Set());
    EXPECT_EQ(event.WaitAlertable(DWORD{1}), WAIT_OBJECT_0);
    const bool manual = (c.flags & FXEvent::kManualReset) != 0;
    EXPECT_EQ(event.WaitAlertable(DWORD{0}), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
    EXPECT_TRUE(event.Reset());
    EXPECT_EQ(event.WaitAlertable(CTimeInterval::FromMilliseconds(1)), WAIT_TIMEOUT);
  }
}

TEST(Event, IntervalsBecomeWaitMilliseconds) {
  EXPECT_EQ(FXEvent::ToWaitMilliseconds(CTimeInterval()), INFINITE);
  EXPECT_EQ(FXEvent::ToWaitMilliseconds(CTimeInterval::From100NS(1)), 0u);
  EXPECT_EQ(FXEvent::ToWaitMilliseconds(CTimeInterval::From100NS(19999)), 1u);
  EXPECT_EQ(FXEvent::ToWaitMilliseconds(CTimeInterval::From100NS(25000000)), 2500u);
  EXPECT_EQ(FXEvent::ToWaitMilliseconds(CTimeInterval::From100NS(-50000)), 0u);
  EXPECT_EQ(FXEvent::ToWaitMilliseconds(CTimeInterval::FromSeconds(1LL << 32)), INFINITE - 1);
}

TEST(Event, SetFromAnotherThreadWakesTheWait) {
  FXEvent event;
  std::thread setter([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    event.Set();
  });
  EXPECT_EQ(event.WaitAlertable(INFINITE), WAIT_OBJECT_0);
  setter.join();
}

TEST(QueuedCalls, RunInsideTheNextAlertableWaitInOrder) {
  g_ran.clear();
  FXEvent event;
  ASSERT_NE(QueueUserAPC(&Record, GetCurrentThread(), 1), 0u);
  ASSERT_NE(QueueUserAPC(&Record, GetCurrentThread(), 2), 0u);
  EXPECT_TRUE(g_ran.empty());
  // Whether the set event or the queued calls end the first wait is the
  // system's choice (wine's answer varies with load); both arrive, and the
  // calls run in the order they were queued.
  event.Set();
  bool signalled = false;
  for (int wait = 0; wait < 3 && !(signalled && g_ran.size() == 2); ++wait) {
    const DWORD result = event.WaitAlertable(INFINITE);
    if (result == WAIT_OBJECT_0) {
      EXPECT_FALSE(signalled);
      signalled = true;
    } else {
      EXPECT_EQ(result, WAIT_IO_COMPLETION);
    }
  }
  EXPECT_TRUE(signalled);
  EXPECT_EQ(g_ran, (std::vector<int>{1, 2}));
  EXPECT_EQ(event.WaitAlertable(DWORD{0}), WAIT_TIMEOUT);
}

}  // namespace
