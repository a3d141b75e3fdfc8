#include "platform/PrivateProfile.h"

#include <windows.h>

#include <vector>

#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

// Null stays null.
struct TWide {
  explicit TWide(const char* text) : present(text != nullptr), value(present ? Widen(text) : std::wstring()) {}
  const wchar_t* Get() const { return present ? value.c_str() : nullptr; }
  bool present;
  std::wstring value;
};

// The returned characters (and the NULs among them) as UTF-8.
void Store(const std::vector<wchar_t>& buffer, DWORD count, std::string& out) {
  out.clear();
  std::size_t start = 0;
  for (std::size_t i = 0; i <= count && i < buffer.size(); ++i)
    if (i == count || buffer[i] == L'\0') {
      out += Narrow(std::wstring(buffer.data() + start, i - start));
      if (i < count) out += '\0';
      start = i + 1;
    }
}

}  // namespace

DWORD ProfileGetString(const char* section, const char* key, const char* defaultValue, DWORD size,
                       const std::string& fileName, std::string& out) {
  std::vector<wchar_t> buffer(size + 1, L'\0');
  const DWORD count = ::GetPrivateProfileStringW(TWide(section).Get(), TWide(key).Get(), TWide(defaultValue).Get(),
                                                 buffer.data(), size, Widen(fileName).c_str());
  Store(buffer, count, out);
  return count;
}

DWORD ProfileGetSection(const char* section, DWORD size, const std::string& fileName, std::string& out) {
  std::vector<wchar_t> buffer(size + 1, L'\0');
  const DWORD count =
      ::GetPrivateProfileSectionW(TWide(section).Get(), buffer.data(), size, Widen(fileName).c_str());
  Store(buffer, count, out);
  return count;
}

DWORD ProfileGetSectionNames(DWORD size, const std::string& fileName, std::string& out) {
  std::vector<wchar_t> buffer(size + 1, L'\0');
  const DWORD count = ::GetPrivateProfileSectionNamesW(buffer.data(), size, Widen(fileName).c_str());
  Store(buffer, count, out);
  return count;
}

DWORD ProfileWriteString(const char* section, const char* key, const char* value, const std::string& fileName) {
  return ::WritePrivateProfileStringW(TWide(section).Get(), TWide(key).Get(), TWide(value).Get(),
                                      Widen(fileName).c_str())
             ? 1
             : 0;
}

}  // namespace FXPlatform
