#include "threads/RunnableTask.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include "TaskTestSupport.h"
#include "ThreadTestSupport.h"
#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/Process.h"
#include "text/StringConvert.h"
#include "threads/TaskThread.h"

namespace {

using namespace ZuThreadTest;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

const bool g_capture = (InstallLogCapture(), true);

CZuError Failure(DWORD code) { return FXErrorUtil::ErrorWin32(ZU_HERE("Test::Work"), code); }

long long MillisecondsSince(steady_clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start).count();
}

// The task's work polls until it is canceled.
CZuError UntilCanceled(CScriptTask& task) {
  while (!task.Pause(10000, 0.0)) {
  }
  return FXErrorUtil::ErrorWin32(ZU_HERE("Test::Work"), ERROR_OPERATION_ABORTED);
}

TEST(RunnableTask, FeedbackReachesTheConnectorOnlyWhileRunning) {
  CRecordingConnector connector;
  CScriptTask task([](CScriptTask& self) {
    self.SendFeedback("working", 7);
    self.DisableFeedbackAutoClose();
    return Failure(ERROR_NOT_FOUND);
  });
  task.SendFeedback("before", 1);  // no connector: nothing
  task.DisableFeedbackAutoClose();
  const CZuError result = task.Run(&connector);
  task.SendFeedback("after", 2);
  EXPECT_EQ(connector.Feedback(), std::vector<std::string>{"working/7"});
  EXPECT_EQ(connector.autoCloseDisabled, 1);
  EXPECT_EQ(FXErrorUtil::GetWin32(result), static_cast<DWORD>(ERROR_NOT_FOUND));
  EXPECT_NE(result.AsString().find("CRunnableTask::Run"), std::string::npos);

  CScriptTask fine;
  EXPECT_FALSE(fine.Run(nullptr).IsError());
  EXPECT_EQ(fine.runs, 1);
}

TEST(RunnableTask, CancelRequestSetsTheFlagAndLogsAtLevel7) {
  CZuLogger& logger = CZuLogger::GetGlobalInstance();
  for (int level : {2, 7}) {
    ClearCapturedLines();
    logger.SetDebugLevel(level);
    CScriptTask task;
    EXPECT_FALSE(task.IsCanceled());
    EXPECT_TRUE(task.OnCancelRequest());
    EXPECT_TRUE(task.IsCanceled());
    EXPECT_EQ(CountLines("Cancel requested"), level >= 7 ? 1 : 0);
  }
  logger.SetDebugLevel(2);

  CScriptTask original;
  original.SetTaskCost(3.5);
  original.SetTaskProgress(40);
  original.OnCancelRequest();
  CScriptTask copy(original);
  EXPECT_EQ(copy.GetTaskCost(), 3.5);
  EXPECT_EQ(copy.GetTaskProgress(), 40);
  EXPECT_TRUE(copy.IsCanceled());
}

TEST(RunnableTask, PauseSleepsInStepsAndReturnsEarlyOnCancel) {
  CScriptTask task;
  EXPECT_FALSE(task.Pause(0, 5.0));
  EXPECT_FALSE(task.Pause(-10, 5.0));
  EXPECT_EQ(task.GetTaskProgress(), 0.0);

  auto start = steady_clock::now();
  EXPECT_FALSE(task.Pause(250, 10.0));
  EXPECT_GE(MillisecondsSince(start), 250);
  EXPECT_NEAR(task.GetTaskProgress(), 10.0, 1e-9);

  std::thread canceler([&] {
    std::this_thread::sleep_for(milliseconds(50));
    task.OnCancelRequest();
  });
  start = steady_clock::now();
  EXPECT_TRUE(task.Pause(60000, 100.0));
  canceler.join();
  EXPECT_LT(MillisecondsSince(start), 2000);
  EXPECT_GT(task.GetTaskProgress(), 10.0);
  EXPECT_LT(task.GetTaskProgress(), 20.0);
  EXPECT_TRUE(task.Pause(60000, 1.0));  // already canceled
}

TEST(TaskThread, RunsTheTaskOnceAndReportsCompletion) {
  CRecordingConnector connector;
  auto task = boost::make_shared<CScriptTask>([](CScriptTask&) { return Failure(ERROR_ACCESS_DENIED); });
  CTaskThread thread(task, &connector);
  EXPECT_FALSE(thread.GetRunResult().IsError());
  thread.Start();
  ASSERT_TRUE(WaitUntil([&] { return connector.completed != 0; }));
  ASSERT_FALSE(thread.WaitForStop(CTimeInterval()).IsError());
  EXPECT_EQ(thread.GetThreadId(), 0u);
  EXPECT_EQ(task->runs, 1);
  EXPECT_EQ(connector.starts, 1);
  EXPECT_EQ(connector.completed, 1);
  EXPECT_EQ(FXErrorUtil::GetWin32(thread.GetRunResult()), static_cast<DWORD>(ERROR_ACCESS_DENIED));

  // No task, and a task that throws.
  struct TCase {
    boost::shared_ptr<CRunnableTask> task;
    DWORD result;
    DWORD status;
  };
  const TCase cases[] = {
      {boost::shared_ptr<CRunnableTask>(), ERROR_INVALID_PARAMETER, 0},
      {boost::make_shared<CScriptTask>([](CScriptTask&) -> CZuError { throw std::runtime_error("task"); }),
       ERROR_EXCEPTION_IN_SERVICE, ERROR_EXCEPTION_IN_SERVICE},
  };
  for (const TCase& c : cases) {
    CRecordingConnector recorder;
    CTaskThread other(c.task, &recorder);
    other.Start();
    ASSERT_TRUE(WaitUntil([&] { return recorder.completed != 0; }));
    other.Stop(true);
    EXPECT_EQ(recorder.completed, 1);
    EXPECT_EQ(FXErrorUtil::GetWin32(other.GetRunResult()), c.result);
    EXPECT_EQ(other.GetStatus(), c.status);
  }
}

