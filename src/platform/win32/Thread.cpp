#include "platform/Thread.h"

#include <windows.h>

#include <new>

#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

struct TStart {
  TThreadEntry entry;
  void* context;
};

DWORD WINAPI ThreadMain(LPVOID argument) {
  TStart* start = static_cast<TStart*>(argument);
  const TStart copy = *start;
  delete start;
  return copy.entry(copy.context);
}

}  // namespace

HANDLE CreateEventObject(bool manualReset, bool initiallySet) {
  return ::CreateEventW(nullptr, manualReset ? TRUE : FALSE, initiallySet ? TRUE : FALSE, nullptr);
}

bool SetEventObject(HANDLE event) { return ::SetEvent(event) != FALSE; }

bool ResetEventObject(HANDLE event) { return ::ResetEvent(event) != FALSE; }

bool CloseObject(HANDLE object) { return ::CloseHandle(object) != FALSE; }

HANDLE DuplicateObject(HANDLE object) {
  HANDLE copy = nullptr;
  if (!::DuplicateHandle(::GetCurrentProcess(), object, ::GetCurrentProcess(), &copy, 0, FALSE,
                         DUPLICATE_SAME_ACCESS))
    return nullptr;
  return copy;
}

DWORD WaitAlertable(HANDLE object, DWORD milliseconds) { return ::WaitForSingleObjectEx(object, milliseconds, TRUE); }

DWORD SleepAlertable(DWORD milliseconds) { return ::SleepEx(milliseconds, TRUE); }

HANDLE CreateSuspendedThread(TThreadEntry entry, void* context, DWORD& threadId) {
  TStart* start = new (std::nothrow) TStart{entry, context};
  if (start == nullptr) {
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  DWORD id = 0;
  HANDLE thread = ::CreateThread(nullptr, 0, ThreadMain, start, CREATE_SUSPENDED, &id);
  if (thread == nullptr) {
    const DWORD error = ::GetLastError();
    delete start;
    ::SetLastError(error);
    return nullptr;
  }
  threadId = id;
  return thread;
}

bool ResumeCreatedThread(HANDLE thread) { return ::ResumeThread(thread) != static_cast<DWORD>(-1); }

bool GetThreadExitCode(HANDLE thread, DWORD& exitCode) {
  DWORD code = 0;
  if (!::GetExitCodeThread(thread, &code)) return false;
  exitCode = code;
  return true;
}

bool TerminateThreadObject(HANDLE thread, DWORD exitCode) { return ::TerminateThread(thread, exitCode) != FALSE; }

void SetThreadDescriptionText(HANDLE thread, const std::string& description) {
  // Windows 10 1607 and later; looked up so that older systems still load us.
  typedef HRESULT(WINAPI * TSetThreadDescription)(HANDLE, PCWSTR);
  static const TSetThreadDescription setDescription = [] {
    const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
    return kernel ? reinterpret_cast<TSetThreadDescription>(
                        reinterpret_cast<void*>(::GetProcAddress(kernel, "SetThreadDescription")))
                  : nullptr;
  }();
  if (setDescription == nullptr) return;
  setDescription(thread, Widen(description).c_str());
}

bool IsCurrentThread(HANDLE thread) {
  return thread == ::GetCurrentThread() || ::GetThreadId(thread) == ::GetCurrentThreadId();
}

}  // namespace FXPlatform
