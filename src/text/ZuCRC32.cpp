#include "text/ZuCRC32.h"

#include <cstddef>

#include "text/CrcSupport.h"

#if ZU_CRC_CARRYLESS
#include <immintrin.h>
#endif

namespace {

using FXCrcSupport::Load32LE;

constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320u;

// Table k gives the register contribution of a byte followed by k zero
// bytes; table 0 is the classic byte table. Built by the compiler, so no
// thread ever sees them half-written.
struct TTables {
  std::uint32_t t[8][256];
};

constexpr TTables MakeTables() {
  TTables tables{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t c = i;
    for (int bit = 0; bit < 8; ++bit) c = (c & 1) ? (c >> 1) ^ kReflectedPolynomial : c >> 1;
    tables.t[0][i] = c;
  }
  for (int k = 1; k < 8; ++k)
    for (int i = 0; i < 256; ++i)
      tables.t[k][i] = (tables.t[k - 1][i] >> 8) ^ tables.t[0][tables.t[k - 1][i] & 0xFF];
  return tables;
}

constexpr TTables kTables = MakeTables();
static_assert(kTables.t[0][1] == 0x77073096u, "standard CRC-32 byte table");

std::uint32_t UpdateBytes(std::uint32_t crc, const unsigned char* p, std::size_t n) {
  for (; n != 0; --n) crc = (crc >> 8) ^ kTables.t[0][(crc ^ *p++) & 0xFF];
  return crc;
}

std::uint32_t UpdateSlicing8(std::uint32_t crc, const unsigned char* p, std::size_t n) {
  const auto& t = kTables.t;
  for (; n >= 8; n -= 8, p += 8) {
    const std::uint32_t lo = Load32LE(p) ^ crc;
    const std::uint32_t hi = Load32LE(p + 4);
    crc = t[7][lo & 0xFF] ^ t[6][(lo >> 8) & 0xFF] ^ t[5][(lo >> 16) & 0xFF] ^ t[4][lo >> 24] ^ t[3][hi & 0xFF] ^
          t[2][(hi >> 8) & 0xFF] ^ t[1][(hi >> 16) & 0xFF] ^ t[0][hi >> 24];
  }
  return UpdateBytes(crc, p, n);
}

#if ZU_CRC_CARRYLESS
// ---- Folding with carry-less multiplication ----
//
// A 128-bit little-endian load holds 128 message bits in reflected order:
// bit j is the coefficient of x^(127-j). The carry-less product of two
// reflected 64-bit operands is the reflected 128-bit product times x, so
// the constants below are one power of x short. Folding a block F bits
// forward replaces its high half H and low half L (in message order: the
// register's low and high qwords) by H * x^(F+64) + L * x^F, congruent
// modulo the polynomial and at most 96 bits wide; the result lines up with
// the block F bits later and is XORed into it.

constexpr std::uint32_t kPolynomial = 0x04C11DB7u;

// x^exponent modulo the polynomial, as the reflected 64-bit operand.
constexpr std::uint64_t FoldConstant(unsigned exponent) {
  std::uint32_t r = 1;
  for (unsigned i = 0; i < exponent; ++i) r = (r & 0x80000000u) ? (r << 1) ^ kPolynomial : r << 1;
  std::uint64_t reflected = 0;
  for (int i = 0; i < 32; ++i)
    if ((r >> i) & 1) reflected |= std::uint64_t(1) << (63 - i);
  return reflected;
}

// {low qword: for H, high qword: for L} of a fold by `bits`.
constexpr std::uint64_t kFold512High = FoldConstant(512 + 63), kFold512Low = FoldConstant(512 - 1);
constexpr std::uint64_t kFold128High = FoldConstant(128 + 63), kFold128Low = FoldConstant(128 - 1);

__attribute__((target("pclmul,ssse3"))) inline __m128i Fold(__m128i block, __m128i constants, __m128i next) {
  const __m128i high = _mm_clmulepi64_si128(block, constants, 0x00);
  const __m128i low = _mm_clmulepi64_si128(block, constants, 0x11);
  return _mm_xor_si128(_mm_xor_si128(high, low), next);
}

__attribute__((target("pclmul,ssse3"))) inline __m128i Load(const unsigned char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// n >= 64 and a multiple of 16. Four independent lanes 64 bytes apart hide
// the multiplier's latency; they are folded into one at the end, and the
// last 128 bits are reduced by the table routine from a zero register.
__attribute__((target("pclmul,ssse3"))) std::uint32_t UpdateCarryless(std::uint32_t crc, const unsigned char* p,
                                                                       std::size_t n) {
  // The register is the first 32 message bits' contribution: XOR it in.
  __m128i x0 = _mm_xor_si128(Load(p), _mm_cvtsi32_si128(static_cast<int>(crc)));
  __m128i x1 = Load(p + 16), x2 = Load(p + 32), x3 = Load(p + 48);
  p += 64;
  n -= 64;
  const __m128i k512 = _mm_set_epi64x(static_cast<long long>(kFold512Low), static_cast<long long>(kFold512High));
  for (; n >= 64; n -= 64, p += 64) {
    x0 = Fold(x0, k512, Load(p));
    x1 = Fold(x1, k512, Load(p + 16));
    x2 = Fold(x2, k512, Load(p + 32));
    x3 = Fold(x3, k512, Load(p + 48));
  }
  const __m128i k128 = _mm_set_epi64x(static_cast<long long>(kFold128Low), static_cast<long long>(kFold128High));
  __m128i x = Fold(Fold(Fold(x0, k128, x1), k128, x2), k128, x3);
  for (; n >= 16; n -= 16, p += 16) x = Fold(x, k128, Load(p));

  alignas(16) unsigned char rest[16];
  _mm_store_si128(reinterpret_cast<__m128i*>(rest), x);
  return UpdateSlicing8(0, rest, sizeof rest);
}

std::uint32_t Update(std::uint32_t crc, const unsigned char* p, std::size_t n) {
  return FXCrcSupport::UpdateFastest<std::uint32_t, UpdateCarryless, UpdateSlicing8>(crc, p, n);
}
#else
std::uint32_t Update(std::uint32_t crc, const unsigned char* p, std::size_t n) { return UpdateSlicing8(crc, p, n); }
#endif

}  // namespace

void CZuCRC32::UpdateCRC32(const unsigned char* data, unsigned int length) {
  if (data != nullptr) m_register = Update(m_register, data, length);
}

void CZuCRC32::UpdateCRC32_slicing8(const unsigned char* data, unsigned int length) {
  if (data != nullptr) m_register = UpdateSlicing8(m_register, data, length);
}

void CZuCRC32::UpdateCRC32_old(const unsigned char* data, unsigned int length) {
  if (data != nullptr) m_register = UpdateBytes(m_register, data, length);
}

bool CZuCRC32::CheckWordByWord() {
  const auto* text = reinterpret_cast<const unsigned char*>(FXCrcSupport::kSelfTestText);
  const std::uint32_t expected = 0x82E55734u;
  return ~UpdateSlicing8(0xFFFFFFFFu, text, FXCrcSupport::kSelfTestLength) == expected &&
         ~Update(0xFFFFFFFFu, text, FXCrcSupport::kSelfTestLength) == expected;
}
