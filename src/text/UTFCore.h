// Building blocks shared by the transcoders (internal): code-unit values,
// ASCII runs copied a block at a time, the well-formed UTF-8 ranges, and the
// never-failing converters behind FXString::ToString and ToWstring.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace FXUTFDetail {

constexpr std::uint32_t kReplacement = 0xFFFD;
constexpr std::uint32_t kMaxLegal = 0x10FFFF;

inline bool IsSurrogate(std::uint32_t c) { return c - 0xD800u < 0x800u; }
inline bool IsHighSurrogate(std::uint32_t c) { return c - 0xD800u < 0x400u; }
inline bool IsLowSurrogate(std::uint32_t c) { return c - 0xDC00u < 0x400u; }
inline bool IsContinuation(std::uint8_t b) { return (b & 0xC0u) == 0x80u; }

// The value of a code unit: wchar_t is signed on Linux, and a negative unit
// must read as a huge (illegal) value, never as a small one.
template <class Unit>
inline std::uint32_t Value(Unit u) {
  return static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<Unit>>(u));
}

// Copies the leading ASCII units of [s, s + n) to t and returns how many.
// Blocks of 16 are tested with one OR and copied by a loop the compiler
// vectorises; this is what makes mostly-ASCII text cheap.
template <class Src, class Dst>
inline std::size_t CopyAscii(const Src* s, Dst* t, std::size_t n) {
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    if constexpr (sizeof(Src) == 1) {
      std::uint64_t a, b;
      std::memcpy(&a, s + i, 8);
      std::memcpy(&b, s + i + 8, 8);
      if ((a | b) & 0x8080808080808080ull) break;
    } else {
      std::uint32_t bits = 0;
      for (std::size_t k = 0; k < 16; ++k) bits |= Value(s[i + k]);
      if (bits >= 0x80) break;
    }
    for (std::size_t k = 0; k < 16; ++k) t[i + k] = static_cast<Dst>(s[i + k]);
  }
  for (; i < n && Value(s[i]) < 0x80; ++i) t[i] = static_cast<Dst>(s[i]);
  return i;
}

// The range of the second byte of a well-formed sequence with this lead
// (0xE0..0xF4); the ranges exclude overlongs, surrogates and values above
// U+10FFFF.
inline bool IsSecondByteOk(std::uint8_t lead, std::uint8_t b) {
  switch (lead) {
    case 0xE0: return b >= 0xA0 && b <= 0xBF;
    case 0xED: return b >= 0x80 && b <= 0x9F;
    case 0xF0: return b >= 0x90 && b <= 0xBF;
    case 0xF4: return b >= 0x80 && b <= 0x8F;
    default: return IsContinuation(b);
  }
}

// The length of the maximal ill-formed subpart at s (at least 1): the
// longest prefix of a well-formed sequence that is there.
inline std::size_t MaximalSubpart(const std::uint8_t* s, const std::uint8_t* e) {
  const std::uint8_t lead = *s;
  if (lead < 0xC2 || lead > 0xF4) return 1;
  const std::size_t need = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const std::size_t left = static_cast<std::size_t>(e - s);
  std::size_t k = 1;
  if (k < left && (need == 2 ? IsContinuation(s[1]) : IsSecondByteOk(lead, s[1]))) ++k;
  else return k;
  while (k < need && k < left && IsContinuation(s[k])) ++k;
  return k;
}

template <class Unit>
inline Unit* Put(Unit* t, std::uint32_t c) {
  if (sizeof(Unit) == 2 && c > 0xFFFF) {
    c -= 0x10000;
    *t++ = static_cast<Unit>(0xD800 + (c >> 10));
    *t++ = static_cast<Unit>(0xDC00 + (c & 0x3FF));
  } else {
    *t++ = static_cast<Unit>(c);
  }
  return t;
}

inline std::uint8_t* PutUtf8(std::uint8_t* t, std::uint32_t c) {
  if (c < 0x80) {
    *t++ = static_cast<std::uint8_t>(c);
  } else if (c < 0x800) {
    *t++ = static_cast<std::uint8_t>(0xC0 | (c >> 6));
    *t++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    *t++ = static_cast<std::uint8_t>(0xE0 | (c >> 12));
    *t++ = static_cast<std::uint8_t>(0x80 | ((c >> 6) & 0x3F));
    *t++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
  } else {
    *t++ = static_cast<std::uint8_t>(0xF0 | (c >> 18));
    *t++ = static_cast<std::uint8_t>(0x80 | ((c >> 12) & 0x3F));
    *t++ = static_cast<std::uint8_t>(0x80 | ((c >> 6) & 0x3F));
    *t++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
  }
  return t;
}

