// CTaskThread runs one CRunnableTask on a thread of its own (one pass of the
// run loop, then the thread ends); CAutonomousTaskThread does the same and
// frees itself afterwards.
//
// The connector hears OnTaskStart when the thread starts and
// OnTaskComplete(2) when it ends after the task was canceled, else
// OnTaskComplete(1).
#pragma once

#include <mutex>

#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "threads/AlertableEventThread.h"
#include "threads/RunnableTask.h"

class ZUUTILS_API CTaskThread : public CAlertableEventThread {
 public:
  // The connector is not owned and must outlive the run.
  CTaskThread(boost::shared_ptr<CRunnableTask> task, CTaskFeedbackConnector* connector);
  ~CTaskThread() override;
  CTaskThread(const CTaskThread&) = delete;
  CTaskThread& operator=(const CTaskThread&) = delete;

  // The task's result once it ran: success before; Win32 87 when there was
  // no task to run, 1064 when the task threw (the thread's status too).
  CZuError GetRunResult() const;
  boost::shared_ptr<CRunnableTask> GetTask() const { return m_task; }

 protected:
  void OnStart() override;
  // Runs the task, keeps its result and ends the run loop.
  void OnRun() override;
  void OnStop() override;

 private:
  void SetRunResult(const CZuError& result);

  boost::shared_ptr<CRunnableTask> m_task;
  CTaskFeedbackConnector* m_connector;
  mutable std::mutex m_resultLock;
  CZuError m_runResult = CZuError::Success();
};

class ZUUTILS_API CAutonomousTaskThread : public CTaskThread {
 public:
  CAutonomousTaskThread(boost::shared_ptr<CRunnableTask> task, CTaskFeedbackConnector* connector);

  // Keeps the object alive while its thread runs: fire and forget with
  //   auto thread = boost::make_shared<CAutonomousTaskThread>(task, nullptr);
  //   thread->SetSelfReference(thread);
  //   thread->Start();
  // The reference is dropped when the run loop has ended, so the last owner
  // may be the thread itself, which then destroys the object on its way out.
  void SetSelfReference(boost::shared_ptr<CAutonomousTaskThread> self);

 protected:
  DWORD Run() override;

 private:
  std::mutex m_selfLock;
  boost::shared_ptr<CAutonomousTaskThread> m_self;
};