TEST(TaskThread, ACanceledTaskCompletesWith2) {
  CRecordingConnector connector;
  auto task = boost::make_shared<CScriptTask>(&UntilCanceled);
  CTaskThread thread(task, &connector);
  thread.Start();
  ASSERT_TRUE(WaitUntil([&] { return task->runs == 1; }));
  task->OnCancelRequest();
  ASSERT_TRUE(WaitUntil([&] { return connector.completed != 0; }));
  thread.Stop(true);
  EXPECT_EQ(connector.completed, 2);
  EXPECT_EQ(FXErrorUtil::GetWin32(thread.GetRunResult()), static_cast<DWORD>(ERROR_OPERATION_ABORTED));
}

TEST(TaskThread, AnAutonomousThreadFreesItself) {
  auto task = boost::make_shared<CScriptTask>();
  boost::weak_ptr<CAutonomousTaskThread> watch;
  {
    auto thread = boost::make_shared<CAutonomousTaskThread>(task, nullptr);
    thread->SetSelfReference(thread);
    watch = thread;
    thread->Start();
  }
  ASSERT_TRUE(WaitUntil([&] { return watch.expired(); }));
  EXPECT_EQ(task->runs, 1);
}

// RunProcess starts the helper program next to this one.
class RunProcess : public ::testing::Test {
 protected:
  static std::string Child() {
    std::string path = FXPlatform::ExecutablePath();
    path.erase(path.find_last_of("\\/") + 1);
    return "\"" + path + ZU_TASK_CHILD + "\"";
  }
  CScriptTask m_task;
  CRecordingConnector m_connector;
};

TEST_F(RunProcess, ExitCodesComeBackAsResults) {
  struct TCase {
    std::string arguments;
    DWORD code;  // 0: success
  };
  const TCase cases[] = {{" 0 0", 0}, {" 3 0", 3}, {" 0 0 \"a b\"", 3}, {"  7   0 ", 7}};
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.arguments);
    const CZuError result = m_task.RunProcess(nullptr, Child() + c.arguments, true, CTimeInterval());
    if (c.code == 0) {
      EXPECT_FALSE(result.IsError()) << result.AsString();
    } else {
      EXPECT_EQ(FXErrorUtil::GetWin32(result), c.code);
      EXPECT_NE(result.AsString().find("ended with exit code " + std::to_string(c.code)), std::string::npos);
      EXPECT_NE(result.AsString().find("CRunnableTask::RunProcess"), std::string::npos);
    }
  }
  // The wide form, and a program that is not there.
  EXPECT_FALSE(m_task.RunProcess(nullptr, FXString::ToWstring(Child() + " 0 0"), true, CTimeInterval()).IsError());
  EXPECT_TRUE(m_task.RunProcess(nullptr, std::string("zu_no_such_program_here"), true, CTimeInterval()).IsError());
  EXPECT_TRUE(m_task.RunProcess(nullptr, std::string("   "), true, CTimeInterval()).IsError());
}

TEST_F(RunProcess, WaitingIsOptionalBoundedAndCancelable) {
  auto start = steady_clock::now();
  EXPECT_FALSE(m_task.RunProcess(nullptr, Child() + " 0 300", false, CTimeInterval()).IsError());
  EXPECT_LT(MillisecondsSince(start), 250);

  start = steady_clock::now();
  CZuError result = m_task.RunProcess(nullptr, Child() + " 0 30000", true, CTimeInterval::FromMilliseconds(300));
  EXPECT_EQ(FXErrorUtil::GetWin32(result), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_LT(MillisecondsSince(start), 5000);

  // With a connector: told of the process, and a cancel ends the child.
  CScriptTask task(
      [](CScriptTask& self) { return self.RunProcess(nullptr, Child() + " 0 30000", true, CTimeInterval()); });
  std::thread canceler([&] {
    WaitUntil([&] { return m_connector.processSeen.load(); });
    task.OnCancelRequest();
  });
  start = steady_clock::now();
  result = task.Run(&m_connector);
  canceler.join();
  EXPECT_TRUE(m_connector.processSeen);
  EXPECT_EQ(FXErrorUtil::GetWin32(result), static_cast<DWORD>(ERROR_OPERATION_ABORTED));
  EXPECT_LT(MillisecondsSince(start), 10000);
  // Canceled before: not started at all.
  EXPECT_EQ(FXErrorUtil::GetWin32(task.RunProcess(nullptr, Child() + " 0 0", true, CTimeInterval())),
            static_cast<DWORD>(ERROR_OPERATION_ABORTED));
}

}  // namespace
