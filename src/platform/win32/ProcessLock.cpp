#include "platform/ProcessLock.h"

#include <windows.h>
#include <sddl.h>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

// Everyone may wait on the mutex and release it; the system and the
// administrators have full control.
const wchar_t kMutexAccess[] = L"D:(A;;0x00100001;;;WD)(A;;GA;;;SY)(A;;GA;;;BA)";

HANDLE AsHandle(void* handle) { return static_cast<HANDLE>(handle); }

}  // namespace

CZuError CProcessLock::Create(const std::string& name) {
  const FXCodeLocation here = ZU_HERE("CProcessLock::Create");
  Close();
  if (name.empty()) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "the lock has no name");
  const std::wstring wide = Widen(name);
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ::ConvertStringSecurityDescriptorToSecurityDescriptorW(kMutexAccess, SDDL_REVISION_1, &descriptor, nullptr);
  SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor, FALSE};
  HANDLE handle = ::CreateMutexW(descriptor != nullptr ? &attributes : nullptr, FALSE, wide.c_str());
  TSystemError error = LastSystemError();
  if (descriptor != nullptr) ::LocalFree(descriptor);
  // Opening an existing mutex through CreateMutex asks for full access; a
  // mutex made by another account grants us only waiting and releasing.
  if (handle == nullptr && error.win32 == ERROR_ACCESS_DENIED) {
    handle = ::OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, wide.c_str());
    error = LastSystemError();
  }
  if (handle == nullptr) return ErrorFromSystem(here, error).Push(here, "%s", name.c_str());
  m_handle = handle;
  return CZuError::Success();
}

bool CProcessLock::IsValid() const { return m_handle != nullptr; }

CZuError CProcessLock::Acquire(unsigned long timeoutMs, bool& abandoned) {
  const FXCodeLocation here = ZU_HERE("CProcessLock::Acquire");
  abandoned = false;
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  switch (::WaitForSingleObject(AsHandle(m_handle), timeoutMs)) {
    case WAIT_OBJECT_0:
      return CZuError::Success();
    case WAIT_ABANDONED:
      abandoned = true;
      return CZuError::Success();
    case WAIT_TIMEOUT:
      return FXErrorUtil::ErrorWin32(here, WAIT_TIMEOUT);
    default:
      return ErrorFromSystem(here, LastSystemError());
  }
}

void CProcessLock::Release() {
  if (m_handle != nullptr) ::ReleaseMutex(AsHandle(m_handle));
}

void CProcessLock::Close() {
  if (m_handle != nullptr) ::CloseHandle(AsHandle(m_handle));
  m_handle = nullptr;
}

unsigned long long* CProcessLock::SharedWords() const { return nullptr; }

}  // namespace FXPlatform
