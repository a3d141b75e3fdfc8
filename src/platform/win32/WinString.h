// UTF-8 <-> UTF-16 for the Win32 backend's calls of the wide API.
#pragma once

#include <windows.h>

#include <string>

namespace FXPlatform {

inline std::wstring Widen(const std::string& utf8) {
  if (utf8.empty()) return std::wstring();
  const int n = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(n), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &wide[0], n);
  return wide;
}

inline std::string Narrow(const std::wstring& utf16) {
  if (utf16.empty()) return std::string();
  const int n = ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), static_cast<int>(utf16.size()), nullptr, 0,
                                      nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(n), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), static_cast<int>(utf16.size()), &narrow[0], n, nullptr,
                        nullptr);
  return narrow;
}

}  // namespace FXPlatform
