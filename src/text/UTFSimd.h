// Vector blocks of the transcoders (internal): 16-byte blocks of ASCII, of
// two-byte and of three-byte characters, validated and converted a vector
// at a time, and (with SSSE3) blocks mixing ASCII with two-byte characters.
// SSE2 is part of every x86-64 processor, so only SSSE3 is asked for at run
// time; all vectors are of 16 bytes, which keeps clear of the stack
// alignment trouble of 32-byte ones under mingw-w64. Other targets and the
// portable build (ZU_PORTABLE) use the scalar code of UTFCore.h alone.
//
// A block that is none of these shapes (ill-formed, four-byte characters,
// three-byte ones mixed with others, the tail) is left to the scalar code,
// which finds every fault; a block is converted here only when all of it is well-formed, so
// the answers never depend on which path ran.
#pragma once

#include <cstddef>
#include <cstdint>

#if !defined(ZU_PORTABLE) && (defined(__x86_64__) || defined(_M_X64))
#define ZU_UTF_SSE2 1
#include <cpuid.h>
#include <emmintrin.h>
#include <tmmintrin.h>
#endif

namespace FXUTFDetail {

#if ZU_UTF_SSE2

constexpr bool kHaveVector = true;

namespace Simd {

inline __m128i Load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void Store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline __m128i Set16(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
inline __m128i Set32(int v) { return _mm_set1_epi32(v); }
inline bool AllSet(__m128i v) { return _mm_movemask_epi8(v) == 0xFFFF; }

// Eight 16-bit lanes out as eight Units.
template <class Unit>
inline void Store8(Unit* t, __m128i v) {
  if constexpr (sizeof(Unit) == 2) {
    Store(t, v);
  } else {
    const __m128i zero = _mm_setzero_si128();
    Store(t, _mm_unpacklo_epi16(v, zero));
    Store(t + 4, _mm_unpackhi_epi16(v, zero));
  }
}

// Eight characters of U+0800..U+FFFF in two vectors of 32-bit lanes.
template <class Unit>
inline void Store8Of32(Unit* t, __m128i a, __m128i b) {
  if constexpr (sizeof(Unit) == 2) {
    // packs saturates signed values: move the range below zero and back.
    const __m128i bias32 = Set32(0x8000);
    const __m128i packed = _mm_packs_epi32(_mm_sub_epi32(a, bias32), _mm_sub_epi32(b, bias32));
    Store(t, _mm_xor_si128(packed, Set16(0x8000)));
  } else {
    Store(t, a);
    Store(t + 4, b);
  }
}

// Four three-byte sequences from 12 bytes at s (16 readable), as 32-bit
// lanes; all-ones in `ok` lanes whose sequence is well-formed.
inline __m128i Decode3(const std::uint8_t* s, __m128i& ok) {
  const __m128i v = Load(s);
  // Bytes 0..7 and 6..13 as two 64-bit lanes, each split into two
  // sequences of three bytes in 32-bit lanes.
  const __m128i y = _mm_unpacklo_epi64(v, _mm_srli_si128(v, 6));
  const __m128i x = _mm_or_si128(_mm_and_si128(y, _mm_set1_epi64x(0xFFFFFF)),
                                 _mm_and_si128(_mm_slli_epi64(y, 8), _mm_set1_epi64x(0x00FFFFFF00000000ll)));
  const __m128i shape = _mm_cmpeq_epi32(_mm_and_si128(x, Set32(0x00C0C0F0)), Set32(0x008080E0));
  const __m128i c = _mm_or_si128(
      _mm_or_si128(_mm_slli_epi32(_mm_and_si128(x, Set32(0x0F)), 12), _mm_srli_epi32(_mm_and_si128(x, Set32(0x3F00)), 2)),
      _mm_and_si128(_mm_srli_epi32(x, 16), Set32(0x3F)));
  // Overlong forms decode below U+0800; encoded surrogates are D800..DFFF.
  const __m128i overlong = _mm_cmplt_epi32(c, Set32(0x800));
  const __m128i surrogate = _mm_cmpeq_epi32(_mm_and_si128(c, Set32(0xF800)), Set32(0xD800));
  ok = _mm_andnot_si128(_mm_or_si128(overlong, surrogate), shape);
  return c;
}

}  // namespace Simd

// Text that mixes ASCII with two-byte characters (European) needs its
// bytes moved by a pattern that changes from block to block: SSSE3's byte
// shuffle does that with a pattern looked up by the block's shape. SSSE3 is
// asked for once, at run time; processors without it keep to the SSE2 and
// scalar code.
inline bool HaveSsse3() {
  static const bool have = [] {
    unsigned a = 0, b = 0, c = 0, d = 0;
    return __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_SSSE3) != 0;
  }();
  return have;
}

namespace Simd {

// Shuffle patterns by an 8-bit shape, with the number of units they keep:
// `lanes` gathers the 16-bit lanes whose bit is set; `pairs` keeps the low
// byte of every 16-bit lane and the high byte of those whose bit is set.
struct TShuffles {
  alignas(16) std::uint8_t lanes[256][16];
  alignas(16) std::uint8_t pairs[256][16];
  std::uint8_t count[256];  // bits set; POPCNT is not implied by SSSE3
};

constexpr TShuffles MakeShuffles() {
  TShuffles out{};
  for (int m = 0; m < 256; ++m) {
    int n = 0, k = 0;
    for (int i = 0; i < 8; ++i) {
      out.pairs[m][k++] = static_cast<std::uint8_t>(2 * i);
      if ((m >> i) & 1) {
        out.lanes[m][2 * n] = static_cast<std::uint8_t>(2 * i);
        out.lanes[m][2 * n + 1] = static_cast<std::uint8_t>(2 * i + 1);
        out.pairs[m][k++] = static_cast<std::uint8_t>(2 * i + 1);
        ++n;
      }
    }
    for (int i = 2 * n; i < 16; ++i) out.lanes[m][i] = 0x80;
    for (; k < 16; ++k) out.pairs[m][k] = 0x80;
    out.count[m] = static_cast<std::uint8_t>(n);
  }
  return out;
}

inline constexpr TShuffles kShuffles = MakeShuffles();

__attribute__((target("ssse3"))) inline __m128i Shuffle(__m128i v, const std::uint8_t (&pattern)[16]) {
  return _mm_shuffle_epi8(v, _mm_load_si128(reinterpret_cast<const __m128i*>(pattern)));
}

}  // namespace Simd

// The eight characters of 16-bit lanes `c` whose bit in `keep` is set.
template <class Unit>
__attribute__((target("ssse3"))) inline Unit* StoreKept(__m128i c, unsigned keep, Unit* t) {
  using namespace Simd;
  Store8(t, Shuffle(c, kShuffles.lanes[keep]));
  return t + kShuffles.count[keep];
}

// The characters of the 16 bytes v that start no continuation (bits of
// `keep`), where `lead` marks the two-byte leads and `next` holds the byte
// after each. A lead's character is summed by weights from its lane of
// two bytes: (lead & 0x1F) * 64 + (next & 0x3F); an ASCII byte is itself.
template <class Unit>
__attribute__((target("ssse3"))) inline Unit* DecodeVector(__m128i v, __m128i next, __m128i lead, unsigned keep,
                                                         Unit* t) {
  const __m128i low = _mm_and_si128(v, _mm_xor_si128(_mm_set1_epi8(0x7F), _mm_and_si128(lead, _mm_set1_epi8(0x60))));
  const __m128i trail = _mm_and_si128(next, _mm_and_si128(lead, _mm_set1_epi8(0x3F)));
  const __m128i weight = _mm_xor_si128(_mm_set1_epi8(1), _mm_and_si128(lead, _mm_set1_epi8(65)));
  const __m128i one = _mm_set1_epi8(1);
  t = StoreKept(_mm_maddubs_epi16(_mm_unpacklo_epi8(low, trail), _mm_unpacklo_epi8(weight, one)), keep & 0xFF, t);
  return StoreKept(_mm_maddubs_epi16(_mm_unpackhi_epi8(low, trail), _mm_unpackhi_epi8(weight, one)), (keep >> 8) & 0xFF,
                   t);
}

// Converts the 32-byte blocks at the start of [s, e) that hold only ASCII
// and two-byte sequences, all well-formed, and returns where it stopped. A
// sequence cut by the block's end is left for the next block. The target
// needs room for e - s units and is advanced past the output.
template <class Unit>
__attribute__((target("ssse3"))) const std::uint8_t* DecodeShortBlocks(const std::uint8_t* s, const std::uint8_t* e,
                                                                     Unit*& target) {
  using namespace Simd;
  Unit* t = target;
  const __m128i zero = _mm_setzero_si128();
  const auto bits = [](__m128i a, __m128i b) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(a)) | static_cast<std::uint32_t>(_mm_movemask_epi8(b)) << 16;
  };
  while (e - s >= 32) {
    const __m128i v0 = Load(s), v1 = Load(s + 16);
    const std::uint32_t high = bits(v0, v1);
    if (high == 0) {
      Store8(t, _mm_unpacklo_epi8(v0, zero));
      Store8(t + 8, _mm_unpackhi_epi8(v0, zero));
      Store8(t + 16, _mm_unpacklo_epi8(v1, zero));
      Store8(t + 24, _mm_unpackhi_epi8(v1, zero));
      s += 32;
      t += 32;
      continue;
    }
    // Continuation bytes 80..BF are below -64 as signed bytes, leads C2..DF
    // lie in -62..-33. Every byte must be one of these or ASCII, and the
    // continuations must be exactly the bytes after the leads.
    const __m128i below = _mm_set1_epi8(-64), above = _mm_set1_epi8(-63), top = _mm_set1_epi8(-32);
    const __m128i lead0 = _mm_and_si128(_mm_cmpgt_epi8(v0, above), _mm_cmplt_epi8(v0, top));
    const __m128i lead1 = _mm_and_si128(_mm_cmpgt_epi8(v1, above), _mm_cmplt_epi8(v1, top));
    const std::uint32_t contBits = bits(_mm_cmplt_epi8(v0, below), _mm_cmplt_epi8(v1, below));
    const std::uint32_t leadBits = bits(lead0, lead1);
    if ((~high | contBits | leadBits) != ~0u || contBits != leadBits << 1) break;
    // Continuation bytes are dropped; a lead cut off by the block's end
    // waits for the next block.
    std::uint32_t keep = ~contBits;
    std::ptrdiff_t used = 32;
    if (leadBits >> 31) {
      keep &= 0x7FFFFFFF;
      used = 31;
    }
    t = DecodeVector(v0, _mm_alignr_epi8(v1, v0, 1), lead0, keep & 0xFFFF, t);
    t = DecodeVector(v1, _mm_srli_si128(v1, 1), lead1, keep >> 16, t);
    s += used;
  }
  target = t;
  return s;
}

