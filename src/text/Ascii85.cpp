#include "text/Ascii85.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <stdexcept>

#include "errors/ErrorUtil.h"

namespace {

constexpr std::uint32_t kPowers[5] = {52200625u, 614125u, 7225u, 85u, 1u};  // 85^4 ... 85^0

// The five digits of a group value, most significant first. The quotients
// by each power of 85 are independent of one another, so they are computed
// side by side instead of as a chain of five divisions.
void WriteDigits(std::uint32_t value, char* digits) {
  const std::uint32_t q1 = value / 85u;
  const std::uint32_t q2 = value / 7225u;
  const std::uint32_t q3 = value / 614125u;
  const std::uint32_t q4 = value / 52200625u;
  digits[0] = static_cast<char>(q4 + '!');
  digits[1] = static_cast<char>(q3 - q4 * 85u + '!');
  digits[2] = static_cast<char>(q2 - q3 * 85u + '!');
  digits[3] = static_cast<char>(q1 - q2 * 85u + '!');
  digits[4] = static_cast<char>(value - q1 * 85u + '!');
}

bool IsSkipped(unsigned char c) {
  return c == 0 || c == 8 || c == 9 || c == 10 || c == 12 || c == 13 || c == 32 || c == 127;
}

CZuError InvalidData(const char* what) {
  return FXErrorUtil::ErrorWin32(ZU_HERE("CAscii85::Decode"), ERROR_INVALID_DATA, "%s", what);
}

struct TOutput {
  unsigned char* data;
  std::size_t capacity;
  std::size_t written;
};

// The first `count` bytes of a group value, most significant first.
CZuError OutputGroupToBuffer(std::uint32_t value, int count, TOutput& out) {
  if (out.capacity - out.written < static_cast<std::size_t>(count))
    return FXErrorUtil::ErrorWin32(ZU_HERE("OutputGroupToBuffer"), ERROR_BUFFER_OVERFLOW);
  for (int k = 0; k < count; ++k) out.data[out.written++] = static_cast<unsigned char>(value >> (24 - 8 * k));
  return CZuError::Success();
}

CZuError DecodeInto(const std::string& text, TOutput& out) {
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  if (n < 4 || s[0] != '<' || s[1] != '~') return InvalidData("Invalid beginning marker");

  std::uint32_t value = 0;  // modulo 2^32: a group above 2^32 - 1 wraps
  int digits = 0;
  std::size_t i = 2;
  for (;;) {
    // The common case first: five digits in a row, with room for them.
    if (digits == 0 && n - i >= 5 && out.capacity - out.written >= 4) {
      std::uint32_t d[5];
      for (int k = 0; k < 5; ++k) d[k] = static_cast<unsigned char>(s[i + k] - '!');
      if ((d[0] < 85) & (d[1] < 85) & (d[2] < 85) & (d[3] < 85) & (d[4] < 85)) {
        const std::uint32_t v = (((d[0] * 85 + d[1]) * 85 + d[2]) * 85 + d[3]) * 85 + d[4];
        out.data[out.written] = static_cast<unsigned char>(v >> 24);
        out.data[out.written + 1] = static_cast<unsigned char>(v >> 16);
        out.data[out.written + 2] = static_cast<unsigned char>(v >> 8);
        out.data[out.written + 3] = static_cast<unsigned char>(v);
        out.written += 4;
        i += 5;
        continue;
      }
    }
    if (i == n) return InvalidData("No end marker found");
    const unsigned char c = s[i++];
    if (IsSkipped(c)) continue;
    if (c == 'z') {
      if (digits != 0) return InvalidData("'z' inside a group");
      if (out.capacity - out.written < 4)
        return FXErrorUtil::ErrorWin32(ZU_HERE("CAscii85::Decode"), ERROR_BUFFER_OVERFLOW);
      for (int k = 0; k < 4; ++k) out.data[out.written++] = 0;
      continue;
    }
    if (c == '~') {
      if (i == n || s[i] != '>') return InvalidData("Incomplete end marker found (~ without >)");
      // An unfinished group of n digits stands for the group padded with
      // 'u' and rounded up: its first n - 1 bytes are the data.
      if (digits > 1) {
        value += kPowers[digits - 1];
        CZuError result = OutputGroupToBuffer(value, digits - 1, out);
        if (result.IsError()) return result.Push(ZU_HERE("CAscii85::Decode"));
      }
      return CZuError::Success();
    }
    if (c < '!' || c > 'u') return InvalidData("Invalid ASCII85 character");
    value += (c - '!') * kPowers[digits];
    if (++digits == 5) {
      CZuError result = OutputGroupToBuffer(value, 4, out);
      if (result.IsError()) return result.Push(ZU_HERE("CAscii85::Decode"));
      value = 0;
      digits = 0;
    }
  }
}

}  // namespace

