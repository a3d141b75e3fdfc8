#include "text/StringFormat.h"

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <vector>

#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"

namespace {

constexpr std::size_t kGrowBy = 16384;
constexpr std::size_t kLimit = 0x20000;

int FormatInto(char* buffer, std::size_t size, const char* fmt, va_list args) {
  return std::vsnprintf(buffer, size, fmt, args);
}
int FormatInto(wchar_t* buffer, std::size_t size, const wchar_t* fmt, va_list args) {
  return std::vswprintf(buffer, size, fmt, args);
}

std::size_t Length(const char* s) { return std::strlen(s); }
std::size_t Length(const wchar_t* s) { return std::wcslen(s); }

// Tries the buffer sizes of the growth rule in turn. vsnprintf reports the
// length it needs while vswprintf only says "did not fit", so the common
// loop asks the narrow variant once more only where it has to.
template <class Char>
CZuError FormatArgListT(std::basic_string<Char>& out, const Char* fmt, va_list args) {
  out.clear();
  if (fmt == nullptr)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXString::FormatArgList"), ERROR_INVALID_PARAMETER);

  std::size_t size = 2 * Length(fmt) + 512;
  std::vector<Char> buffer;
  for (;;) {
    buffer.resize(size);
    va_list copy;
    va_copy(copy, args);
    // Room for one character less than the buffer, so that the terminator
    // always fits.
    const int n = FormatInto(buffer.data(), size, fmt, copy);
    va_end(copy);
    buffer[size - 1] = Char();
    const bool fits = n >= 0 && static_cast<std::size_t>(n) < size;
    if (fits) {
      out.assign(buffer.data());
      return CZuError::Success();
    }
    if (size >= kLimit) break;
    if (n > 0) {
      // The exact need is known: jump to the first size of the sequence
      // that holds it, or to the last one.
      const std::size_t need = static_cast<std::size_t>(n) + 1;
      while (size < need && size < kLimit) size += kGrowBy;
    } else {
      size += kGrowBy;
    }
  }
  out.assign(buffer.data());
  return FXErrorUtil::ErrorWin32(ZU_HERE("FXString::FormatArgList"), ERROR_BUFFER_OVERFLOW);
}

}  // namespace

namespace FXString {

CZuError FormatArgList(std::string& out, const char* fmt, va_list args) {
  return FormatArgListT(out, fmt, args);
}
CZuError FormatArgList(std::wstring& out, const wchar_t* fmt, va_list args) {
  return FormatArgListT(out, fmt, args);
}

CZuError Format(std::string& out, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  CZuError result = FormatArgListT(out, fmt, args);
  va_end(args);
  return result;
}
CZuError Format(std::wstring& out, const wchar_t* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  CZuError result = FormatArgListT(out, fmt, args);
  va_end(args);
  return result;
}

std::string Format(const char* fmt, ...) {
  std::string out;
  va_list args;
  va_start(args, fmt);
  FormatArgListT(out, fmt, args);
  va_end(args);
  return out;
}
std::wstring Format(const wchar_t* fmt, ...) {
  std::wstring out;
  va_list args;
  va_start(args, fmt);
  FormatArgListT(out, fmt, args);
  va_end(args);
  return out;
}

}  // namespace FXString

namespace {

std::string GroupThousands(std::string digits) {
  const std::size_t start = digits[0] == '-' ? 1 : 0;
  for (std::size_t i = digits.size(); i > start + 3;) {
    i -= 3;
    digits.insert(i, 1, ',');
  }
  return digits;
}

std::wstring Widened(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

}  // namespace

namespace FXString {

std::string FormatNumber(int value) { return GroupThousands(std::to_string(value)); }
std::string FormatNumber(unsigned int value) { return GroupThousands(std::to_string(value)); }
std::string FormatNumber(long long value) { return GroupThousands(std::to_string(value)); }
std::string FormatNumber(unsigned long long value) { return GroupThousands(std::to_string(value)); }

std::string FormatByteSize(unsigned long long size, int precision) {
  static const char* const kUnits[] = {"B ", "KB", "MB", "GB", "TB", "PB", "EB"};
  double value = static_cast<double>(size);
  int unit = 0;
  while (value >= 1024 && unit < 6) {
    value *= 0.0009765625;
    ++unit;
  }
  char number[64];
  if (precision < 0) {
    std::snprintf(number, sizeof number, "%g", value);
  } else {
    const bool whole = value == static_cast<double>(static_cast<unsigned long long>(value));
    std::snprintf(number, sizeof number, "%.*f", whole ? 0 : precision, value);
  }
  return std::string(number) + " " + kUnits[unit];
}

std::string AsString(const GUID& guid) {
  return Format("{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", static_cast<unsigned int>(guid.Data1),
                static_cast<unsigned int>(guid.Data2), static_cast<unsigned int>(guid.Data3),
                static_cast<unsigned int>(guid.Data4[0]), static_cast<unsigned int>(guid.Data4[1]),
                static_cast<unsigned int>(guid.Data4[2]), static_cast<unsigned int>(guid.Data4[3]),
                static_cast<unsigned int>(guid.Data4[4]), static_cast<unsigned int>(guid.Data4[5]),
                static_cast<unsigned int>(guid.Data4[6]), static_cast<unsigned int>(guid.Data4[7]));
}
std::wstring AsWstring(const GUID& guid) { return Widened(AsString(guid)); }

std::string AsString(const LUID& luid) {
  return Format("%d:0x%x", static_cast<int>(luid.HighPart), static_cast<unsigned int>(luid.LowPart));
}
std::wstring AsWstring(const LUID& luid) { return Widened(AsString(luid)); }

}  // namespace FXString
