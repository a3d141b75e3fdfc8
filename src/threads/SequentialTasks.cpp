#include "threads/SequentialTasks.h"

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"

CSequentialTasks::CSequentialTasks(bool continueOnFailure) : m_continueOnFailure(continueOnFailure) {}

CSequentialTasks::~CSequentialTasks() = default;

void CSequentialTasks::AddTask(boost::shared_ptr<CRunnableTask> task) { m_tasks.push_back(std::move(task)); }

boost::shared_ptr<CRunnableTask> CSequentialTasks::GetFailedTaskInformation(CZuError& error, int& index) const {
  std::lock_guard<std::mutex> guard(m_failureLock);
  error = m_failedError;
  index = m_failedIndex;
  return m_failedTask;
}

bool CSequentialTasks::AllTasksSucceeded() const {
  std::lock_guard<std::mutex> guard(m_failureLock);
  return !m_failedError.IsError();
}

CZuError CSequentialTasks::Run(CTaskFeedbackConnector* connector) {
  SetFeedbackConnector(connector);
  CZuError result = Run();
  SetFeedbackConnector(nullptr);
  return result;
}

CZuError CSequentialTasks::Run() {
  CTaskFeedbackConnector* connector = GetFeedbackConnector();
  for (std::size_t i = 0; i < m_tasks.size(); ++i) {
    const boost::shared_ptr<CRunnableTask>& task = m_tasks[i];
    const int index = static_cast<int>(i);
    CZuError result = task ? task->Run(connector)
                           : FXErrorUtil::ErrorWin32(ZU_HERE("CSequentialTasks::Run"), ERROR_INVALID_PARAMETER,
                                                     "No task at index %d", index);
    if (!result.IsError() || ContinueOnFailedTask(task, index)) continue;
    {
      std::lock_guard<std::mutex> guard(m_failureLock);
      m_failedError = result.Copy();
      m_failedIndex = index;
      m_failedTask = task;
    }
    return result.Push(ZU_HERE("CSequentialTasks::Run"));
  }
  return CZuError::Success();
}

double CSequentialTasks::GetTaskCost() const {
  if (!m_calculatedCost || m_tasks.empty()) return CRunnableTask::GetTaskCost();
  double sum = 0.0;
  for (const auto& task : m_tasks)
    if (task) sum += task->GetTaskCost();
  return sum;
}

double CSequentialTasks::GetTaskProgress() const {
  if (!m_calculatedProgress || m_tasks.empty()) return CRunnableTask::GetTaskProgress();
  double weighted = 0.0, costs = 0.0, plain = 0.0;
  int counted = 0;
  for (const auto& task : m_tasks) {
    if (!task) continue;
    ++counted;
    const double cost = task->GetTaskCost();
    const double progress = task->GetTaskProgress();
    weighted += cost * progress;
    costs += cost;
    plain += progress;
  }
  if (counted == 0) return CRunnableTask::GetTaskProgress();
  return costs != 0.0 ? weighted / costs : plain / counted;
}

bool CSequentialTasks::IsCanceled() {
  if (CRunnableTask::IsCanceled()) return true;
  for (const auto& task : m_tasks)
    if (task && task->IsCanceled()) return true;
  return false;
}

bool CSequentialTasks::OnCancelRequest() {
  CZuLogger::GetGlobalInstance().LogMessage(7, "CSequentialTasks::OnCancelRequest", __LINE__, nullptr,
                                            "0x%p Cancel requested", static_cast<void*>(this));
  for (const auto& task : m_tasks)
    if (task) task->OnCancelRequest();
  SetCanceled(true);
  return true;
}

bool CSequentialTasks::ContinueOnFailedTask(boost::shared_ptr<CRunnableTask>, int) { return m_continueOnFailure; }