// Converts the blocks at the start of [s, e) that are sixteen units below
// U+0800 to UTF-8, and returns where it stopped. The target needs room for
// 2 bytes per unit; it is advanced past the output, and bytes after that
// may have been written.
template <class Unit>
__attribute__((target("ssse3"))) const Unit* EncodeShortBlocks(const Unit* s, const Unit* e, std::uint8_t*& target) {
  using namespace Simd;
  std::uint8_t* t = target;
  const __m128i zero = _mm_setzero_si128();
  while (e - s >= 16) {
    __m128i x[2];
    if constexpr (sizeof(Unit) == 2) {
      x[0] = Load(s);
      x[1] = Load(s + 8);
      if (!AllSet(_mm_cmpeq_epi16(_mm_and_si128(_mm_or_si128(x[0], x[1]), Set16(0xF800)), zero))) break;
    } else {
      const __m128i a = Load(s), b = Load(s + 4), c = Load(s + 8), d = Load(s + 12);
      const __m128i any = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
      // Above U+07FF, or a negative wchar_t: not for this block.
      if (!AllSet(_mm_cmpeq_epi32(_mm_and_si128(any, Set32(~0x7FF)), zero))) break;
      x[0] = _mm_packs_epi32(a, b);
      x[1] = _mm_packs_epi32(c, d);
    }
    for (const __m128i c : x) {
      // A lead and a continuation byte in each lane; an ASCII lane keeps
      // its low byte alone.
      const __m128i two = _mm_cmpgt_epi16(c, Set16(0x7F));
      const __m128i pair = _mm_or_si128(_mm_or_si128(Set16(0x80C0), _mm_srli_epi16(c, 6)),
                                        _mm_slli_epi16(_mm_and_si128(c, Set16(0x3F)), 8));
      const __m128i lanes = _mm_or_si128(_mm_and_si128(two, pair), _mm_andnot_si128(two, c));
      const unsigned bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(two, zero)));
      Store(t, Shuffle(lanes, kShuffles.pairs[bits]));
      t += 8 + kShuffles.count[bits];
    }
    s += 16;
  }
  target = t;
  return s;
}

