#include "threads/Event.h"

#include "platform/Thread.h"

FXEvent::FXEvent(DWORD flags)
    : m_handle(FXPlatform::CreateEventObject((flags & kManualReset) != 0, (flags & kInitiallySet) != 0)) {}

FXEvent::~FXEvent() {
  if (m_handle != nullptr) FXPlatform::CloseObject(m_handle);
}

bool FXEvent::Set() { return m_handle != nullptr && FXPlatform::SetEventObject(m_handle); }

bool FXEvent::Reset() { return m_handle != nullptr && FXPlatform::ResetEventObject(m_handle); }

DWORD FXEvent::WaitAlertable(DWORD milliseconds) {
  if (m_handle == nullptr) return WAIT_FAILED;
  return FXPlatform::WaitAlertable(m_handle, milliseconds);
}

DWORD FXEvent::WaitAlertable(CTimeInterval timeout) { return WaitAlertable(ToWaitMilliseconds(timeout)); }

DWORD FXEvent::ToWaitMilliseconds(CTimeInterval timeout) {
  if (timeout.IsClear()) return INFINITE;
  const long long milliseconds = timeout.AsMilliseconds();
  if (milliseconds <= 0) return 0;
  if (milliseconds >= static_cast<long long>(INFINITE)) return INFINITE - 1;
  return static_cast<DWORD>(milliseconds);
}
