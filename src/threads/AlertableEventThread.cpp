#include "threads/AlertableEventThread.h"

#include <boost/make_shared.hpp>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/SystemError.h"
#include "platform/Thread.h"

namespace {

constexpr DWORD kStopPollMilliseconds = 100;
constexpr int kStopMissLimit = 5;
constexpr int kTraceLevel = 8;

// Every line of the thread class goes out at the highest priority.
#define ZU_THREAD_LOG(function, ...) \
  CZuLogger::GetGlobalInstance().LogMessage(-1, function, __LINE__, nullptr, __VA_ARGS__)

// Entry and exit of Run, when the logger traces at level 8 or more.
class CRunTrace {
 public:
  CRunTrace() : m_on(CZuLogger::GetGlobalInstance().GetDebugLevel() >= kTraceLevel) {
    if (m_on) CZuLogger::GetGlobalInstance().LogMessage(kTraceLevel, kFunction, __LINE__, nullptr, "Enter");
  }
  ~CRunTrace() {
    if (m_on) CZuLogger::GetGlobalInstance().LogMessage(kTraceLevel, kFunction, __LINE__, nullptr, "Leave");
  }
  CRunTrace(const CRunTrace&) = delete;
  CRunTrace& operator=(const CRunTrace&) = delete;

 private:
  static constexpr const char* kFunction = "CAlertableEventThread::Run";
  bool m_on;
};

}  // namespace

CAlertableEventThreadCallback::~CAlertableEventThreadCallback() = default;

CAlertableEventThread::CAlertableEventThread() : m_event(boost::make_shared<FXEvent>(0)) {}

CAlertableEventThread::CAlertableEventThread(boost::shared_ptr<CAlertableEventThreadCallback> callback)
    : m_callback(std::move(callback)), m_event(boost::make_shared<FXEvent>(0)) {}

CAlertableEventThread::CAlertableEventThread(const CAlertableEventThread& other)
    : m_callback(other.m_callback),
      m_event(other.m_event),
      m_running(other.m_running.load()),
      m_threadId(other.m_threadId.load()),
      m_timeout(other.m_timeout.load()),
      m_eventsHandled(other.m_eventsHandled.load()),
      m_completionsHandled(other.m_completionsHandled.load()),
      m_timeoutsHandled(other.m_timeoutsHandled.load()),
      m_status(other.m_status.load()) {
  std::lock_guard<std::mutex> guard(other.m_handleLock);
  m_hThread = other.m_hThread;
  other.m_hThread = nullptr;
}

CAlertableEventThread& CAlertableEventThread::operator=(const CAlertableEventThread& other) {
  if (this == &other) return *this;
  HANDLE taken;
  {
    std::lock_guard<std::mutex> guard(other.m_handleLock);
    taken = other.m_hThread;
    other.m_hThread = nullptr;
  }
  m_callback = other.m_callback;
  m_event = other.m_event;
  m_running.store(other.m_running.load());
  m_timeout.store(other.m_timeout.load());
  m_eventsHandled.store(other.m_eventsHandled.load());
  m_completionsHandled.store(other.m_completionsHandled.load());
  m_timeoutsHandled.store(other.m_timeoutsHandled.load());
  m_status.store(other.m_status.load());
  std::lock_guard<std::mutex> guard(m_handleLock);
  if (m_hThread != nullptr) FXPlatform::CloseObject(m_hThread);
  m_hThread = taken;
  m_threadId.store(other.m_threadId.load());
  return *this;
}

CAlertableEventThread::~CAlertableEventThread() {
  m_destroying.store(true);
  Stop(true);
  std::lock_guard<std::mutex> guard(m_handleLock);
  if (m_hThread != nullptr && m_hThread != INVALID_HANDLE_VALUE) FXPlatform::CloseObject(m_hThread);
  m_hThread = nullptr;
}

void CAlertableEventThread::Start() {
  std::lock_guard<std::mutex> guard(m_handleLock);
  if (m_threadId.load() != 0 || m_destroying.load() || m_stopWaiters.load() != 0) return;
  m_eventsHandled.store(0);
  m_running.store(true);
  DWORD id = 0;
  HANDLE thread = FXPlatform::CreateSuspendedThread(&CAlertableEventThread::RunStub, this, id);
  if (thread == nullptr) return;
  if (m_hThread != nullptr && m_hThread != INVALID_HANDLE_VALUE) FXPlatform::CloseObject(m_hThread);
  m_hThread = thread;
  m_threadId.store(id);
  FXPlatform::ResumeCreatedThread(thread);
}

