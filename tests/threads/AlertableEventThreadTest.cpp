#include "threads/AlertableEventThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>

#include <boost/make_shared.hpp>

#include "ThreadTestSupport.h"
#include "errors/ErrorUtil.h"
#include "platform/Process.h"
#include "platform/ThreadApi.h"

namespace {

using namespace ZuThreadTest;
using std::chrono::milliseconds;

const bool g_capture = (InstallLogCapture(), true);

class CExitRecorder : public CAlertableEventThreadCallback {
 public:
  void OnThreadExit(DWORD status) override {
    lastStatus = status;
    ++calls;
    if (action) action();
  }
  std::atomic<int> calls{0};
  std::atomic<DWORD> lastStatus{0xDEADu};
  std::function<void()> action;  // set before the thread starts
};

enum EHook { kNoHook, kOnStart, kOnRun, kOnStop, kOnEvent, kOnCompletion, kOnTimeout };

class CProbe : public CAlertableEventThread {
 public:
  explicit CProbe(boost::shared_ptr<CAlertableEventThreadCallback> callback = {})
      : CAlertableEventThread(std::move(callback)) {}
  ~CProbe() override { Stop(true); }

  using CAlertableEventThread::GetCompletionsHandled;
  using CAlertableEventThread::GetEventsHandled;
  using CAlertableEventThread::GetThreadHandle;
  using CAlertableEventThread::GetTimeoutsHandled;
  using CAlertableEventThread::InternalStop;
  using CAlertableEventThread::IsRunning;
  using CAlertableEventThread::SetDescription;
  using CAlertableEventThread::SetTimeout;
  using CAlertableEventThread::TerminateAlertableThread;

  std::atomic<int> throwIn{kNoHook};
  std::atomic<int> starts{0}, runs{0}, stops{0}, events{0}, completions{0}, timeouts{0};
  std::atomic<unsigned long> workerId{0};
  std::function<void(CProbe&)> onEvent;    // set before the thread starts
  std::function<void(CProbe&)> onTimeout;  // likewise

 protected:
  void OnStart() override {
    workerId = FXPlatform::CurrentThreadId();
    ++starts;
    Maybe(kOnStart);
  }
  void OnRun() override {
    ++runs;
    Maybe(kOnRun);
    CAlertableEventThread::OnRun();
  }
  void OnStop() override {
    ++stops;
    Maybe(kOnStop);
  }
  void OnEvent() override {
    ++events;
    if (onEvent) onEvent(*this);
    Maybe(kOnEvent);
  }
  void OnCompletion() override {
    ++completions;
    Maybe(kOnCompletion);
  }
  void OnTimeout() override {
    ++timeouts;
    if (onTimeout) onTimeout(*this);
    Maybe(kOnTimeout);
  }

