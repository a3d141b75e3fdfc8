// UTF-8 validation for the text-file readers, which check the lines of a
// UTF-8 file before they hand them on unchanged: 32 bytes at a time with
// AVX2, 16 with SSSE3, else byte by byte.
//
// The vector routine follows Keiser and Lemire, "Validating UTF-8 in less
// than one instruction per byte" (2021): three table lookups on the nibbles
// of each byte and its predecessor classify every two-byte pattern, and a
// saturating subtraction marks where a third or fourth byte must follow.
#include <cstdint>
#include <cstring>

#include "text/TextFileSupport.h"
#include "text/UTFCore.h"

#if !defined(ZU_PORTABLE) && (defined(__x86_64__) || defined(_M_X64))
#include <immintrin.h>
#define ZU_UTF8_SSSE3 1
#endif

namespace FXTextFile {

namespace {

bool IsWellFormedScalar(const unsigned char* p, const unsigned char* const end) {
  while (p < end) {
    while (end - p >= 8) {
      std::uint64_t word;
      std::memcpy(&word, p, 8);
      if (word & 0x8080808080808080ULL) break;
      p += 8;
    }
    if (p == end) break;
    const std::size_t length = FXUTFDetail::WellFormedLength(p, end);
    if (length == 0) return false;
    p += length;
  }
  return true;
}

#ifdef ZU_UTF8_SSSE3

enum EVectorLevel { kScalar, kSsse3, kAvx2 };

EVectorLevel VectorLevel() {
  static const EVectorLevel level = [] {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) return kAvx2;
    return __builtin_cpu_supports("ssse3") ? kSsse3 : kScalar;
  }();
  return level;
}

// The error bits of the two-byte patterns.
constexpr std::uint8_t kTooShort = 1 << 0;   // a lead not followed by a continuation
constexpr std::uint8_t kTooLong = 1 << 1;    // ASCII followed by a continuation
constexpr std::uint8_t kOverlong3 = 1 << 2;  // E0 80..9F
constexpr std::uint8_t kTooLarge = 1 << 3;   // F4 90.. and above
constexpr std::uint8_t kSurrogate = 1 << 4;  // ED A0..BF
constexpr std::uint8_t kOverlong2 = 1 << 5;  // C0, C1
constexpr std::uint8_t kTooLarge1000 = 1 << 6;
constexpr std::uint8_t kOverlong4 = 1 << 6;  // F0 80..8F
constexpr std::uint8_t kTwoConts = 1 << 7;   // a continuation after a continuation: fine only within 3 or 4 bytes
constexpr std::uint8_t kCarry = kTooShort | kTooLong | kTwoConts;

__attribute__((target("ssse3"))) inline __m128i Nibbles(__m128i v) {
  return _mm_and_si128(_mm_srli_epi16(v, 4), _mm_set1_epi8(0x0F));
}

__attribute__((target("ssse3"))) inline __m128i Table(std::uint8_t a0, std::uint8_t a1, std::uint8_t a2,
                                                      std::uint8_t a3, std::uint8_t a4, std::uint8_t a5,
                                                      std::uint8_t a6, std::uint8_t a7, std::uint8_t a8,
                                                      std::uint8_t a9, std::uint8_t a10, std::uint8_t a11,
                                                      std::uint8_t a12, std::uint8_t a13, std::uint8_t a14,
                                                      std::uint8_t a15) {
  return _mm_setr_epi8(static_cast<char>(a0), static_cast<char>(a1), static_cast<char>(a2), static_cast<char>(a3),
                       static_cast<char>(a4), static_cast<char>(a5), static_cast<char>(a6), static_cast<char>(a7),
                       static_cast<char>(a8), static_cast<char>(a9), static_cast<char>(a10), static_cast<char>(a11),
                       static_cast<char>(a12), static_cast<char>(a13), static_cast<char>(a14), static_cast<char>(a15));
}

// The error bits of a pair of bytes, looked up by the high and the low
// nibble of the first byte and the high nibble of the second.
__attribute__((target("ssse3"))) inline __m128i Byte1HighTable() {
  return Table(kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTwoConts, kTwoConts,
               kTwoConts, kTwoConts, kTooShort | kOverlong2, kTooShort, kTooShort | kOverlong3 | kSurrogate,
               kTooShort | kTooLarge | kTooLarge1000 | kOverlong4);
}
__attribute__((target("ssse3"))) inline __m128i Byte1LowTable() {
  const std::uint8_t large = kCarry | kTooLarge | kTooLarge1000;
  return Table(kCarry | kOverlong3 | kOverlong2 | kOverlong4, kCarry | kOverlong2, kCarry, kCarry, kCarry | kTooLarge,
               large, large, large, large, large, large, large, large, large | kSurrogate, large, large);
}
__attribute__((target("ssse3"))) inline __m128i Byte2HighTable() {
  const std::uint8_t cont = kTooLong | kOverlong2 | kTwoConts;
  return Table(kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort,
               cont | kOverlong3 | kTooLarge1000 | kOverlong4, cont | kOverlong3 | kTooLarge,
               cont | kSurrogate | kTooLarge, cont | kSurrogate | kTooLarge, kTooShort, kTooShort, kTooShort, kTooShort);
}

// The error bits of one block, given the block before it.
__attribute__((target("ssse3"))) inline __m128i BlockErrors(__m128i input, __m128i previous) {
  const __m128i prev1 = _mm_alignr_epi8(input, previous, 15);
  const __m128i byte1High = _mm_shuffle_epi8(Byte1HighTable(), Nibbles(prev1));
  const __m128i byte1Low = _mm_shuffle_epi8(Byte1LowTable(), _mm_and_si128(prev1, _mm_set1_epi8(0x0F)));
  const __m128i byte2High = _mm_shuffle_epi8(Byte2HighTable(), Nibbles(input));
  const __m128i special = _mm_and_si128(_mm_and_si128(byte1High, byte1Low), byte2High);
  // Where a third or fourth byte of a sequence must stand.
  const __m128i prev2 = _mm_alignr_epi8(input, previous, 14);
  const __m128i prev3 = _mm_alignr_epi8(input, previous, 13);
  const __m128i third = _mm_subs_epu8(prev2, _mm_set1_epi8(static_cast<char>(0xE0 - 0x80)));
  const __m128i fourth = _mm_subs_epu8(prev3, _mm_set1_epi8(static_cast<char>(0xF0 - 0x80)));
  const __m128i must = _mm_and_si128(_mm_or_si128(third, fourth), _mm_set1_epi8(static_cast<char>(0x80)));
  return _mm_xor_si128(must, special);
}

__attribute__((target("ssse3"))) bool IsWellFormedSsse3(const unsigned char* p, std::size_t size) {
  __m128i previous = _mm_setzero_si128();
  __m128i errors = _mm_setzero_si128();
  std::size_t i = 0;
  // Without a test for ASCII blocks: in mixed text that branch goes the
  // wrong way too often to pay.
  for (; i + 16 <= size; i += 16) {
    const __m128i input = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    errors = _mm_or_si128(errors, BlockErrors(input, previous));
    previous = input;
  }
  // The rest, padded with NULs (ASCII): a sequence cut by the end of the
  // text shows as one cut by the padding.
  alignas(16) unsigned char tail[16] = {};
  std::memcpy(tail, p + i, size - i);
  const __m128i input = _mm_load_si128(reinterpret_cast<const __m128i*>(tail));
  errors = _mm_or_si128(errors, BlockErrors(input, previous));
  return _mm_movemask_epi8(_mm_cmpeq_epi8(errors, _mm_setzero_si128())) == 0xFFFF;
}

// The same on 32 bytes at a time: the byte shuffles work within each
// 16-byte lane, so the tables are repeated, and the previous bytes of the
// upper lane come from the lower lane of the same block.
__attribute__((target("avx2"))) inline __m256i Table2(__m128i table) { return _mm256_broadcastsi128_si256(table); }

__attribute__((target("avx2"))) inline __m256i Nibbles2(__m256i v) {
  return _mm256_and_si256(_mm256_srli_epi16(v, 4), _mm256_set1_epi8(0x0F));
}

__attribute__((target("avx2"))) inline __m256i BlockErrors2(__m256i input, __m256i previous, __m256i t1High,
                                                            __m256i t1Low, __m256i t2High) {
  const __m256i shifted = _mm256_permute2x128_si256(previous, input, 0x21);
  const __m256i prev1 = _mm256_alignr_epi8(input, shifted, 15);
  const __m256i special = _mm256_and_si256(
      _mm256_and_si256(_mm256_shuffle_epi8(t1High, Nibbles2(prev1)),
                       _mm256_shuffle_epi8(t1Low, _mm256_and_si256(prev1, _mm256_set1_epi8(0x0F)))),
      _mm256_shuffle_epi8(t2High, Nibbles2(input)));
  const __m256i prev2 = _mm256_alignr_epi8(input, shifted, 14);
  const __m256i prev3 = _mm256_alignr_epi8(input, shifted, 13);
  const __m256i third = _mm256_subs_epu8(prev2, _mm256_set1_epi8(static_cast<char>(0xE0 - 0x80)));
  const __m256i fourth = _mm256_subs_epu8(prev3, _mm256_set1_epi8(static_cast<char>(0xF0 - 0x80)));
  const __m256i must = _mm256_and_si256(_mm256_or_si256(third, fourth), _mm256_set1_epi8(static_cast<char>(0x80)));
  return _mm256_xor_si256(must, special);
}

__attribute__((target("avx2"))) bool IsWellFormedAvx2(const unsigned char* p, std::size_t size) {
  const __m256i t1High = Table2(Byte1HighTable()), t1Low = Table2(Byte1LowTable()), t2High = Table2(Byte2HighTable());
  __m256i previous = _mm256_setzero_si256();
  __m256i errors = _mm256_setzero_si256();
  std::size_t i = 0;
  for (; i + 32 <= size; i += 32) {
    const __m256i input = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
    errors = _mm256_or_si256(errors, BlockErrors2(input, previous, t1High, t1Low, t2High));
    previous = input;
  }
  alignas(32) unsigned char tail[32] = {};
  std::memcpy(tail, p + i, size - i);
  const __m256i input = _mm256_load_si256(reinterpret_cast<const __m256i*>(tail));
  errors = _mm256_or_si256(errors, BlockErrors2(input, previous, t1High, t1Low, t2High));
  return _mm256_testz_si256(errors, errors) != 0;
}

#endif

}  // namespace

bool IsWellFormedUtf8(const char* text, std::size_t size) {
  if (size == 0) return true;  // text may be null then
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
#ifdef ZU_UTF8_SSSE3
  switch (VectorLevel()) {
    case kAvx2: return IsWellFormedAvx2(p, size);
    case kSsse3: return IsWellFormedSsse3(p, size);
    case kScalar: break;
  }
#endif
  return IsWellFormedScalar(p, p + size);
}

}  // namespace FXTextFile