CZuError CAscii85::Encode(const char* data, std::size_t length, std::string& out) {
  if (data == nullptr && length != 0)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CAscii85::Encode"), ERROR_INVALID_PARAMETER);
  // (length * 5) / 4 + 10 without overflow: five characters per group, a
  // partial group at most one more than its bytes, four for the markers,
  // so the text always fits.
  if (length / 4 > (SIZE_MAX - 20) / 5)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CAscii85::Encode"), ERROR_OUTOFMEMORY);
  const std::size_t capacity = length / 4 * 5 + length % 4 * 5 / 4 + 10;
  std::string text;
  try {
    text.resize(capacity);
  } catch (const std::bad_alloc&) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CAscii85::Encode"), ERROR_OUTOFMEMORY);
  } catch (const std::length_error&) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CAscii85::Encode"), ERROR_OUTOFMEMORY);
  }

  const auto* p = reinterpret_cast<const unsigned char*>(data);
  char* o = &text[0];
  *o++ = '<';
  *o++ = '~';
  for (; length >= 4; length -= 4, p += 4) {
    const std::uint32_t v = std::uint32_t(p[0]) << 24 | std::uint32_t(p[1]) << 16 | std::uint32_t(p[2]) << 8 | p[3];
    if (v == 0) {
      *o++ = 'z';
    } else {
      WriteDigits(v, o);
      o += 5;
    }
  }
  if (length != 0) {
    // Zero-filled on the right, and never 'z': the reader needs to know
    // how many bytes there were.
    std::uint32_t v = 0;
    for (std::size_t k = 0; k < length; ++k) v |= std::uint32_t(p[k]) << (24 - 8 * k);
    char digits[5];
    WriteDigits(v, digits);
    o = std::copy(digits, digits + length + 1, o);
  }
  *o++ = '~';
  *o++ = '>';
  text.resize(static_cast<std::size_t>(o - text.data()));
  out.swap(text);
  return CZuError::Success();
}

CZuError CAscii85::Decode(const std::string& text, char* out, std::size_t& length) {
  TOutput output{reinterpret_cast<unsigned char*>(out), out != nullptr ? length : 0, 0};
  CZuError result = DecodeInto(text, output);
  length = output.written;
  return result;
}

CZuError CAscii85::Decode(const std::string& text, auto_ptr_array<char>& out, std::size_t& length) {
  // Five digits give four bytes (a partial group of n digits n - 1) and a
  // 'z' gives four: four fifths of the text plus four bytes for every 'z'
  // is always enough.
  const std::size_t n = text.size();
  const std::size_t zeros = static_cast<std::size_t>(std::count(text.begin(), text.end(), 'z'));
  const std::size_t capacity = zeros * 4 + n / 5 * 4 + n % 5 * 4 / 5;
  auto_ptr_array<char> buffer(new (std::nothrow) char[capacity == 0 ? 1 : capacity]);
  if (!buffer) return FXErrorUtil::ErrorWin32(ZU_HERE("CAscii85::Decode"), ERROR_OUTOFMEMORY);
  TOutput output{reinterpret_cast<unsigned char*>(buffer.get()), capacity, 0};
  CZuError result = DecodeInto(text, output);
  if (result.IsError()) return result;
  out = std::move(buffer);
  length = output.written;
  return CZuError::Success();
}
