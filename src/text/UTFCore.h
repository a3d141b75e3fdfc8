// Building blocks shared by the transcoders (internal): code-unit values,
// ASCII runs copied a block at a time, the well-formed UTF-8 ranges, and the
// never-failing converters behind FXString::ToString and ToWstring.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "text/UTFSimd.h"

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

// The length of the well-formed sequence at s (1 to 4; s < e), or 0 when
// the bytes there are not one (overlongs, surrogates and values above
// U+10FFFF included).
inline std::size_t WellFormedLength(const std::uint8_t* s, const std::uint8_t* e) {
  const std::uint8_t lead = *s;
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const std::size_t need = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (static_cast<std::size_t>(e - s) < need || !IsSecondByteOk(lead, s[1])) return 0;
  for (std::size_t i = 2; i < need; ++i)
    if (!IsContinuation(s[i])) return 0;
  return need;
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

// The short ASCII runs of mixed text are found with one word load and a
// count of trailing zero bits, which needs the lowest address in the lowest
// bits. Both targets (x86-64 Windows and Linux) are little-endian.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "ASCII runs are measured in memory order");

// The bits of an 8-byte word of Units that are set in no ASCII unit.
template <class Unit>
constexpr std::uint64_t kNonAsciiBits = sizeof(Unit) == 1   ? 0x8080808080808080ull
                                        : sizeof(Unit) == 2 ? 0xFF80FF80FF80FF80ull
                                                            : 0xFFFFFF80FFFFFF80ull;

// At an ASCII unit with at least two words (16 bytes) to read: converts
// the ASCII run that starts there, and returns how many units it took. A
// run shorter than that is copied as two whole words (the target must have
// room for them), of which only the run counts.
template <class Src, class Dst>
inline std::size_t AsciiRun(const Src* s, std::size_t left, Dst* t) {
  constexpr std::size_t kPerWord = 8 / sizeof(Src);
  std::uint64_t words[2];
  std::memcpy(words, s, 16);
  const std::uint64_t high0 = words[0] & kNonAsciiBits<Src>;
  const std::uint64_t high1 = words[1] & kNonAsciiBits<Src>;
  if ((high0 | high1) == 0) return CopyAscii(s, t, left);
  for (std::size_t k = 0; k < 2 * kPerWord; ++k) t[k] = static_cast<Dst>(s[k]);
  constexpr unsigned kBitsPerUnit = 8 * sizeof(Src);
  return high0 != 0 ? static_cast<std::size_t>(__builtin_ctzll(high0)) / kBitsPerUnit
                    : kPerWord + static_cast<std::size_t>(__builtin_ctzll(high1)) / kBitsPerUnit;
}

#if ZU_UTF_SSE2
// Runs the vector blocks at s, unless they lately found nothing to take:
// mixed text tends to stay mixed, so after a block they do not take, the
// next stretch is left to the scalar code rather than tried block by block.
template <auto kBlocks, class Src, class Dst>
inline const Src* TryBlocks(const Src* s, const Src* e, Dst*& t, const Src*& vectorFrom) {
  constexpr std::ptrdiff_t kScalarStretch = 64;
  if (s < vectorFrom) return s;
  Dst* out = t;  // keeps the caller's cursor out of memory
  const Src* const stop = kBlocks(s, e, out);
  t = out;
  if (stop == s) vectorFrom = e - s > kScalarStretch ? s + kScalarStretch : e;
  return stop;
}
#endif

// Widens the leading blocks of [s, e) that are ASCII without a NUL, and
// returns where it stopped: the one pass that text ending at its first NUL
// needs while it is plain ASCII.
template <class Unit, bool kVector = kHaveVector>
const std::uint8_t* WidenAsciiUntilNul(const std::uint8_t* s, const std::uint8_t* e, Unit*& t) {
#if ZU_UTF_SSE2
  if constexpr (kVector) return WidenBlocks(s, e, t);
#endif
  constexpr std::uint64_t kOnes = 0x0101010101010101ull;
  while (e - s >= 8) {
    std::uint64_t w;
    std::memcpy(&w, s, 8);
    if (((w | ((w - kOnes) & ~w)) & (kOnes << 7)) != 0) break;  // a byte >= 0x80, or a zero byte
    for (std::size_t k = 0; k < 8; ++k) t[k] = static_cast<Unit>(s[k]);
    s += 8;
    t += 8;
  }
  return s;
}

// Converts the well-formed UTF-8 at the start of [s, e) to UTF-16 or
// UTF-32 (by the size of Unit) and returns where it stopped: at e, at an
// ill-formed sequence, or at one cut off by e. The target must have room
// for e - s units (no sequence yields more units than it has bytes); it is
// advanced past the output, and units after that may have been written.
// kVector false keeps to the scalar code (the reference of the tests).
template <class Unit, bool kVector = kHaveVector>
const std::uint8_t* DecodeWellFormed(const std::uint8_t* s, const std::uint8_t* e, Unit*& target) {
  static_assert(kHaveVector || !kVector, "no vector code on this target");
  Unit* t = target;  // a local, which byte stores cannot alias
  [[maybe_unused]] const std::uint8_t* vectorFrom = s;
  while (s < e) {
#if ZU_UTF_SSE2
    if constexpr (kVector) {
      s = TryBlocks<&DecodeBlocks<Unit>>(s, e, t, vectorFrom);
      if (s == e) break;
    }
#endif
    if (*s < 0x80) {
      const std::size_t left = static_cast<std::size_t>(e - s);
      std::size_t n = 1;
      if (left >= 16) {
        n = AsciiRun(s, left, t);
      } else {
        *t = static_cast<Unit>(*s);
      }
      s += n;
      t += n;
      if (s == e || *s < 0x80) continue;
    }
    const std::uint32_t lead = *s;
    const std::size_t left = static_cast<std::size_t>(e - s);
    if (lead < 0xE0) {
      if (lead < 0xC2 || left < 2 || !IsContinuation(s[1])) break;
      *t++ = static_cast<Unit>(((lead & 0x1Fu) << 6) | (s[1] & 0x3Fu));
      s += 2;
    } else if (lead < 0xF0) {
      // A run of three-byte characters, as CJK text is: one load each.
      const std::uint8_t* const before = s;
      while (e - s >= 4) {
        std::uint32_t word;
        std::memcpy(&word, s, 4);
        if ((word & 0x00C0C0F0u) != 0x008080E0u) break;
        const std::uint32_t c = ((word & 0x0Fu) << 12) | ((word & 0x3F00u) >> 2) | ((word >> 16) & 0x3Fu);
        if (c < 0x800 || IsSurrogate(c)) break;
        *t++ = static_cast<Unit>(c);
        s += 3;
      }
      if (s != before) continue;
      if (left < 3 || !IsContinuation(s[1]) || !IsContinuation(s[2])) break;
      const std::uint32_t c = ((lead & 0x0Fu) << 12) | ((s[1] & 0x3Fu) << 6) | (s[2] & 0x3Fu);
      if (c < 0x800 || IsSurrogate(c)) break;  // overlong, or an encoded surrogate
      *t++ = static_cast<Unit>(c);
      s += 3;
    } else {
      if (lead > 0xF4 || left < 4 || !IsContinuation(s[1]) || !IsContinuation(s[2]) || !IsContinuation(s[3]))
        break;
      const std::uint32_t c =
          ((lead & 0x07u) << 18) | ((s[1] & 0x3Fu) << 12) | ((s[2] & 0x3Fu) << 6) | (s[3] & 0x3Fu);
      if (c < 0x10000 || c > kMaxLegal) break;
      t = Put(t, c);
      s += 4;
    }
  }
  target = t;
  return s;
}

// The three UTF-8 bytes of a character of U+0800..U+FFFF, in memory order.
inline std::uint32_t Utf8Of3(std::uint32_t c) {
  return (0xE0 | (c >> 12)) | ((0x80 | ((c >> 6) & 0x3F)) << 8) | ((0x80 | (c & 0x3F)) << 16);
}

// The bits of an 8-byte word of Units that are set in no unit below U+0800
// (a negative wchar_t included).
template <class Unit>
constexpr std::uint64_t kWideBits = sizeof(Unit) == 2 ? 0xF800F800F800F800ull : 0xFFFFF800FFFFF800ull;

// Converts n units below U+0800 to UTF-8 without a branch per unit: each
// goes out as one store of two bytes, of which an ASCII unit keeps one. The
// target must have room for 2 bytes per unit.
template <class Unit>
inline std::uint8_t* EncodeBelow800(const Unit* s, std::size_t n, std::uint8_t* t) {
  for (std::size_t k = 0; k < n; ++k) {
    const std::uint32_t c = Value(s[k]);
    const std::uint32_t pair = (0xC0 | (c >> 6)) | ((0x80 | (c & 0x3F)) << 8);
    const std::uint16_t bytes = static_cast<std::uint16_t>(c < 0x80 ? c : pair);
    std::memcpy(t, &bytes, 2);
    t += 1 + (c >= 0x80);
  }
  return t;
}

// Converts the well-formed UTF-16 or UTF-32 at the start of [s, e) to
// UTF-8 and returns where it stopped: at e, at an unpaired surrogate (a
// high one cut off by e included) or at a value above U+10FFFF. The target
// must have room for 3 bytes per unit (UTF-16) or 4 (UTF-32); it is
// advanced past the output, and bytes after that may have been written.
// kVector false keeps to the scalar code (the reference of the tests).
template <class Unit, bool kVector = kHaveVector>
const Unit* EncodeWellFormed(const Unit* s, const Unit* e, std::uint8_t*& target) {
  static_assert(kHaveVector || !kVector, "no vector code on this target");
  std::uint8_t* t = target;  // a local, which byte stores cannot alias
  constexpr std::size_t kPerWord = 8 / sizeof(Unit);
  constexpr std::size_t kPerBlock = 8;
  constexpr std::size_t kWords = kPerBlock / kPerWord;
  constexpr unsigned kBitsPerUnit = 8 * sizeof(Unit);
  [[maybe_unused]] const Unit* vectorFrom = s;
  while (s < e) {
#if ZU_UTF_SSE2
    if constexpr (kVector) {
      s = TryBlocks<&EncodeBlocks<Unit>>(s, e, t, vectorFrom);
      if (s == e) break;
    }
#endif
    std::size_t left = static_cast<std::size_t>(e - s);
    // Blocks of eight units: while they hold only units below U+0800, as
    // most of European text does, no unit is asked how long it is; a block
    // with a longer one is converted up to it.
    while (left >= kPerBlock) {
      std::uint64_t words[kWords];
      std::memcpy(words, s, sizeof words);
      std::uint64_t all = 0;
      for (std::size_t k = 0; k < kWords; ++k) all |= words[k];
      if ((all & kWideBits<Unit>) == 0) {
        if ((all & kNonAsciiBits<Unit>) == 0) {
          for (std::size_t k = 0; k < kPerBlock; ++k) t[k] = static_cast<std::uint8_t>(s[k]);
          t += kPerBlock;
        } else {
          t = EncodeBelow800(s, kPerBlock, t);
        }
        s += kPerBlock;
        left -= kPerBlock;
        continue;
      }
      std::size_t k = 0;
      while ((words[k] & kWideBits<Unit>) == 0) ++k;
      const std::size_t n =
          k * kPerWord + static_cast<std::size_t>(__builtin_ctzll(words[k] & kWideBits<Unit>)) / kBitsPerUnit;
      t = EncodeBelow800(s, n, t);
      s += n;
      break;
    }
    if (s == e) break;
    std::uint32_t c = Value(*s);
    if (c < 0x800) {
      t = EncodeBelow800(s, 1, t);
      ++s;
      continue;
    }
    if (c < 0x10000 && !IsSurrogate(c)) {
      // A run of three-byte characters, as CJK text is: two at a time, in
      // one store of eight bytes while a third unit's room follows.
      while (e - s >= 3) {
        const std::uint32_t c0 = Value(s[0]), c1 = Value(s[1]);
        if (c0 < 0x800 || c1 < 0x800 || c0 > 0xFFFF || c1 > 0xFFFF || IsSurrogate(c0) || IsSurrogate(c1)) break;
        const std::uint64_t bytes = Utf8Of3(c0) | (static_cast<std::uint64_t>(Utf8Of3(c1)) << 24);
        std::memcpy(t, &bytes, 8);
        t += 6;
        s += 2;
      }
      if (s == e) break;
      c = Value(*s);
      if (c < 0x800) continue;
    }
    std::size_t used = 1;
    if (IsSurrogate(c) || c > kMaxLegal) {
      if (sizeof(Unit) != 2 || !IsHighSurrogate(c) || e - s < 2 || !IsLowSurrogate(Value(s[1]))) break;
      c = 0x10000 + ((c - 0xD800) << 10) + (Value(s[1]) - 0xDC00);
      used = 2;
    }
    if (c < 0x10000) {
      // Three bytes as one store of four where another unit follows (its
      // room takes the spare byte).
      const std::uint32_t bytes = Utf8Of3(c);
      if (e - s >= 2) {
        std::memcpy(t, &bytes, 4);
      } else {
        std::memcpy(t, &bytes, 3);
      }
      t += 3;
    } else {
      t[0] = static_cast<std::uint8_t>(0xF0 | (c >> 18));
      t[1] = static_cast<std::uint8_t>(0x80 | ((c >> 12) & 0x3F));
      t[2] = static_cast<std::uint8_t>(0x80 | ((c >> 6) & 0x3F));
      t[3] = static_cast<std::uint8_t>(0x80 | (c & 0x3F));
      t += 4;
    }
    s += used;
  }
  target = t;
  return s;
}

// UTF-8 to UTF-16 or UTF-32 that never fails: each maximal ill-formed
// subpart becomes one U+FFFD, the Unicode Standard's recommended practice.
// t must have room for e - s units. Returns the end of the output.
template <class Unit, bool kVector = kHaveVector>
Unit* DecodeUtf8Replacing(const std::uint8_t* s, const std::uint8_t* e, Unit* t) {
  for (;;) {
    s = DecodeWellFormed<Unit, kVector>(s, e, t);
    if (s == e) return t;
    s += MaximalSubpart(s, e);
    *t++ = static_cast<Unit>(kReplacement);
  }
}

// UTF-16 or UTF-32 to UTF-8 that never fails: an unpaired surrogate or a
// value above U+10FFFF becomes U+FFFD. t must have room for 3 bytes per
// unit (UTF-16) or 4 (UTF-32). Returns the end of the output.
template <class Unit, bool kVector = kHaveVector>
std::uint8_t* EncodeUtf8Replacing(const Unit* s, const Unit* e, std::uint8_t* t) {
  for (;;) {
    s = EncodeWellFormed<Unit, kVector>(s, e, t);
    if (s == e) return t;
    ++s;
    t = PutUtf8(t, kReplacement);
  }
}

}  // namespace FXUTFDetail
