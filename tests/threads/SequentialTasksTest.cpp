#include "threads/SequentialTasks.h"

#include <gtest/gtest.h>

#include <thread>

#include <boost/make_shared.hpp>

#include "TaskTestSupport.h"
#include "errors/ErrorUtil.h"
#include "threads/SendEventInterface.h"

namespace {

using namespace ZuThreadTest;

boost::shared_ptr<CScriptTask> Task(DWORD failure) {
  return boost::make_shared<CScriptTask>([failure](CScriptTask&) {
    return failure == 0 ? CZuError::Success() : FXErrorUtil::ErrorWin32(ZU_HERE("Test::Work"), failure);
  });
}

TEST(SequentialTasks, StopsAtTheFirstFailureUnlessToldToGoOn) {
  for (bool goOn : {false, true}) {
    SCOPED_TRACE(goOn);
    CSequentialTasks chain(goOn);
    const boost::shared_ptr<CScriptTask> tasks[] = {Task(0), Task(ERROR_NOT_FOUND), Task(0), Task(ERROR_BUSY)};
    for (const auto& task : tasks) chain.AddTask(task);
    CRecordingConnector connector;
    const CZuError result = chain.Run(&connector);

    CZuError failure = CZuError::Success();
    int index = 99;
    const boost::shared_ptr<CRunnableTask> failed = chain.GetFailedTaskInformation(failure, index);
    if (goOn) {
      EXPECT_FALSE(result.IsError());
      EXPECT_EQ(tasks[3]->runs, 1);
      EXPECT_TRUE(chain.AllTasksSucceeded());
      EXPECT_EQ(failed, nullptr);
      EXPECT_EQ(index, -1);
    } else {
      EXPECT_EQ(FXErrorUtil::GetWin32(result), static_cast<DWORD>(ERROR_NOT_FOUND));
      EXPECT_NE(result.AsString().find("CSequentialTasks::Run"), std::string::npos);
      EXPECT_EQ(tasks[2]->runs, 0);
      EXPECT_FALSE(chain.AllTasksSucceeded());
      EXPECT_EQ(failed, tasks[1]);
      EXPECT_EQ(index, 1);
      EXPECT_EQ(FXErrorUtil::GetWin32(failure), static_cast<DWORD>(ERROR_NOT_FOUND));
      // The record is a copy: what the caller pushes does not reach it.
      EXPECT_EQ(failure.AsString().find("CSequentialTasks::Run"), std::string::npos);
    }
    EXPECT_EQ(tasks[0]->runs, 1);
    EXPECT_EQ(tasks[1]->runs, 1);
  }
  CSequentialTasks empty;
  EXPECT_FALSE(empty.Run(nullptr).IsError());
  EXPECT_TRUE(empty.AllTasksSucceeded());
}

class CSkipOdd : public CSequentialTasks {
 protected:
  bool ContinueOnFailedTask(boost::shared_ptr<CRunnableTask>, int index) override { return index % 2 == 1; }
};

TEST(SequentialTasks, ContinueOnFailedTaskDecidesPerTask) {
  CSkipOdd chain;
  const boost::shared_ptr<CScriptTask> tasks[] = {Task(0), Task(ERROR_BUSY), Task(ERROR_NOT_FOUND), Task(0)};
  for (const auto& task : tasks) chain.AddTask(task);
  EXPECT_EQ(FXErrorUtil::GetWin32(chain.Run(nullptr)), static_cast<DWORD>(ERROR_NOT_FOUND));
  CZuError failure = CZuError::Success();
  int index = -1;
  EXPECT_EQ(chain.GetFailedTaskInformation(failure, index), tasks[2]);
  EXPECT_EQ(index, 2);
  EXPECT_EQ(tasks[3]->runs, 0);
}

TEST(SequentialTasks, CalculatedCostAndProgressAreCostWeighted) {
  CSequentialTasks chain;
  chain.SetTaskCost(9);
  chain.SetTaskProgress(50);
  EXPECT_EQ(chain.GetTaskCost(), 9);  // calculated, but nothing to calculate from
  auto a = Task(0), b = Task(0);
  a->SetTaskCost(1);
  a->SetTaskProgress(100);
  b->SetTaskCost(3);
  b->SetTaskProgress(0);
  chain.AddTask(a);
  chain.AddTask(b);
  EXPECT_EQ(chain.GetTaskCost(), 9);
  EXPECT_EQ(chain.GetTaskProgress(), 50);
  chain.UseCalculatedTaskCost();
  chain.UseCalculatedTaskProgress();
  EXPECT_EQ(chain.GetTaskCost(), 4);
  EXPECT_EQ(chain.GetTaskProgress(), 25);
  a->SetTaskCost(0);
  b->SetTaskCost(0);
  b->SetTaskProgress(50);
  EXPECT_EQ(chain.GetTaskProgress(), 75);  // no costs: the plain mean
}

TEST(SequentialTasks, CancelReachesEveryTask) {
  CSequentialTasks chain;
  auto a = Task(0), b = Task(0);
  chain.AddTask(a);
  chain.AddTask(b);
  EXPECT_FALSE(chain.IsCanceled());
  b->OnCancelRequest();
  EXPECT_TRUE(chain.IsCanceled());  // one canceled task is enough
  EXPECT_TRUE(chain.OnCancelRequest());
  EXPECT_TRUE(a->IsCanceled());
}

class CCountingSink : public ISendEventInterface {
 public:
  void SendCriticalEvent(const CZuError&, long long, int eventId) override { last = eventId; }
  std::atomic<int> last{0};
};

TEST(SendEventInterface, OneProcessWideInstance) {
  EXPECT_EQ(ISendEventInterface::GetInstance(), nullptr);
  auto sink = boost::make_shared<CCountingSink>();
  std::thread setter([&] { ISendEventInterface::SetInstance(sink); });
  setter.join();
  const auto instance = ISendEventInterface::GetInstance();
  ASSERT_EQ(instance, sink);
  instance->SendCriticalEvent(CZuError::Success(), 1, 42);
  instance->SendInfoEvent(CZuError::Success(), 1, 43);  // default: nothing
  EXPECT_EQ(sink->last, 42);
  ISendEventInterface::SetInstance(nullptr);
  EXPECT_EQ(ISendEventInterface::GetInstance(), nullptr);
}

}  // namespace
