// CRunnableTask: a unit of work with a cost, a progress figure, a cancel
// flag and an optional feedback sink; CTaskFeedbackConnector: that sink.
//
// A task runs on one thread at a time; OnCancelRequest, IsCanceled and the
// cost and progress accessors may be called from any thread. Cancellation
// is cooperative: Run() polls IsCanceled.
#pragma once

#include <atomic>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"
#include "time/TimeStamp.h"

class ZUUTILS_API CTaskFeedbackConnector {
 public:
  virtual ~CTaskFeedbackConnector();
  // Every notification does nothing unless overridden.
  virtual void OnTaskStart();
  // 1: the task ended; 2: it ended after a cancel request.
  virtual void OnTaskComplete(int result);
  virtual void OnTaskFeedback(const std::string& text, DWORD code);
  virtual void OnDisableAutoClose();
  // RunProcess started a child and waits for it: the process handle on
  // Windows, the process id cast to a pointer on POSIX, valid during the call.
  virtual void OnProcessRunning(void* process);
  virtual void SetTaskCancel(bool cancel);
};

// Virtual functions in their slot order (part of the exported interface).
class ZUUTILS_API CRunnableTask {
 public:
  CRunnableTask();
  // Copies cost, progress and the cancel flag; a copy has no connector.
  CRunnableTask(const CRunnableTask& other);
  CRunnableTask& operator=(const CRunnableTask& other);
  virtual ~CRunnableTask();

 protected:
  // The work; every concrete task overrides it.
  virtual CZuError Run() = 0;

 public:
  // Runs the task with the connector set for its feedback; a failure gets
  // "CRunnableTask::Run" pushed.
  virtual CZuError Run(CTaskFeedbackConnector* connector);
  virtual void SetTaskCost(double cost);
  virtual double GetTaskCost() const;
  virtual void SetTaskProgress(double progress);
  virtual double GetTaskProgress() const;
  virtual bool IsCanceled();
  // Logs "0x%p Cancel requested" at level 7, sets the cancel flag; true.
  virtual bool OnCancelRequest();
  // To the connector's OnTaskFeedback while Run executes, else nothing.
  virtual void SendFeedback(const std::string& text, DWORD code);
  // Sleeps `milliseconds` in steps of at most 200 ms (queued calls run in
  // between) and moves the task progress on by `progressSpan` in proportion
  // to the time slept, so that a wait shows as progress. Returns true as
  // soon as IsCanceled reports true (the progress then moved only by the
  // share slept), false after the full time. A duration of 0 or less only
  // checks the flag.
  virtual bool Pause(long long milliseconds, double progressSpan);
  // To the connector's OnDisableAutoClose while Run executes, else nothing.
  virtual void DisableFeedbackAutoClose();

 protected:
  // Runs a command line (program first; see FXPlatform::CChildProcess::
  // StartCommandLine for how POSIX splits it) as the user of `userToken`,
  // or as this process's user when it is null.
  // Without `wait`: success once the child started; it runs on unobserved.
  // With `wait`: the connector's OnProcessRunning is told, then the child is
  // awaited, checking IsCanceled at least every 200 ms. The child's exit
  // code comes back as the result: 0 is success, any other code a Win32
  // error of that number ("<line>" ended with exit code N). A cancel request
  // (also one made before the start) ends the child with 995
  // (ERROR_OPERATION_ABORTED); a `timeout` (not 0) that passes first ends it
  // with 258 (WAIT_TIMEOUT): no child outlives a wait that gave up on it.
  virtual CZuError RunProcess(void* userToken, const std::wstring& commandLine, bool wait, CTimeInterval timeout);
  virtual CZuError RunProcess(void* userToken, const std::string& commandLine, bool wait, CTimeInterval timeout);

  CTaskFeedbackConnector* GetFeedbackConnector() const { return m_connector.load(); }
  void SetFeedbackConnector(CTaskFeedbackConnector* connector) { m_connector.store(connector); }
  void SetCanceled(bool canceled) { m_canceled.store(canceled); }

 private:
  std::atomic<CTaskFeedbackConnector*> m_connector{nullptr};
  std::atomic<bool> m_canceled{false};
  std::atomic<double> m_cost{0.0};
  std::atomic<double> m_progress{0.0};
};
