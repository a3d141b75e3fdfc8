// FXEvent: an event object that threads wait on alertably.
//
// Flags: kInitiallySet (bit 0) starts it set; kManualReset (bit 1) keeps it
// set until Reset, otherwise the one wait it wakes resets it. Not copyable:
// an event is shared through boost::shared_ptr.
#pragma once

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"
#include "time/TimeStamp.h"

class ZUUTILS_API FXEvent {
 public:
  // Enumerators, not static members: an exported class's constants would be
  // imported from the DLL wherever they are bound to a reference.
  enum : DWORD { kInitiallySet = 1, kManualReset = 2 };

  explicit FXEvent(DWORD flags = 0);
  ~FXEvent();
  FXEvent(const FXEvent&) = delete;
  FXEvent& operator=(const FXEvent&) = delete;

  // False when the system could not make the event; every other call then
  // fails (false, or WAIT_FAILED from the wait).
  bool IsValid() const { return m_handle != nullptr; }
  bool Set();
  bool Reset();

  // Alertable wait until the event is set: 0 when it was, 192 when queued
  // calls ran on this thread instead, 258 when the time passed, all ones
  // when the event is not valid. INFINITE (all ones) waits without limit.
  DWORD WaitAlertable(DWORD milliseconds);
  // The interval truncated to milliseconds; 0 waits without limit.
  DWORD WaitAlertable(CTimeInterval timeout);

  // The interval in milliseconds as waits take it: 100-ns units divided by
  // 10,000 and truncated, 0 becomes INFINITE (no limit), a negative span 0
  // (no wait) and a span beyond the 32-bit range the longest finite wait.
  static DWORD ToWaitMilliseconds(CTimeInterval timeout);

  HANDLE GetHandle() const { return m_handle; }

 private:
  HANDLE m_handle;
};
