#include "platform/CodePage.h"

#include <windows.h>

#include <climits>

namespace FXPlatform {

unsigned int SystemAnsiCodePage() { return ::GetACP(); }

bool CodePageToUtf16(unsigned int codePage, const char* bytes, std::size_t size, std::u16string& out) {
  if (size == 0) return ::IsValidCodePage(codePage) != 0;
  if (size > INT_MAX / 2) return false;
  const int count = ::MultiByteToWideChar(codePage, 0, bytes, static_cast<int>(size), nullptr, 0);
  if (count <= 0) return false;
  const std::size_t at = out.size();
  out.resize(at + static_cast<std::size_t>(count));
  ::MultiByteToWideChar(codePage, 0, bytes, static_cast<int>(size), reinterpret_cast<wchar_t*>(&out[at]), count);
  return true;
}

bool Utf16ToCodePage(unsigned int codePage, const char16_t* units, std::size_t count, const std::string& replacement,
                     std::string& out) {
  if (count == 0) return ::IsValidCodePage(codePage) != 0;
  if (count > INT_MAX / 4) return false;
  // UTF-8 and UTF-7 take no default character.
  const bool takesDefault = codePage != CP_UTF8 && codePage != CP_UTF7;
  const char fallback = replacement.empty() ? '?' : replacement[0];
  const wchar_t* wide = reinterpret_cast<const wchar_t*>(units);
  const int size = ::WideCharToMultiByte(codePage, 0, wide, static_cast<int>(count), nullptr, 0,
                                         takesDefault ? &fallback : nullptr, nullptr);
  if (size <= 0) return false;
  const std::size_t at = out.size();
  out.resize(at + static_cast<std::size_t>(size));
  ::WideCharToMultiByte(codePage, 0, wide, static_cast<int>(count), &out[at], size,
                        takesDefault ? &fallback : nullptr, nullptr);
  return true;
}

}  // namespace FXPlatform