 private:
  void Maybe(EHook hook) {
    if (throwIn == hook) throw std::runtime_error("hook");
  }
};

DWORD Win32Code(const CZuError& result) { return FXErrorUtil::GetWin32(result); }

TEST(AlertableEventThread, RunsHooksOnItsOwnThreadAndReportsTheEnd) {
  auto exit = boost::make_shared<CExitRecorder>();
  {
    CProbe probe(exit);
    probe.Start();
    ASSERT_TRUE(WaitUntil([&] { return probe.starts == 1; }));
    EXPECT_NE(probe.GetThreadId(), 0u);
    EXPECT_EQ(probe.GetThreadId(), probe.workerId.load());
    EXPECT_NE(probe.workerId.load(), FXPlatform::CurrentThreadId());
    probe.SetDescription("zu probe");

    probe.SetEvent();
    ASSERT_TRUE(WaitUntil([&] { return probe.events == 1; }));
    EXPECT_EQ(probe.GetEventsHandled(), 1u);

    probe.Stop(true);
    EXPECT_EQ(probe.GetThreadId(), 0u);
    EXPECT_FALSE(probe.IsRunning());
    EXPECT_EQ(probe.stops, 1);
    EXPECT_EQ(exit->calls, 1);
    EXPECT_EQ(exit->lastStatus, 0u);
    EXPECT_FALSE(probe.WaitForStop(CTimeInterval()).IsError());

    // Reusable: a second cycle, counting events afresh.
    probe.Start();
    probe.SetEvent();
    ASSERT_TRUE(WaitUntil([&] { return probe.GetEventsHandled() == 1 && probe.events == 2; }));
    probe.Stop(true);
    EXPECT_EQ(probe.starts, 2);
    EXPECT_EQ(exit->calls, 2);
  }
  EXPECT_EQ(exit->calls, 2);
}

std::atomic<unsigned long> g_callThread{0};

void NoteCallThread(ULONG_PTR data) {
  g_callThread = FXPlatform::CurrentThreadId();
  reinterpret_cast<std::atomic<int>*>(data)->fetch_add(1);
}

TEST(AlertableEventThread, QueuedCallsRunOnTheWorkerThenOnCompletion) {
  std::atomic<int> calls{0};
  CProbe probe;
  probe.Start();
  ASSERT_TRUE(WaitUntil([&] { return probe.starts == 1; }));
  ASSERT_NE(QueueUserAPC(&NoteCallThread, probe.GetThreadHandle(), reinterpret_cast<ULONG_PTR>(&calls)), 0u);
  ASSERT_TRUE(WaitUntil([&] { return probe.completions == 1; }));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(g_callThread.load(), probe.GetThreadId());
  EXPECT_EQ(probe.GetCompletionsHandled(), 1u);
  EXPECT_EQ(probe.events, 0);
  probe.Stop(true);
  // The thread has ended: nothing more can be queued to it.
  ASSERT_FALSE(probe.WaitForStop(CTimeInterval()).IsError());
  EXPECT_EQ(QueueUserAPC(&NoteCallThread, probe.GetThreadHandle(), reinterpret_cast<ULONG_PTR>(&calls)), 0u);
  EXPECT_EQ(calls, 1);
}

TEST(AlertableEventThread, NeverStartedObjectsAnswerAtOnce) {
  CProbe probe;
  probe.Stop(false);
  probe.Stop(true);
  EXPECT_EQ(probe.GetThreadId(), 0u);
  EXPECT_EQ(probe.GetThreadHandle(), nullptr);
  // No thread: the wait fails with the all-ones result as its code.
  EXPECT_EQ(probe.WaitForStop(CTimeInterval::FromMilliseconds(10)).GetErrorCode(),
            FXErrorUtil::ErrorWin32(FXCodeLocation(), 0xFFFFFFFFu).GetErrorCode());
  const CZuError terminated = probe.TerminateAlertableThread();
  EXPECT_EQ(Win32Code(terminated), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  EXPECT_NE(terminated.AsString().find("Error while terminating thread with id [0]"), std::string::npos);
  probe.SetDescription("ignored");
  EXPECT_EQ(probe.starts, 0);
}

TEST(AlertableEventThread, StartingTwiceMakesOneThread) {
  CProbe probe;
  probe.Start();
  const DWORD id = probe.GetThreadId();
  probe.Start();
  EXPECT_EQ(probe.GetThreadId(), id);
  ASSERT_TRUE(WaitUntil([&] { return probe.starts == 1; }));
  probe.StartSynchronously();  // a thread is held: nothing happens
  probe.Stop(true);
  EXPECT_EQ(probe.starts, 1);
  EXPECT_EQ(probe.stops, 1);
}

TEST(AlertableEventThread, TwoSetsBeforeTheWakeRunOnEventOnce) {
  CProbe probe;
  std::atomic<bool> release{false};
  std::atomic<bool> inside{false};
  probe.onEvent = [&](CProbe&) {
    inside = true;
    while (!release) std::this_thread::sleep_for(milliseconds(1));
  };
  probe.Start();
  probe.SetEvent();
  ASSERT_TRUE(WaitUntil([&] { return inside.load(); }));
  probe.SetEvent();
  probe.SetEvent();
  release = true;
  ASSERT_TRUE(WaitUntil([&] { return probe.events == 2; }));
  std::this_thread::sleep_for(milliseconds(50));
  EXPECT_EQ(probe.events, 2);
  probe.Stop(true);
}

TEST(AlertableEventThread, TimeoutsByInterval) {
  {
    CProbe probe;  // 0: no limit
    probe.Start();
    std::this_thread::sleep_for(milliseconds(100));
    probe.Stop(true);
    EXPECT_EQ(probe.timeouts, 0);
  }
  {
    CProbe probe;  // 20 ms
    probe.SetTimeout(CTimeInterval::From100NS(200000));
    EXPECT_EQ(probe.GetTimeout().As100NSIntervals(), 200000);
    probe.Start();
    ASSERT_TRUE(WaitUntil([&] { return probe.timeouts >= 3; }));
    probe.Stop(true);
    EXPECT_EQ(probe.GetTimeoutsHandled(), static_cast<unsigned long long>(probe.timeouts));
  }
  {
    // One unit truncates to 0 ms: the worker polls, and still stops.
    CProbe probe;
    probe.SetTimeout(CTimeInterval::From100NS(1));
    probe.Start();
    ASSERT_TRUE(WaitUntil([&] { return probe.timeouts >= 100; }));
    probe.Stop(true);
    EXPECT_EQ(probe.GetThreadId(), 0u);
  }
}

TEST(AlertableEventThread, WaitForStopTimesOutOnARunningWorker) {
  CProbe probe;
  probe.Start();
  const CZuError result = probe.WaitForStop(CTimeInterval::FromMilliseconds(50));
  EXPECT_TRUE(result.IsError());
  EXPECT_EQ(Win32Code(result), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_NE(result.AsString().find("CAlertableEventThread::WaitForStop"), std::string::npos);
  probe.Stop(false);
  EXPECT_FALSE(probe.WaitForStop(CTimeInterval()).IsError());
}

// Each hook that throws: the thread lives on or ends as the loop decides,
// the status tells which, and the log names the hook.
TEST(AlertableEventThread, ThrowingHooksNeverKillTheThread) {
  struct TCase {
    EHook hook;
    const char* line;
    DWORD status;
    bool loopEnds;
  };
  const TCase cases[] = {
      {kOnStart, "#### Unhandled exception caught in OnStart(), skipping OnRun()", 1064, true},
      {kOnRun, "#### Unhandled exception caught in OnRun()", 1064, true},
      {kOnStop, "#### Unhandled exception caught in OnStop()", 1064, false},
      {kOnEvent, "#### Unhandled exception caught in OnEvent()", 0, false},
      {kOnCompletion, "#### Unhandled exception caught in OnCompletion()", 0, false},
      {kOnTimeout, "#### Unhandled exception caught in OnTimeout()", 0, false},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.line);
    ClearCapturedLines();
    auto exit = boost::make_shared<CExitRecorder>();
    CProbe probe(exit);
    probe.throwIn = c.hook;
    if (c.hook == kOnTimeout) probe.SetTimeout(CTimeInterval::FromMilliseconds(5));
    probe.Start();
    if (c.loopEnds) {
      ASSERT_TRUE(WaitUntil([&] { return exit->calls == 1; }));
      EXPECT_EQ(probe.runs, 0 + (c.hook == kOnRun ? 1 : 0));
    } else {
      // Twice through the throwing hook: the loop goes on after the first.
      for (int pass = 1; pass <= 2; ++pass) {
        if (c.hook == kOnEvent) probe.SetEvent();
        if (c.hook == kOnCompletion) QueueUserAPC([](ULONG_PTR) {}, probe.GetThreadHandle(), 0);
        ASSERT_TRUE(WaitUntil([&] { return probe.events + probe.completions + probe.timeouts >= pass || c.hook == kOnStop; }));
      }
      EXPECT_TRUE(probe.IsRunning());
      probe.Stop(true);
    }
    EXPECT_EQ(probe.stops, 1);
    EXPECT_EQ(probe.GetStatus(), c.status);
    EXPECT_EQ(exit->lastStatus, c.status);
    EXPECT_GE(CountLines(c.line), 1);
  }
}

TEST(AlertableEventThread, ExceptionsPastTheLoopAndNullContextsAreLogged) {
  ClearCapturedLines();
  EXPECT_EQ(CAlertableEventThread::RunStub(nullptr), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(CountLines("CAlertableEventThread::RunStub"), 1);
  EXPECT_EQ(CountLines("NULL context received; cannot continue"), 1);

  auto exit = boost::make_shared<CExitRecorder>();
  exit->action = [] { throw std::runtime_error("callback"); };
  CProbe probe(exit);
  probe.Start();
  probe.Stop(true);
  EXPECT_EQ(exit->calls, 1);
  ASSERT_TRUE(WaitUntil([&] { return CountLines("#### Unhandled exception caught in Run()") == 1; }));
  EXPECT_FALSE(probe.WaitForStop(CTimeInterval()).IsError());
}

TEST(AlertableEventThread, StopFromInsideAHookDoesNotDeadlock) {
  for (bool wait : {false, true}) {
    auto exit = boost::make_shared<CExitRecorder>();
    CProbe probe(exit);
    probe.onEvent = [wait](CProbe& self) { self.Stop(wait); };
    probe.Start();
    probe.SetEvent();
    ASSERT_TRUE(WaitUntil([&] { return exit->calls == 1; }));
    EXPECT_EQ(probe.GetThreadId(), 0u);
    EXPECT_EQ(probe.events, 1);
  }
}

TEST(AlertableEventThread, OnThreadExitMayStartTheThreadAgain) {
  auto exit = boost::make_shared<CExitRecorder>();
  CProbe probe(exit);
  // The worker stops itself at its first timeout; the callback starts the
  // next worker twice.
  probe.SetTimeout(CTimeInterval::FromMilliseconds(1));
  probe.onTimeout = [](CProbe& self) { self.InternalStop(); };
  exit->action = [&] {
    if (exit->calls < 3) probe.Start();
  };
  probe.Start();
  ASSERT_TRUE(WaitUntil([&] { return exit->calls == 3; }));
  ASSERT_TRUE(WaitUntil([&] { return probe.GetThreadId() == 0; }));
  probe.Stop(true);
  EXPECT_EQ(probe.starts, 3);
  EXPECT_EQ(probe.stops, 3);
}

TEST(AlertableEventThread, DestructionStopsARunningWorkerAndPreventsRestarts) {
  auto exit = boost::make_shared<CExitRecorder>();
  CProbe* probe = new CProbe(exit);
  exit->action = [&] { probe->Start(); };  // refused while destroying
  probe->SetTimeout(CTimeInterval::FromMilliseconds(1));
  probe->Start();
  ASSERT_TRUE(WaitUntil([&] { return probe->timeouts > 2; }));
  delete probe;
  EXPECT_EQ(exit->calls, 1);
}

TEST(AlertableEventThread, SynchronousRunEndsByInternalStop) {
  CProbe probe;
  probe.SetTimeout(CTimeInterval::FromMilliseconds(1));
  probe.onTimeout = [](CProbe& self) {
    self.Stop(true);  // no id: no effect
    if (self.timeouts == 3) self.InternalStop();
  };
  probe.StartSynchronously();
  EXPECT_EQ(probe.workerId.load(), FXPlatform::CurrentThreadId());
  EXPECT_EQ(probe.timeouts, 3);
  EXPECT_EQ(probe.stops, 1);
  EXPECT_EQ(probe.GetThreadId(), 0u);
}

class CPlain : public CAlertableEventThread {
 public:
  ~CPlain() override { Stop(true); }
  using CAlertableEventThread::GetThreadHandle;
};

TEST(AlertableEventThread, CopiesTakeTheHandle) {
  CPlain probe;
  probe.Start();
  probe.Stop(true);
  const HANDLE handle = probe.GetThreadHandle();
  ASSERT_NE(handle, nullptr);
  CPlain copy(probe);
  EXPECT_EQ(copy.GetThreadHandle(), handle);
  EXPECT_EQ(probe.GetThreadHandle(), nullptr);
  EXPECT_FALSE(copy.WaitForStop(CTimeInterval()).IsError());

  CPlain assigned;
  assigned = copy;
  EXPECT_EQ(assigned.GetThreadHandle(), handle);
  EXPECT_EQ(copy.GetThreadHandle(), nullptr);
}

TEST(AlertableEventThread, TerminationIsHonestPerPlatform) {
  ClearCapturedLines();
  auto exit = boost::make_shared<CExitRecorder>();
  CProbe probe(exit);
  probe.Start();
  ASSERT_TRUE(WaitUntil([&] { return probe.starts == 1; }));
  const CZuError result = probe.TerminateAlertableThread();
  if (kZuIsWindows) {
    EXPECT_FALSE(result.IsError()) << result.AsString();
    EXPECT_EQ(probe.GetThreadHandle(), nullptr);
    // The worker never cleared its id: Stop gives up after five polls.
    probe.Stop(true);
    EXPECT_EQ(probe.GetThreadId(), 0u);
    EXPECT_EQ(CountLines("Thread no longer exists but did not terminate normally"), 1);
    EXPECT_EQ(exit->calls, 0);
  } else {
    EXPECT_EQ(Win32Code(result), static_cast<DWORD>(ERROR_NOT_SUPPORTED));
    EXPECT_NE(result.AsString().find("Error while terminating thread with id ["), std::string::npos);
    EXPECT_NE(probe.GetThreadHandle(), nullptr);
    probe.Stop(true);
    EXPECT_EQ(exit->calls, 1);
  }
}

}  // namespace
