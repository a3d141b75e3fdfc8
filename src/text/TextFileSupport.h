// Pieces shared by the text-file readers and writers: the caller's line
// buffer and the steps between wide text and UTF-16 units.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace FXTextFile {

// The caller's "BDSG" line buffer (see text/TextFile.h), filled from empty
// by Append and closed by Finish.
template <class Char>
class CLineBuffer {
 public:
  static constexpr std::size_t kHeader = 12;
  static constexpr std::size_t kStep = 1024;

  explicit CLineBuffer(Char** line) : m_line(line), m_allocated(*line == nullptr ? 0 : ReadAllocated(*line)) {}

  // False when the memory could not be had; the buffer stays valid.
  bool Append(const Char* text, std::size_t count) {
    if (!Reserve(m_used + count)) return false;
    if (count != 0) std::memcpy(*m_line + m_used, text, count * sizeof(Char));
    m_used += count;
    return true;
  }
  // Room for `count` characters more, written through End() and then
  // counted with Added.
  bool Reserve(std::size_t count) {
    const std::size_t needed = count + 1;  // the terminator
    if (needed <= m_allocated) return true;
    if (needed > 0x7FFFFFFF / sizeof(Char) - kStep) return false;
    const std::size_t allocated = (needed + kStep - 1) / kStep * kStep;
    void* block = *m_line == nullptr ? nullptr : Header(*m_line);
    char* grown = static_cast<char*>(std::realloc(block, kHeader + allocated * sizeof(Char)));
    if (grown == nullptr) return false;
    std::memcpy(grown, "BDSG", 4);
    const std::uint32_t size = static_cast<std::uint32_t>(allocated);
    std::memcpy(grown + 4, &size, 4);
    if (block == nullptr) std::memset(grown + 8, 0, 4);
    *m_line = reinterpret_cast<Char*>(grown + kHeader);
    m_allocated = allocated;
    return true;
  }
  // Whether `count` characters more fit without growing the block.
  bool HasRoom(std::size_t count) const { return m_used + count + 1 <= m_allocated; }
  void Clear() { m_used = 0; }
  Char* Data() { return *m_line; }
  Char* End() { return *m_line + m_used; }
  void Added(std::size_t count) { m_used += count; }
  std::size_t Size() const { return m_used; }
  // Terminates the line and records its length; `rc` when that worked,
  // else -2.
  int Finish(int* length, int rc) {
    if (*m_line == nullptr && !Reserve(0)) return -2;  // the terminator always fits after Append
    (*m_line)[m_used] = Char(0);
    const std::uint32_t used = static_cast<std::uint32_t>(m_used + 1);
    std::memcpy(Header(*m_line) + 8, &used, 4);
    *length = static_cast<int>(m_used);
    return rc;
  }

  static char* Header(Char* line) { return reinterpret_cast<char*>(line) - kHeader; }
  static void Free(Char* line) {
    if (line != nullptr) std::free(Header(line));
  }

 private:
  static std::size_t ReadAllocated(Char* line) {
    std::uint32_t size;
    std::memcpy(&size, Header(line) + 4, 4);
    return size;
  }

  Char** m_line;
  std::size_t m_allocated;  // 0 without a block
  std::size_t m_used = 0;
};

inline char16_t Swapped(char16_t unit) { return static_cast<char16_t>((unit >> 8) | (unit << 8)); }

// UTF-16 units as wide characters: a copy where wchar_t is 16 bits; where
// it is 32, pairs join into one character and an unpaired surrogate stays
// as it is. Returns the characters written to `out` (room for `count`).
inline std::size_t UnitsToWide(const char16_t* units, std::size_t count, wchar_t* out) {
  if (sizeof(wchar_t) == 2) {
    if (count != 0) std::memcpy(out, units, count * 2);
    return count;
  }
  wchar_t* const start = out;
  std::size_t i = 0;
  // Blocks of eight units without a surrogate widen as they are.
  while (i + 8 <= count) {
    unsigned surrogates = 0;
    for (std::size_t k = 0; k < 8; ++k) surrogates |= (units[i + k] & 0xF800u) == 0xD800u;
    if (surrogates != 0) break;
    for (std::size_t k = 0; k < 8; ++k) out[k] = static_cast<wchar_t>(units[i + k]);
    out += 8;
    i += 8;
  }
  for (; i < count; ++i) {
    const char32_t unit = units[i];
    if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < count && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000) {
      *out++ = static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (units[i + 1] - 0xDC00));
      ++i;
    } else {
      *out++ = static_cast<wchar_t>(unit);
    }
  }
  return static_cast<std::size_t>(out - start);
}

// Wide characters as UTF-16 units, the reverse of UnitsToWide; a value above
// U+10FFFF becomes U+FFFD.
inline void WideToUnits(const wchar_t* text, std::size_t count, std::u16string& out) {
  out.clear();
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t c = static_cast<std::uint32_t>(text[i]) & (sizeof(wchar_t) == 2 ? 0xFFFF : 0xFFFFFFFF);
    if (c < 0x10000) {
      out += static_cast<char16_t>(c);
    } else if (c <= 0x10FFFF) {
      out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      out += u'\xFFFD';
    }
  }
}

// Whether the bytes are well-formed UTF-8 (no overlong forms, surrogates
// or values above U+10FFFF). 16 bytes at a time where the processor has
// SSSE3 or AVX2 (TextFileUtf8.cpp), else a byte at a time.
bool IsWellFormedUtf8(const char* text, std::size_t size);

}  // namespace FXTextFile
