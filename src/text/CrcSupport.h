// What CZuCRC32 and CZuCRC64 share: the self-test text, little-endian loads,
// the processor check for the carry-less multiplication paths and the
// dispatch between them and slicing-by-8.
#pragma once

#include <cstddef>
#include <cstdint>

// The carry-less folding is x86-64 code (PCLMULQDQ and SSSE3 intrinsics, the
// compiler's processor check); every other target, and a build that asks
// for the portable routines (ZU_PORTABLE), compiles slicing-by-8 only.
#if !defined(ZU_PORTABLE) && (defined(__x86_64__) || defined(_M_X64)) && defined(__GNUC__)
#define ZU_CRC_CARRYLESS 1
#else
#define ZU_CRC_CARRYLESS 0
#endif

namespace FXCrcSupport {

// CheckWordByWord runs the fast routines over the first 128 bytes.
constexpr char kSelfTestText[] =
    "1234567890123456789012345123456789012345678901234512345678901234567890123451234567890123456789012345"
    "678901234567890123456789012345678901234567890123451234567890123456789012345123456789012345678901234"
    "512345678901234567890123456789012345678901234567890";
constexpr unsigned int kSelfTestLength = 128;
static_assert(sizeof(kSelfTestText) - 1 == 250, "the self-test text is 250 characters long");

// Byte by byte, so the result is right on any host; compilers emit one load.
inline std::uint32_t Load32LE(const unsigned char* p) {
  return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 | std::uint32_t(p[3]) << 24;
}
inline std::uint64_t Load64BE(const unsigned char* p) {
  std::uint64_t value = 0;
  for (int i = 0; i < 8; ++i) value = value << 8 | p[i];
  return value;
}

#if ZU_CRC_CARRYLESS
// PCLMULQDQ and SSSE3 (byte shuffles), asked once per process; the
// initialisation of a function-local static is thread-safe.
inline bool HasCarrylessMultiply() {
  static const bool has = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3");
  }();
  return has;
}

// The fastest routine for a buffer: carry-less folding over its whole
// 16-byte blocks when it is long enough and the processor has the
// instructions, slicing-by-8 for the rest.
template <class Register, Register (*Folded)(Register, const unsigned char*, std::size_t),
          Register (*Sliced)(Register, const unsigned char*, std::size_t)>
Register UpdateFastest(Register crc, const unsigned char* p, std::size_t n) {
  if (n >= 64 && HasCarrylessMultiply()) {
    const std::size_t folded = n & ~std::size_t(15);
    crc = Folded(crc, p, folded);
    p += folded;
    n -= folded;
  }
  return Sliced(crc, p, n);
}
#endif

}  // namespace FXCrcSupport
