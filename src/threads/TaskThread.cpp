#include "threads/TaskThread.h"

#include "errors/ErrorUtil.h"

CTaskThread::CTaskThread(boost::shared_ptr<CRunnableTask> task, CTaskFeedbackConnector* connector)
    : m_task(std::move(task)), m_connector(connector) {}

CTaskThread::~CTaskThread() { Stop(true); }

CZuError CTaskThread::GetRunResult() const {
  std::lock_guard<std::mutex> guard(m_resultLock);
  return m_runResult;
}

void CTaskThread::OnStart() {
  if (m_connector != nullptr) m_connector->OnTaskStart();
}

void CTaskThread::OnRun() {
  const FXCodeLocation here = ZU_HERE("CTaskThread::OnRun");
  CZuError result = CZuError::Success();
  try {
    result =
        m_task ? m_task->Run(m_connector) : FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "No task to run");
  } catch (...) {
    // The run loop logs it and sets the status; the result says so too.
    SetRunResult(FXErrorUtil::ErrorWin32(here, ERROR_EXCEPTION_IN_SERVICE, "The task threw an exception"));
    InternalStop();
    throw;
  }
  SetRunResult(result);
  InternalStop();
}

void CTaskThread::SetRunResult(const CZuError& result) {
  std::lock_guard<std::mutex> guard(m_resultLock);
  m_runResult = result;
}

void CTaskThread::OnStop() {
  if (m_connector != nullptr) m_connector->OnTaskComplete(m_task && m_task->IsCanceled() ? 2 : 1);
}

CAutonomousTaskThread::CAutonomousTaskThread(boost::shared_ptr<CRunnableTask> task, CTaskFeedbackConnector* connector)
    : CTaskThread(std::move(task), connector) {}

void CAutonomousTaskThread::SetSelfReference(boost::shared_ptr<CAutonomousTaskThread> self) {
  std::lock_guard<std::mutex> guard(m_selfLock);
  m_self = std::move(self);
}

DWORD CAutonomousTaskThread::Run() {
  const DWORD result = CTaskThread::Run();
  // The last reference may be this one: nothing of the object is touched
  // once it is gone.
  boost::shared_ptr<CAutonomousTaskThread> self;
  {
    std::lock_guard<std::mutex> guard(m_selfLock);
    self.swap(m_self);
  }
  return result;
}