// Converts the 16-byte blocks at the start of [s, e) that are ASCII,
// eight two-byte sequences, or (24 bytes) eight three-byte sequences to
// UTF-16 or UTF-32, and returns where it stopped: at the tail or at the
// first block of another shape. The target needs room for e - s units and
// is advanced past the output.
//
// Mixed ASCII and two-byte text (European) goes to the SSSE3 blocks where
// the processor has them; without a byte shuffle, squeezing out its
// continuation bytes costs more vector operations than the scalar code
// spends, so it is left to that.
template <class Unit>
const std::uint8_t* DecodeBlocks(const std::uint8_t* s, const std::uint8_t* e, Unit*& target) {
  using namespace Simd;
  Unit* t = target;
  const __m128i zero = _mm_setzero_si128();
  while (e - s >= 16) {
    const __m128i v = Load(s);
    if (_mm_movemask_epi8(v) == 0) {
      Store8(t, _mm_unpacklo_epi8(v, zero));
      Store8(t + 8, _mm_unpackhi_epi8(v, zero));
      s += 16;
      t += 16;
      continue;
    }
    const std::uint8_t lead = *s;
    if (lead >= 0xE0 && lead < 0xF0) {
      if (e - s < 28) break;
      __m128i ok0, ok1;
      const __m128i c0 = Decode3(s, ok0);
      const __m128i c1 = Decode3(s + 12, ok1);
      if (!AllSet(_mm_and_si128(ok0, ok1))) break;
      Store8Of32(t, c0, c1);
      s += 24;
      t += 8;
      continue;
    }
    // Eight two-byte sequences: lead 110xxxxx (not C0, C1) in the low byte
    // of each 16-bit lane, continuation 10xxxxxx in the high one.
    const __m128i shape = _mm_cmpeq_epi16(_mm_and_si128(v, Set16(0xC0E0)), Set16(0x80C0));
    const __m128i overlong = _mm_cmpeq_epi16(_mm_and_si128(v, Set16(0x1E)), zero);
    if (!AllSet(_mm_andnot_si128(overlong, shape))) {
      if (!HaveSsse3()) break;
      const std::uint8_t* const stop = DecodeShortBlocks(s, e, t);
      if (stop == s) break;
      s = stop;
      continue;
    }
    Store8(t, _mm_or_si128(_mm_slli_epi16(_mm_and_si128(v, Set16(0x1F)), 6),
                           _mm_and_si128(_mm_srli_epi16(v, 8), Set16(0x3F))));
    s += 16;
    t += 8;
  }
  target = t;
  return s;
}

