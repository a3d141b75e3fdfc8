// CAlertableEventThread: the base of the library's worker threads. The
// worker sleeps alertably on one auto-reset event and runs the subclass's
// hooks when the event is set (OnEvent), when queued calls ran during the
// wait (OnCompletion), when the wait timed out (OnTimeout) or reported an
// abandoned object (OnAbandoned). No hook ends the thread by throwing.
//
// Life: Start (or StartSynchronously on the caller's thread) -> running ->
// Stop (cooperative: clears the running flag and sets the event) -> the
// loop ends, OnStop runs, the thread id is cleared and the callback's
// OnThreadExit(status) runs on the worker -> Start may run again.
//
// Queued calls: QueueUserAPC (platform/ThreadApi.h) with the worker's handle
// (GetThreadHandle) runs the call inside the worker's wait, on Windows and
// on POSIX alike.
//
// Destruction: the destructor stops the worker and waits for it. A subclass
// whose hooks use its own members must call Stop(true) in its own
// destructor: by the time the base destructor runs, the subclass is gone.
//
// The running flag, thread id, status, timeout and counters are atomics, so
// that the worker and the controlling thread may read and write them freely.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"
#include "threads/Event.h"
#include "time/TimeStamp.h"

class ZUUTILS_API CAlertableEventThreadCallback {
 public:
  virtual ~CAlertableEventThreadCallback();
  // On the worker thread, after the run loop ended and the thread id was
  // cleared: the thread object may already be started again from here.
  virtual void OnThreadExit(DWORD status) = 0;
};

class ZUUTILS_API CAlertableEventThread {
 public:
  // Shares the callback and the event, copies the rest and takes the
  // thread handle from `other`, whose handle becomes null.
  CAlertableEventThread(const CAlertableEventThread& other);
  CAlertableEventThread& operator=(const CAlertableEventThread& other);

  // Stop(true), then closes the thread handle.
  virtual ~CAlertableEventThread();
  // A new thread running Run(), unless one is held (thread id nonzero), a
  // Stop(true) is waiting or the object is being destroyed. A failure to create the thread is not
  // reported: the id stays 0.
  virtual void Start();
  // Run() on the calling thread, unless a thread is held. No id is set, so
  // Stop from elsewhere has no effect: a hook ends the run with InternalStop.
  virtual void StartSynchronously();
  // Clears the running flag and sets the event. With `wait`, polls until the
  // worker has cleared its id: each poll lasts 100 ms unless the worker ends
  // sooner, and five polls that find the thread gone without having cleared
  // its id give up (logged). While it waits, Start does nothing, so that an
  // OnThreadExit that restarts the thread cannot keep it waiting. Called on
  // the worker itself (from a hook), Stop does not wait: the thread cannot
  // see its own end.
  virtual void Stop(bool wait);
  // Alertable wait for the thread's end; 0 waits without limit. Any result
  // but 0 is returned as a Win32 error with the wait's result as code (258
  // time-out, 192 queued calls ran, all ones for no thread).
  virtual CZuError WaitForStop(CTimeInterval timeout);

 protected:
  virtual DWORD Run();
  virtual DWORD WaitForEvent();
  virtual void OnStart();
  virtual void OnRun();
  virtual void OnStop();
  virtual void OnEvent();
  virtual void OnCompletion();
  virtual void OnTimeout();
  virtual void OnAbandoned();
  // 0 waits without limit; the wait takes whole milliseconds (truncated),
  // so a timeout below 10,000 units polls without waiting.
  virtual void SetTimeout(CTimeInterval timeout);
  // Clears the running flag, nothing else.
  virtual void InternalStop();

 public:
  // The thread entry, with the object as context. A null context is logged
  // and returns 87; an exception escaping Run is logged and returns 1064.
  static DWORD RunStub(void* context);

  // Wakes the worker: OnEvent runs once per wake (the event resets itself).
  void SetEvent();

  DWORD GetStatus() const { return m_status.load(); }
  void SetStatus(DWORD status) { m_status.store(status); }
  DWORD GetThreadId() const { return m_threadId.load(); }
  CTimeInterval GetTimeout() const { return CTimeInterval::From100NS(m_timeout.load()); }

 protected:
  CAlertableEventThread();
  explicit CAlertableEventThread(boost::shared_ptr<CAlertableEventThreadCallback> callback);

  // Windows: TerminateThread with exit code 258, then the handle is closed
  // (and forgotten, so that it is not closed twice). POSIX threads cannot be
  // killed without leaving locks held and memory lost, so there it fails
  // with ERROR_NOT_SUPPORTED (50) and the thread runs on: callers that gave
  // up on WaitForStop can only leave it behind.
  CZuError TerminateAlertableThread();
  // A name for debuggers, only while a thread handle is held.
  void SetDescription(const std::string& description);
  bool IsRunning() const { return m_running.load(); }
  // Null when no thread was started; the handle to queue calls to.
  HANDLE GetThreadHandle() const;

  unsigned long long GetEventsHandled() const { return m_eventsHandled.load(); }
  unsigned long long GetCompletionsHandled() const { return m_completionsHandled.load(); }
  unsigned long long GetTimeoutsHandled() const { return m_timeoutsHandled.load(); }

 private:
  // A handle of our own on the current thread, for waiting without the lock.
  HANDLE DuplicateThreadHandle() const;

  boost::shared_ptr<CAlertableEventThreadCallback> m_callback;
  boost::shared_ptr<FXEvent> m_event;
  std::atomic<bool> m_running{false};
  // Guards the handle and, with it, the id Start publishes: Stop and
  // WaitForStop may run while OnThreadExit starts the next thread.
  mutable std::mutex m_handleLock;
  mutable HANDLE m_hThread = nullptr;
  std::atomic<DWORD> m_threadId{0};
  std::atomic<long long> m_timeout{0};
  std::atomic<unsigned long long> m_eventsHandled{0};
  std::atomic<unsigned long long> m_completionsHandled{0};
  std::atomic<unsigned long long> m_timeoutsHandled{0};
  std::atomic<DWORD> m_status{0};
  std::atomic<bool> m_destroying{false};
  std::atomic<int> m_stopWaiters{0};
};
