// The payload texts of the token stream: numbers read the C runtime's way
// at a fixed width, the GUID and LUID texts read back, wide strings as
// UTF-16LE. Internal to the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "platform/ZuTypes.h"

namespace FXTokenText {

// strtol / strtoul / _strtoi64 / _strtoui64 with base 0 over [text, end),
// stopping at the end, a zero byte or the first character that does not
// belong, at the width of T whatever `long` is on the platform: leading
// white space, a sign, "0x" hexadecimal, "0" octal; no digits give 0; a
// value beyond T saturates; for unsigned T a minus sign negates modulo the
// width.
template <class T>
T ParseNumber(const char* text, const char* end) {
  static_assert(std::is_integral<T>::value, "integers only");
  typedef std::make_unsigned_t<T> U;
  static_assert(sizeof(T) >= 4, "at least 32 bits");
  // The common case: a short plain decimal, which cannot overflow.
  if (text != end && *text >= '1' && *text <= '9') {
    std::uint32_t value = 0;
    const char* q = text;
    for (; q != end && q - text < 9 && *q >= '0' && *q <= '9'; ++q) value = value * 10 + static_cast<std::uint32_t>(*q - '0');
    if (q == end || *q < '0' || *q > '9') return static_cast<T>(value);
  }
  const char* p = text;
  while (p != end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
  bool negative = false;
  if (p != end && (*p == '+' || *p == '-')) negative = *p++ == '-';
  unsigned base = 10;
  if (p != end && *p == '0') {
    base = 8;
    const bool hexDigitFollows =
        end - p > 2 && (p[1] == 'x' || p[1] == 'X') &&
        ((p[2] >= '0' && p[2] <= '9') || ((p[2] | 0x20) >= 'a' && (p[2] | 0x20) <= 'f'));
    if (hexDigitFollows) {
      base = 16;
      p += 2;
    }
  }
  // The largest magnitude the result can take for this sign.
  const std::uint64_t limit = std::is_signed<T>::value
                                  ? static_cast<std::uint64_t>(std::numeric_limits<T>::max()) + (negative ? 1 : 0)
                                  : static_cast<std::uint64_t>(std::numeric_limits<U>::max());
  // Beyond cutoff (or at it with a digit above cutDigit) the value overflows;
  // the constant bases let the divisions fold into shifts and multiplies.
  const std::uint64_t cutoff = base == 10 ? limit / 10 : base == 16 ? limit >> 4 : limit >> 3;
  const unsigned cutDigit = static_cast<unsigned>(base == 10 ? limit % 10 : base == 16 ? limit & 15 : limit & 7);
  std::uint64_t value = 0;
  bool overflow = false;
  for (; p != end; ++p) {
    unsigned digit;
    const char c = *p;
    if (c >= '0' && c <= '9')
      digit = static_cast<unsigned>(c - '0');
    else if ((c | 0x20) >= 'a' && (c | 0x20) <= 'z')
      digit = static_cast<unsigned>((c | 0x20) - 'a' + 10);
    else
      break;
    if (digit >= base) break;
    if (value > cutoff || (value == cutoff && digit > cutDigit))
      overflow = true;
    else
      value = value * base + digit;
  }
  if (overflow) {
    if (std::is_signed<T>::value && negative) return std::numeric_limits<T>::min();
    return std::numeric_limits<T>::max();
  }
  const U magnitude = static_cast<U>(value);
  return static_cast<T>(negative ? static_cast<U>(U(0) - magnitude) : magnitude);
}

// The length of a text payload without its terminating zero byte.
inline std::size_t TextLength(const char* payload, std::size_t length) {
  return length != 0 && payload[length - 1] == '\0' ? length - 1 : length;
}

// The texts of FXString::AsString, read back; false for anything else
// (hexadecimal digits of either case are accepted).
bool ParseGuid(const char* text, std::size_t length, GUID& guid);
bool ParseLuid(const char* text, std::size_t length, LUID& luid);

// The number of UTF-16 units of `text`.
std::size_t Utf16Length(const std::wstring& text);
// Writes those units, little-endian, at `out` (2 * Utf16Length bytes).
void WriteUtf16Le(const std::wstring& text, char* out);
// [data, data + size) as UTF-16LE, without a trailing zero unit (an odd
// last byte is ignored).
std::wstring ReadUtf16Le(const unsigned char* data, std::size_t size);

}  // namespace FXTokenText