void CAlertableEventThread::StartSynchronously() {
  if (m_threadId.load() != 0) return;
  m_eventsHandled.store(0);
  m_running.store(true);
  Run();
}

void CAlertableEventThread::Stop(bool wait) {
  if (m_threadId.load() == 0) return;
  if (!m_event || !m_event->IsValid()) return;
  m_running.store(false);
  m_event->Set();
  if (!wait || m_threadId.load() == 0) return;

  // While this waits, Start does nothing: an OnThreadExit that starts the
  // next worker would otherwise keep the wait going for ever. A worker that
  // slipped in before is asked to stop as well.
  struct TWaiting {
    explicit TWaiting(std::atomic<int>& count) : m_count(count) { ++m_count; }
    ~TWaiting() { --m_count; }
    std::atomic<int>& m_count;
  } waiting(m_stopWaiters);
  DWORD stopping = m_threadId.load();

  int misses = 0;
  DWORD exitCode = 0;
  for (;;) {
    const DWORD id = m_threadId.load();
    if (id == 0) return;
    if (id != stopping) {
      stopping = id;
      m_running.store(false);
      m_event->Set();
    }
    HANDLE thread = DuplicateThreadHandle();
    if (thread != nullptr && FXPlatform::IsCurrentThread(thread)) {
      FXPlatform::CloseObject(thread);
      return;
    }
    const DWORD waited = thread != nullptr ? FXPlatform::WaitAlertable(thread, kStopPollMilliseconds) : WAIT_FAILED;
    // A thread that is gone ends the wait at once; the poll still lasts its
    // 100 ms, so that a worker that vanished gets its five polls' grace.
    if (waited != WAIT_TIMEOUT && m_threadId.load() != 0) FXPlatform::SleepAlertable(kStopPollMilliseconds);
    const bool read = thread != nullptr && FXPlatform::GetThreadExitCode(thread, exitCode);
    if (thread != nullptr) FXPlatform::CloseObject(thread);
    if (m_threadId.load() == 0) return;
    if (!read || exitCode != STILL_ACTIVE) ++misses;
    if (misses >= kStopMissLimit) {
      ZU_THREAD_LOG("CAlertableEventThread::Stop",
                    "Thread no longer exists but did not terminate normally, ThreadId=%u, Handle=0x%p, ExitCode=%u",
                    static_cast<unsigned>(m_threadId.load()), thread, static_cast<unsigned>(exitCode));
      m_threadId.store(0);
      return;
    }
  }
}

CZuError CAlertableEventThread::WaitForStop(CTimeInterval timeout) {
  const FXCodeLocation here = ZU_HERE("CAlertableEventThread::WaitForStop");
  HANDLE thread = DuplicateThreadHandle();
  const DWORD result =
      thread != nullptr ? FXPlatform::WaitAlertable(thread, FXEvent::ToWaitMilliseconds(timeout)) : WAIT_FAILED;
  if (thread != nullptr) FXPlatform::CloseObject(thread);
  if (result == WAIT_OBJECT_0) return CZuError::Success();
  return FXErrorUtil::ErrorWin32(here, result);
}

DWORD CAlertableEventThread::Run() {
  const CRunTrace trace;
  try {
    OnStart();
  } catch (...) {
    m_running.store(false);
    m_status.store(ERROR_EXCEPTION_IN_SERVICE);
    ZU_THREAD_LOG("CAlertableEventThread::Run", "#### Unhandled exception caught in OnStart(), skipping OnRun()");
  }
  while (m_running.load()) {
    try {
      OnRun();
    } catch (...) {
      m_running.store(false);
      m_status.store(ERROR_EXCEPTION_IN_SERVICE);
      ZU_THREAD_LOG("CAlertableEventThread::Run", "#### Unhandled exception caught in OnRun()");
    }
  }
  try {
    OnStop();
  } catch (...) {
    m_status.store(ERROR_EXCEPTION_IN_SERVICE);
    ZU_THREAD_LOG("CAlertableEventThread::Run", "#### Unhandled exception caught in OnStop()");
  }
  // Once the id is clear another thread may start, copy or destroy the
  // object: take what the end needs first and touch nothing after.
  m_running.store(false);
  const DWORD status = m_status.load();
  const boost::shared_ptr<CAlertableEventThreadCallback> callback = m_callback;
  m_threadId.store(0);
  if (callback) callback->OnThreadExit(status);
  return 0;
}