// Converts the well-formed UTF-8 at the start of [s, e) to UTF-16 or
// UTF-32 (by the size of Unit) and returns where it stopped: at e, at an
// ill-formed sequence, or at one cut off by e. t must have room for e - s
// units (no sequence yields more units than it has bytes) and is advanced.
template <class Unit>
const std::uint8_t* DecodeWellFormed(const std::uint8_t* s, const std::uint8_t* e, Unit*& t) {
  while (s < e) {
    const std::uint8_t lead = *s;
    if (lead < 0x80) {
      const std::size_t n = CopyAscii(s, t, static_cast<std::size_t>(e - s));
      s += n;
      t += n;
      continue;
    }
    const std::size_t left = static_cast<std::size_t>(e - s);
    if (lead < 0xE0) {
      if (lead < 0xC2 || left < 2 || !IsContinuation(s[1])) break;
      *t++ = static_cast<Unit>(((lead & 0x1Fu) << 6) | (s[1] & 0x3Fu));
      s += 2;
    } else if (lead < 0xF0) {
      if (left < 3 || !IsSecondByteOk(lead, s[1]) || !IsContinuation(s[2])) break;
      *t++ = static_cast<Unit>(((lead & 0x0Fu) << 12) | ((s[1] & 0x3Fu) << 6) | (s[2] & 0x3Fu));
      s += 3;
    } else {
      if (lead > 0xF4 || left < 4 || !IsSecondByteOk(lead, s[1]) || !IsContinuation(s[2]) ||
          !IsContinuation(s[3]))
        break;
      t = Put(t, ((lead & 0x07u) << 18) | ((s[1] & 0x3Fu) << 12) | ((s[2] & 0x3Fu) << 6) | (s[3] & 0x3Fu));
      s += 4;
    }
  }
  return s;
}

// Converts the well-formed UTF-16 or UTF-32 at the start of [s, e) to
// UTF-8 and returns where it stopped: at e, at an unpaired surrogate (a
// high one cut off by e included) or at a value above U+10FFFF. t must have
// room for 3 bytes per unit (UTF-16) or 4 (UTF-32) and is advanced.
template <class Unit>
const Unit* EncodeWellFormed(const Unit* s, const Unit* e, std::uint8_t*& t) {
  while (s < e) {
    std::uint32_t c = Value(*s);
    if (c < 0x80) {
      const std::size_t n = CopyAscii(s, t, static_cast<std::size_t>(e - s));
      s += n;
      t += n;
      continue;
    }
    if (c < 0x800) {
      *t++ = static_cast<std::uint8_t>(0xC0 | (c >> 6));
      *t++ = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
      ++s;
      continue;
    }
    std::size_t used = 1;
    if (IsSurrogate(c) || c > kMaxLegal) {
      if (sizeof(Unit) != 2 || !IsHighSurrogate(c) || e - s < 2 || !IsLowSurrogate(Value(s[1]))) break;
      c = 0x10000 + ((c - 0xD800) << 10) + (Value(s[1]) - 0xDC00);
      used = 2;
    }
    t = PutUtf8(t, c);
    s += used;
  }
  return s;
}

// UTF-8 to UTF-16 or UTF-32 that never fails: each maximal ill-formed
// subpart becomes one U+FFFD, the Unicode Standard's recommended practice.
// t must have room for e - s units. Returns the end of the output.
template <class Unit>
Unit* DecodeUtf8Replacing(const std::uint8_t* s, const std::uint8_t* e, Unit* t) {
  for (;;) {
    s = DecodeWellFormed(s, e, t);
    if (s == e) return t;
    s += MaximalSubpart(s, e);
    *t++ = static_cast<Unit>(kReplacement);
  }
}

// UTF-16 or UTF-32 to UTF-8 that never fails: an unpaired surrogate or a
// value above U+10FFFF becomes U+FFFD. t must have room for 3 bytes per
// unit (UTF-16) or 4 (UTF-32). Returns the end of the output.
template <class Unit>
std::uint8_t* EncodeUtf8Replacing(const Unit* s, const Unit* e, std::uint8_t* t) {
  for (;;) {
    s = EncodeWellFormed(s, e, t);
    if (s == e) return t;
    ++s;
    t = PutUtf8(t, kReplacement);
  }
}

}  // namespace FXUTFDetail
