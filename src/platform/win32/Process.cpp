#include "platform/Process.h"

#include <windows.h>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

// Quotes one argument so that the C runtime's command-line splitting gives it
// back unchanged: backslashes count only in front of a quote.
std::wstring QuoteArgument(const std::wstring& argument) {
  if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) return argument;
  std::wstring out = L"\"";
  for (auto it = argument.begin();; ++it) {
    std::size_t backslashes = 0;
    while (it != argument.end() && *it == L'\\') {
      ++it;
      ++backslashes;
    }
    if (it == argument.end()) {
      out.append(backslashes * 2, L'\\');
      break;
    }
    if (*it == L'"') {
      out.append(backslashes * 2 + 1, L'\\');
    } else {
      out.append(backslashes, L'\\');
    }
    out.push_back(*it);
  }
  out.push_back(L'"');
  return out;
}

HANDLE AsHandle(void* handle) { return static_cast<HANDLE>(handle); }

}  // namespace

unsigned long CurrentProcessId() { return ::GetCurrentProcessId(); }

unsigned long CurrentThreadId() { return ::GetCurrentThreadId(); }

std::string ExecutablePath() {
  std::wstring buffer(32768, L'\0');
  const DWORD n = ::GetModuleFileNameW(nullptr, &buffer[0], static_cast<DWORD>(buffer.size()));
  buffer.resize(n < buffer.size() ? n : 0);
  return Narrow(buffer);
}

std::string HostName() {
  wchar_t buffer[256];
  DWORD size = 256;
  if (!::GetComputerNameExW(ComputerNameDnsHostname, buffer, &size)) return std::string();
  return Narrow(std::wstring(buffer, size));
}

std::string OperatingSystemText() {
  // GetVersionEx reports what the program's manifest claims to support;
  // RtlGetVersion tells the truth.
  typedef LONG(WINAPI * TRtlGetVersion)(OSVERSIONINFOW*);
  OSVERSIONINFOW info = {};
  info.dwOSVersionInfoSize = sizeof info;
  const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
  const auto get = ntdll ? reinterpret_cast<TRtlGetVersion>(reinterpret_cast<void*>(::GetProcAddress(ntdll, "RtlGetVersion")))
                         : nullptr;
  if (get == nullptr || get(&info) != 0) return "Windows";
  return "Windows " + std::to_string(info.dwMajorVersion) + "." + std::to_string(info.dwMinorVersion) + "." +
         std::to_string(info.dwBuildNumber);
}

CChildProcess::~CChildProcess() {
  if (m_handle != nullptr) {
    ::TerminateProcess(AsHandle(m_handle), 1);
    ::WaitForSingleObject(AsHandle(m_handle), INFINITE);
    ::CloseHandle(AsHandle(m_handle));
  }
}

CZuError CChildProcess::Start(const std::string& program, const std::vector<std::string>& arguments) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::Start");
  if (m_handle != nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_ALREADY_ASSIGNED, "%s", program.c_str());
  const std::wstring application = Widen(program);
  std::wstring commandLine = QuoteArgument(application);
  for (const std::string& argument : arguments) commandLine += L" " + QuoteArgument(Widen(argument));
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  if (!::CreateProcessW(application.c_str(), &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process))
    return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", program.c_str());
  ::CloseHandle(process.hThread);
  m_handle = process.hProcess;
  m_pid = process.dwProcessId;
  return CZuError::Success();
}

CZuError CChildProcess::StartCommandLine(const std::wstring& commandLine, void* userToken) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::StartCommandLine");
  const std::string text = Narrow(commandLine);
  if (m_handle != nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_ALREADY_ASSIGNED, "%s", text.c_str());
  if (commandLine.find_first_not_of(L" \t") == std::wstring::npos)
    return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "Empty command line");
  std::wstring line = commandLine;  // CreateProcessW may write into it
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  const BOOL started =
      userToken != nullptr
          ? ::CreateProcessAsUserW(AsHandle(userToken), nullptr, &line[0], nullptr, nullptr, FALSE, 0, nullptr,
                                   nullptr, &startup, &process)
          : ::CreateProcessW(nullptr, &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process);
  if (!started) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", text.c_str());
  ::CloseHandle(process.hThread);
  m_handle = process.hProcess;
  m_pid = process.dwProcessId;
  return CZuError::Success();
}

bool CChildProcess::WaitFor(unsigned long milliseconds, int& exitCode, CZuError& result) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::WaitFor");
  if (m_handle == nullptr) {
    result = FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
    return true;
  }
  const DWORD waited = ::WaitForSingleObject(AsHandle(m_handle), milliseconds);
  if (waited == WAIT_TIMEOUT) return false;
  DWORD code = 0;
  if (waited != WAIT_OBJECT_0 || !::GetExitCodeProcess(AsHandle(m_handle), &code)) {
    result = ErrorFromSystem(here, LastSystemError());
    return true;
  }
  ::CloseHandle(AsHandle(m_handle));
  m_handle = nullptr;
  m_pid = -1;
  exitCode = static_cast<int>(code);
  result = CZuError::Success();
  return true;
}

void CChildProcess::Detach() {
  if (m_handle == nullptr) return;
  ::CloseHandle(AsHandle(m_handle));
  m_handle = nullptr;
  m_pid = -1;
}

void* CChildProcess::NativeHandle() const { return m_handle; }

CZuError CChildProcess::Wait(int& exitCode) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::Wait");
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  DWORD code = 0;
  if (::WaitForSingleObject(AsHandle(m_handle), INFINITE) != WAIT_OBJECT_0 ||
      !::GetExitCodeProcess(AsHandle(m_handle), &code))
    return ErrorFromSystem(here, LastSystemError());
  ::CloseHandle(AsHandle(m_handle));
  m_handle = nullptr;
  m_pid = -1;
  exitCode = static_cast<int>(code);
  return CZuError::Success();
}

CZuError CChildProcess::Kill() {
  const FXCodeLocation here = ZU_HERE("CChildProcess::Kill");
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  if (!::TerminateProcess(AsHandle(m_handle), 1)) return ErrorFromSystem(here, LastSystemError());
  return CZuError::Success();
}

bool CChildProcess::IsStarted() const { return m_handle != nullptr; }

}  // namespace FXPlatform
