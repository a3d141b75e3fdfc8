// CSequentialTasks: a chain of tasks run one after the other on the
// caller's thread, stopping at the first failure unless told to go on.
//
// Calculated cost and progress (off by default; then the chain's own
// stored figures are used):
//   cost     = the sum of the tasks' costs;
//   progress = the cost-weighted mean of the tasks' progress,
//              sum(cost_i * progress_i) / sum(cost_i), in the tasks' own
//              unit (a chain of tasks counting 0..100 counts 0..100); when
//              the costs sum to 0, the plain mean. An empty chain reports
//              its stored figures.
// The task list is built before the chain runs; AddTask while it runs is
// not supported.
#pragma once

#include <mutex>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "threads/RunnableTask.h"

class ZUUTILS_API CSequentialTasks : public CRunnableTask {
 public:
  explicit CSequentialTasks(bool continueOnFailure = false);
  ~CSequentialTasks() override;
  CSequentialTasks(const CSequentialTasks&) = delete;
  CSequentialTasks& operator=(const CSequentialTasks&) = delete;

  void AddTask(boost::shared_ptr<CRunnableTask> task);
  void UseCalculatedTaskCost(bool on = true) { m_calculatedCost = on; }
  void UseCalculatedTaskProgress(bool on = true) { m_calculatedProgress = on; }

  // The task that stopped the chain (empty when none), with its error and
  // zero-based index (-1 and success when none).
  boost::shared_ptr<CRunnableTask> GetFailedTaskInformation(CZuError& error, int& index) const;
  bool AllTasksSucceeded() const;

 protected:
  CZuError Run() override;

 public:
  // The tasks in order with the connector; a failure that stops the chain
  // is recorded and returned with "CSequentialTasks::Run" pushed.
  CZuError Run(CTaskFeedbackConnector* connector) override;
  double GetTaskCost() const override;
  double GetTaskProgress() const override;
  // The chain's own flag, or any of its tasks canceled.
  bool IsCanceled() override;
  // Passes the request to every task, then sets the chain's own flag.
  bool OnCancelRequest() override;

 protected:
  // Whether the chain goes on after the task at `index` failed; the
  // continue-on-failure flag of the constructor.
  virtual bool ContinueOnFailedTask(boost::shared_ptr<CRunnableTask> task, int index);

 private:
  std::vector<boost::shared_ptr<CRunnableTask>> m_tasks;
  const bool m_continueOnFailure;
  std::atomic<bool> m_calculatedCost{false};
  std::atomic<bool> m_calculatedProgress{false};
  mutable std::mutex m_failureLock;
  CZuError m_failedError = CZuError::Success();
  int m_failedIndex = -1;
  boost::shared_ptr<CRunnableTask> m_failedTask;
};