// Widens the 16-byte blocks at the start of [s, e) that are ASCII without
// a NUL, and returns where it stopped.
template <class Unit>
const std::uint8_t* WidenBlocks(const std::uint8_t* s, const std::uint8_t* e, Unit*& target) {
  using namespace Simd;
  Unit* t = target;
  const __m128i zero = _mm_setzero_si128();
  while (e - s >= 16) {
    const __m128i v = Load(s);
    if (_mm_movemask_epi8(_mm_or_si128(v, _mm_cmpeq_epi8(v, zero))) != 0) break;
    Store8(t, _mm_unpacklo_epi8(v, zero));
    Store8(t + 8, _mm_unpackhi_epi8(v, zero));
    s += 16;
    t += 16;
  }
  target = t;
  return s;
}

// Converts the blocks at the start of [s, e) that are sixteen ASCII units,
// eight of U+0080..U+07FF or eight of U+0800..U+FFFF (no surrogate) to
// UTF-8, and returns where it stopped: at the tail or at the first block of
// another shape (mixed ones are the scalar code's). The target needs room
// for 3 bytes per unit; it is advanced past the output, and bytes after
// that may have been written.
template <class Unit>
const Unit* EncodeBlocks(const Unit* s, const Unit* e, std::uint8_t*& target) {
  using namespace Simd;
  std::uint8_t* t = target;
  const __m128i zero = _mm_setzero_si128();
  while (e - s >= 16) {
    // x: the first eight units in 16-bit lanes.
    __m128i x;
    if constexpr (sizeof(Unit) == 2) {
      x = Load(s);
      const __m128i y = Load(s + 8);
      if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(_mm_or_si128(x, y), Set16(0xFF80)), zero)) == 0xFFFF) {
        Store(t, _mm_packus_epi16(x, y));
        s += 16;
        t += 16;
        continue;
      }
    } else {
      const __m128i a = Load(s), b = Load(s + 4), c = Load(s + 8), d = Load(s + 12);
      const __m128i any = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
      if (_mm_movemask_epi8(_mm_cmpeq_epi32(_mm_and_si128(any, Set32(~0x7F)), zero)) == 0xFFFF) {
        Store(t, _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d)));
        s += 16;
        t += 16;
        continue;
      }
      // Above U+FFFF, or a negative wchar_t: not for the blocks below.
      if (_mm_movemask_epi8(_mm_cmpeq_epi32(_mm_and_si128(_mm_or_si128(a, b), Set32(~0xFFFF)), zero)) != 0xFFFF) break;
      // packs saturates signed values: move the range below zero and back.
      const __m128i bias32 = Set32(0x8000);
      x = _mm_xor_si128(_mm_packs_epi32(_mm_sub_epi32(a, bias32), _mm_sub_epi32(b, bias32)), Set16(0x8000));
    }
    const __m128i top = _mm_and_si128(x, Set16(0xF800));
    const __m128i small = _mm_cmpeq_epi16(top, zero);
    if (_mm_movemask_epi8(small) == 0xFFFF) {
      if (_mm_movemask_epi8(_mm_cmplt_epi16(x, Set16(0x80))) != 0) {  // mixed with ASCII
        if (!HaveSsse3()) break;
        const Unit* const stop = EncodeShortBlocks(s, e, t);
        if (stop == s) break;
        s = stop;
        continue;
      }
      // Eight two-byte characters: lead and continuation in each lane.
      Store(t, _mm_or_si128(_mm_or_si128(Set16(0x80C0), _mm_srli_epi16(x, 6)),
                            _mm_slli_epi16(_mm_and_si128(x, Set16(0x3F)), 8)));
      s += 8;
      t += 16;
      continue;
    }
    const __m128i surrogate = _mm_cmpeq_epi16(top, Set16(0xD800));
    if (_mm_movemask_epi8(_mm_or_si128(small, surrogate)) != 0) break;
    // Eight three-byte characters, built in 32-bit lanes and packed to six
    // bytes per 64-bit lane.
    for (const __m128i c : {_mm_unpacklo_epi16(x, zero), _mm_unpackhi_epi16(x, zero)}) {
      const __m128i lanes = _mm_or_si128(
          _mm_or_si128(Set32(0x8080E0), _mm_srli_epi32(c, 12)),
          _mm_or_si128(_mm_and_si128(_mm_slli_epi32(c, 2), Set32(0x3F00)),
                       _mm_and_si128(_mm_slli_epi32(c, 16), Set32(0x3F0000))));
      const __m128i six = _mm_or_si128(_mm_and_si128(lanes, _mm_set1_epi64x(0xFFFFFF)),
                                       _mm_srli_epi64(_mm_andnot_si128(_mm_set1_epi64x(0xFFFFFF), lanes), 8));
      _mm_storel_epi64(reinterpret_cast<__m128i*>(t), six);
      _mm_storel_epi64(reinterpret_cast<__m128i*>(t + 6), _mm_srli_si128(six, 8));
      t += 12;
    }
    s += 8;
  }
  target = t;
  return s;
}

#else

constexpr bool kHaveVector = false;

#endif

}  // namespace FXUTFDetail
