#include "platform/SystemMessage.h"

#include <windows.h>

#include <cstring>

#include "platform/win32/WinString.h"

namespace FXPlatform {

void SystemMessage(DWORD code, std::wstring& text) {
  text.clear();
  wchar_t* buffer = nullptr;
  const DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const DWORD n = ::FormatMessageW(flags, nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  if (n != 0 && buffer != nullptr) text.assign(buffer, n);
  if (buffer != nullptr) ::LocalFree(buffer);
}

void SystemMessage(DWORD code, std::string& text) {
  std::wstring wide;
  SystemMessage(code, wide);
  text = Narrow(wide);
}

std::string CRuntimeErrorText(int crtErrno) {
  char buffer[1024];
  if (::strerror_s(buffer, sizeof buffer, crtErrno) != 0) return std::string();
  return std::string(buffer);
}

}  // namespace FXPlatform
