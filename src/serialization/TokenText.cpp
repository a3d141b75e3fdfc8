#include "serialization/TokenText.h"

#include "platform/CompleteTypes.h"

namespace FXTokenText {

namespace {

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int lower = c | 0x20;
  if (lower >= 'a' && lower <= 'f') return lower - 'a' + 10;
  return -1;
}

// Exactly `digits` hexadecimal digits at p.
bool ReadHex(const char* p, int digits, std::uint32_t& value) {
  value = 0;
  for (int i = 0; i < digits; ++i) {
    const int v = HexValue(p[i]);
    if (v < 0) return false;
    value = value << 4 | static_cast<std::uint32_t>(v);
  }
  return true;
}

}  // namespace

bool ParseGuid(const char* text, std::size_t length, GUID& guid) {
  // {6B29FC40-CA47-1067-B31D-00DD010662DA}
  if (length != 38 || text[0] != '{' || text[37] != '}' || text[9] != '-' || text[14] != '-' || text[19] != '-' ||
      text[24] != '-')
    return false;
  std::uint32_t data1, data2, data3;
  if (!ReadHex(text + 1, 8, data1) || !ReadHex(text + 10, 4, data2) || !ReadHex(text + 15, 4, data3)) return false;
  static const int kByteAt[8] = {20, 22, 25, 27, 29, 31, 33, 35};
  GUID parsed;
  for (int i = 0; i < 8; ++i) {
    std::uint32_t byte;
    if (!ReadHex(text + kByteAt[i], 2, byte)) return false;
    parsed.Data4[i] = static_cast<unsigned char>(byte);
  }
  parsed.Data1 = data1;
  parsed.Data2 = static_cast<unsigned short>(data2);
  parsed.Data3 = static_cast<unsigned short>(data3);
  guid = parsed;
  return true;
}

bool ParseLuid(const char* text, std::size_t length, LUID& luid) {
  // "<high>:0x<low>": the high part as "%d", the low part as "%x".
  const char* end = text + length;
  const char* p = text;
  const bool negative = p != end && *p == '-';
  if (negative) ++p;
  const char* digits = p;
  std::int64_t high = 0;
  for (; p != end && *p >= '0' && *p <= '9' && p - digits < 11; ++p) high = high * 10 + (*p - '0');
  if (p == digits || (negative && high == 0)) return false;
  if (negative) high = -high;
  if (high < INT32_MIN || high > INT32_MAX) return false;
  if (end - p < 4 || p[0] != ':' || p[1] != '0' || p[2] != 'x') return false;
  p += 3;
  if (end - p > 8) return false;
  std::uint32_t low = 0;
  for (; p != end; ++p) {
    const int v = HexValue(*p);
    if (v < 0) return false;
    low = low << 4 | static_cast<std::uint32_t>(v);
  }
  luid.HighPart = static_cast<std::int32_t>(high);
  luid.LowPart = low;
  return true;
}

namespace {

// UTF-16 text is copied unit by unit; wider text pairs up what lies beyond
// U+FFFF. Templates, so that only the branch of this platform's wchar_t is
// compiled.
template <class Char>
std::size_t UnitsOf(const std::basic_string<Char>& text) {
  if constexpr (sizeof(Char) == 2) {
    return text.size();
  } else {
    std::size_t units = text.size();
    for (Char c : text)
      if (static_cast<std::uint32_t>(c) > 0xFFFF && static_cast<std::uint32_t>(c) <= 0x10FFFF) ++units;
    return units;
  }
}

template <class Char>
void WriteUnits(const std::basic_string<Char>& text, char* out) {
  auto put = [&out](std::uint32_t unit) {
    *out++ = static_cast<char>(unit & 0xFF);
    *out++ = static_cast<char>(unit >> 8);
  };
  for (Char c : text) {
    const auto v = static_cast<std::uint32_t>(c);
    if constexpr (sizeof(Char) == 2) {
      put(v);
    } else if (v <= 0xFFFF) {
      put(v);
    } else if (v <= 0x10FFFF) {
      put(0xD800 + ((v - 0x10000) >> 10));
      put(0xDC00 + (v & 0x3FF));
    } else {
      put(0xFFFD);
    }
  }
}

template <class Char>
std::basic_string<Char> ReadUnits(const unsigned char* data, std::size_t size) {
  std::size_t units = size / 2;
  if (units != 0 && data[2 * units - 2] == 0 && data[2 * units - 1] == 0) --units;
  std::basic_string<Char> text;
  text.resize(units);
  std::size_t n = 0;
  for (std::size_t i = 0; i < units; ++i) {
    std::uint32_t unit = data[2 * i] | static_cast<std::uint32_t>(data[2 * i + 1]) << 8;
    if constexpr (sizeof(Char) != 2) {
      if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < units) {
        const std::uint32_t next = data[2 * i + 2] | static_cast<std::uint32_t>(data[2 * i + 3]) << 8;
        if (next >= 0xDC00 && next < 0xE000) {
          unit = 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00);
          ++i;
        }
      }
    }
    text[n++] = static_cast<Char>(unit);
  }
  text.resize(n);
  return text;
}

}  // namespace

std::size_t Utf16Length(const std::wstring& text) { return UnitsOf(text); }

void WriteUtf16Le(const std::wstring& text, char* out) { WriteUnits(text, out); }

std::wstring ReadUtf16Le(const unsigned char* data, std::size_t size) { return ReadUnits<wchar_t>(data, size); }

}  // namespace FXTokenText