DWORD CAlertableEventThread::WaitForEvent() {
  if (!m_event || !m_event->IsValid()) return ERROR_INVALID_HANDLE;
  return m_event->WaitAlertable(GetTimeout());
}

void CAlertableEventThread::OnStart() {}

void CAlertableEventThread::OnRun() {
  const DWORD result = WaitForEvent();
  if (!m_running.load()) return;
  const char* hook = nullptr;
  try {
    switch (result) {
      case WAIT_OBJECT_0:
        hook = "#### Unhandled exception caught in OnEvent()";
        ++m_eventsHandled;
        OnEvent();
        break;
      case WAIT_IO_COMPLETION:
        hook = "#### Unhandled exception caught in OnCompletion()";
        ++m_completionsHandled;
        OnCompletion();
        break;
      case WAIT_TIMEOUT:
        hook = "#### Unhandled exception caught in OnTimeout()";
        ++m_timeoutsHandled;
        OnTimeout();
        break;
      case WAIT_ABANDONED:
        hook = "#### Unhandled exception caught in OnAbandoned()";
        OnAbandoned();
        break;
      default:
        break;
    }
  } catch (...) {
    ZU_THREAD_LOG("CAlertableEventThread::OnRun", "%s", hook);
  }
}

void CAlertableEventThread::OnStop() {}
void CAlertableEventThread::OnEvent() {}
void CAlertableEventThread::OnCompletion() {}
void CAlertableEventThread::OnTimeout() {}
void CAlertableEventThread::OnAbandoned() {}

void CAlertableEventThread::SetTimeout(CTimeInterval timeout) { m_timeout.store(timeout.As100NSIntervals()); }

void CAlertableEventThread::InternalStop() { m_running.store(false); }

DWORD CAlertableEventThread::RunStub(void* context) {
  if (context == nullptr) {
    ZU_THREAD_LOG("CAlertableEventThread::RunStub", "NULL context received; cannot continue");
    return ERROR_INVALID_PARAMETER;
  }
  try {
    return static_cast<CAlertableEventThread*>(context)->Run();
  } catch (...) {
    ZU_THREAD_LOG("CAlertableEventThread::RunStub", "#### Unhandled exception caught in Run()");
    return ERROR_EXCEPTION_IN_SERVICE;
  }
}

void CAlertableEventThread::SetEvent() {
  if (m_event) m_event->Set();
}

CZuError CAlertableEventThread::TerminateAlertableThread() {
  const FXCodeLocation here = ZU_HERE("CAlertableEventThread::TerminateAlertableThread");
  std::lock_guard<std::mutex> guard(m_handleLock);
  if (!FXPlatform::TerminateThreadObject(m_hThread, WAIT_TIMEOUT)) {
    const FXPlatform::TSystemError error = FXPlatform::LastSystemError();
    return FXErrorUtil::ErrorWin32(here, error.win32, "Error while terminating thread with id [%lu]",
                                   static_cast<unsigned long>(m_threadId.load()));
  }
  HANDLE thread = m_hThread;
  m_hThread = nullptr;
  if (!FXPlatform::CloseObject(thread)) {
    const FXPlatform::TSystemError error = FXPlatform::LastSystemError();
    return FXErrorUtil::ErrorWin32(here, error.win32, "Error while closing thread handle");
  }
  return CZuError::Success();
}

void CAlertableEventThread::SetDescription(const std::string& description) {
  std::lock_guard<std::mutex> guard(m_handleLock);
  if (m_hThread == nullptr || m_hThread == INVALID_HANDLE_VALUE) return;
  FXPlatform::SetThreadDescriptionText(m_hThread, description);
}

HANDLE CAlertableEventThread::GetThreadHandle() const {
  std::lock_guard<std::mutex> guard(m_handleLock);
  return m_hThread;
}

HANDLE CAlertableEventThread::DuplicateThreadHandle() const {
  std::lock_guard<std::mutex> guard(m_handleLock);
  if (m_hThread == nullptr || m_hThread == INVALID_HANDLE_VALUE) return nullptr;
  return FXPlatform::DuplicateObject(m_hThread);
}
