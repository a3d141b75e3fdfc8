#include "text/StringConvert.h"

#include <cstdint>
#include <cwchar>
#include <new>

#include "text/UTFCore.h"

namespace {

// Short texts (names, paths) are converted on the stack and copied once
// into a string of the exact size; long ones straight into the result,
// which is then cut to the length produced.
constexpr std::size_t kStackUnits = 256;

// The worst case of output units per input unit.
constexpr std::size_t kUtf8PerWide = sizeof(wchar_t) == 2 ? 3 : 4;

std::wstring Utf8ToWide(const char* text, std::size_t length) {
  const auto* s = reinterpret_cast<const std::uint8_t*>(text);
  try {
    if (length <= kStackUnits) {
      wchar_t buffer[kStackUnits];
      const wchar_t* end = FXUTFDetail::DecodeUtf8Replacing(s, s + length, buffer);
      return std::wstring(buffer, static_cast<std::size_t>(end - buffer));
    }
    std::wstring out(length, L'\0');
    const wchar_t* end = FXUTFDetail::DecodeUtf8Replacing(s, s + length, &out[0]);
    out.resize(static_cast<std::size_t>(end - out.data()));
    return out;
  } catch (const std::bad_alloc&) {
    return std::wstring();
  }
}

std::string WideToUtf8(const wchar_t* text, std::size_t length) {
  try {
    if (length <= kStackUnits) {
      std::uint8_t buffer[kStackUnits * kUtf8PerWide];
      const std::uint8_t* end = FXUTFDetail::EncodeUtf8Replacing(text, text + length, buffer);
      return std::string(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(end - buffer));
    }
    std::string out(length * kUtf8PerWide, '\0');
    auto* begin = reinterpret_cast<std::uint8_t*>(&out[0]);
    const std::uint8_t* end = FXUTFDetail::EncodeUtf8Replacing(text, text + length, begin);
    out.resize(static_cast<std::size_t>(end - begin));
    return out;
  } catch (const std::bad_alloc&) {
    return std::string();
  }
}

}  // namespace

namespace FXString {

std::string ToString(const std::wstring& text) {
  const std::size_t nul = text.find(L'\0');
  return WideToUtf8(text.data(), nul == std::wstring::npos ? text.size() : nul);
}
std::string ToString(const wchar_t* text) {
  return text == nullptr ? std::string() : WideToUtf8(text, std::wcslen(text));
}

std::wstring ToWstring(const std::string& text) {
  const std::size_t nul = text.find('\0');
  return Utf8ToWide(text.data(), nul == std::string::npos ? text.size() : nul);
}
std::wstring ToWstring(const char* text) {
  return text == nullptr ? std::wstring() : Utf8ToWide(text, std::strlen(text));
}

std::string ToString(const std::string& text, unsigned long) { return text; }
std::wstring ToWstring(const std::wstring& text, unsigned long) { return text; }

std::string ToString(const char* text) { return text == nullptr ? std::string() : std::string(text); }
std::wstring ToWstring(const wchar_t* text) { return text == nullptr ? std::wstring() : std::wstring(text); }

std::wstring ToTstring(const std::string& text) { return ToWstring(text); }

}  // namespace FXString
