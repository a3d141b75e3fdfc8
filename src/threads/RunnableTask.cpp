#include "threads/RunnableTask.h"

#include <algorithm>
#include <chrono>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/Process.h"
#include "platform/Thread.h"
#include "text/StringConvert.h"

namespace {

constexpr long long kStepMilliseconds = 200;

long long MillisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

CTaskFeedbackConnector::~CTaskFeedbackConnector() = default;
void CTaskFeedbackConnector::OnTaskStart() {}
void CTaskFeedbackConnector::OnTaskComplete(int) {}
void CTaskFeedbackConnector::OnTaskFeedback(const std::string&, DWORD) {}
void CTaskFeedbackConnector::OnDisableAutoClose() {}
void CTaskFeedbackConnector::OnProcessRunning(void*) {}
void CTaskFeedbackConnector::SetTaskCancel(bool) {}

CRunnableTask::CRunnableTask() = default;

CRunnableTask::CRunnableTask(const CRunnableTask& other)
    : m_canceled(other.m_canceled.load()), m_cost(other.m_cost.load()), m_progress(other.m_progress.load()) {}

CRunnableTask& CRunnableTask::operator=(const CRunnableTask& other) {
  m_canceled.store(other.m_canceled.load());
  m_cost.store(other.m_cost.load());
  m_progress.store(other.m_progress.load());
  return *this;
}

CRunnableTask::~CRunnableTask() = default;

CZuError CRunnableTask::Run(CTaskFeedbackConnector* connector) {
  SetFeedbackConnector(connector);
  CZuError result = Run();
  SetFeedbackConnector(nullptr);
  if (result.IsError()) result.Push(ZU_HERE("CRunnableTask::Run"));
  return result;
}

void CRunnableTask::SetTaskCost(double cost) { m_cost.store(cost); }
double CRunnableTask::GetTaskCost() const { return m_cost.load(); }
void CRunnableTask::SetTaskProgress(double progress) { m_progress.store(progress); }
double CRunnableTask::GetTaskProgress() const { return m_progress.load(); }
bool CRunnableTask::IsCanceled() { return m_canceled.load(); }

bool CRunnableTask::OnCancelRequest() {
  CZuLogger::GetGlobalInstance().LogMessage(7, "CRunnableTask::OnCancelRequest", __LINE__, nullptr,
                                            "0x%p Cancel requested", static_cast<void*>(this));
  m_canceled.store(true);
  return true;
}

void CRunnableTask::SendFeedback(const std::string& text, DWORD code) {
  if (CTaskFeedbackConnector* connector = GetFeedbackConnector()) connector->OnTaskFeedback(text, code);
}

bool CRunnableTask::Pause(long long milliseconds, double progressSpan) {
  if (IsCanceled()) return true;
  if (milliseconds <= 0) return false;
  const auto start = std::chrono::steady_clock::now();
  long long credited = 0;
  for (;;) {
    const long long slept = std::min<long long>(MillisecondsSince(start), milliseconds);
    if (progressSpan != 0.0 && slept > credited) {
      SetTaskProgress(GetTaskProgress() +
                      progressSpan * static_cast<double>(slept - credited) / static_cast<double>(milliseconds));
      credited = slept;
    }
    if (slept >= milliseconds) return false;
    if (IsCanceled()) return true;
    FXPlatform::SleepAlertable(static_cast<DWORD>(std::min(kStepMilliseconds, milliseconds - slept)));
  }
}

void CRunnableTask::DisableFeedbackAutoClose() {
  if (CTaskFeedbackConnector* connector = GetFeedbackConnector()) connector->OnDisableAutoClose();
}

CZuError CRunnableTask::RunProcess(void* userToken, const std::wstring& commandLine, bool wait, CTimeInterval timeout) {
  const FXCodeLocation here = ZU_HERE("CRunnableTask::RunProcess");
  const std::string text = FXString::ToString(commandLine);
  if (IsCanceled())
    return FXErrorUtil::ErrorWin32(here, ERROR_OPERATION_ABORTED, "\"%s\" not started: canceled", text.c_str());
  FXPlatform::CChildProcess child;
  CZuError started = child.StartCommandLine(commandLine, userToken);
  if (started.IsError()) return started.Push(here);
  if (!wait) {
    child.Detach();
    return CZuError::Success();
  }
  if (CTaskFeedbackConnector* connector = GetFeedbackConnector()) connector->OnProcessRunning(child.NativeHandle());

  const auto start = std::chrono::steady_clock::now();
  const long long limit = std::max<long long>(timeout.AsMilliseconds(), 0);
  for (;;) {
    long long step = kStepMilliseconds;
    if (!timeout.IsClear()) step = std::max<long long>(std::min(step, limit - MillisecondsSince(start)), 0);
    int exitCode = 0;
    CZuError waited = CZuError::Success();
    if (child.WaitFor(static_cast<unsigned long>(step), exitCode, waited)) {
      if (waited.IsError()) return waited.Push(here);
      if (exitCode == 0) return CZuError::Success();
      return FXErrorUtil::ErrorWin32(here, static_cast<DWORD>(exitCode), "\"%s\" ended with exit code %lu",
                                     text.c_str(), static_cast<unsigned long>(static_cast<DWORD>(exitCode)));
    }
    const bool canceled = IsCanceled();
    if (canceled || (!timeout.IsClear() && MillisecondsSince(start) >= limit)) {
      int ignored = 0;
      child.Kill();
      child.Wait(ignored);
      if (canceled)
        return FXErrorUtil::ErrorWin32(here, ERROR_OPERATION_ABORTED, "\"%s\" ended on a cancel request", text.c_str());
      return FXErrorUtil::ErrorWin32(here, WAIT_TIMEOUT, "\"%s\" did not end within %s", text.c_str(),
                                     timeout.AsString().c_str());
    }
  }
}

CZuError CRunnableTask::RunProcess(void* userToken, const std::string& commandLine, bool wait, CTimeInterval timeout) {
  return RunProcess(userToken, FXString::ToWstring(commandLine), wait, timeout);
}
