#include "text/ZuCRC64.h"

#include <cstddef>

#include "text/CrcSupport.h"

#if ZU_CRC_CARRYLESS
#include <immintrin.h>
#endif

namespace {

using FXCrcSupport::Load64BE;

constexpr std::uint64_t kPolynomial = 0x42F0E1EBA9EA3693u;
constexpr std::uint64_t kTopBit = std::uint64_t(1) << 63;

// Table k gives the register contribution of a byte followed by k zero
// bytes; table 0 is the classic byte table. Built by the compiler, so no
// thread ever sees them half-written.
struct TTables {
  std::uint64_t t[8][256];
};

constexpr TTables MakeTables() {
  TTables tables{};
  for (std::uint64_t i = 0; i < 256; ++i) {
    std::uint64_t c = i << 56;
    for (int bit = 0; bit < 8; ++bit) c = (c & kTopBit) ? (c << 1) ^ kPolynomial : c << 1;
    tables.t[0][i] = c;
  }
  for (int k = 1; k < 8; ++k)
    for (int i = 0; i < 256; ++i)
      tables.t[k][i] = (tables.t[k - 1][i] << 8) ^ tables.t[0][tables.t[k - 1][i] >> 56];
  return tables;
}

constexpr TTables kTables = MakeTables();
static_assert(kTables.t[0][1] == kPolynomial, "standard CRC-64/ECMA-182 byte table");

std::uint64_t UpdateBytes(std::uint64_t crc, const unsigned char* p, std::size_t n) {
  for (; n != 0; --n) crc = (crc << 8) ^ kTables.t[0][(crc >> 56) ^ *p++];
  return crc;
}

// Not reflected: the eight bytes are read most significant first, so that
// the register's top byte meets the first of them.
std::uint64_t UpdateSlicing8(std::uint64_t crc, const unsigned char* p, std::size_t n) {
  const auto& t = kTables.t;
  for (; n >= 8; n -= 8, p += 8) {
    const std::uint64_t v = Load64BE(p) ^ crc;
    crc = t[7][v >> 56] ^ t[6][(v >> 48) & 0xFF] ^ t[5][(v >> 40) & 0xFF] ^ t[4][(v >> 32) & 0xFF] ^
          t[3][(v >> 24) & 0xFF] ^ t[2][(v >> 16) & 0xFF] ^ t[1][(v >> 8) & 0xFF] ^ t[0][v & 0xFF];
  }
  return UpdateBytes(crc, p, n);
}

#if ZU_CRC_CARRYLESS
// ---- Folding with carry-less multiplication ----
//
// Each 16-byte block is byte-swapped so that bit j of the 128-bit value is
// the coefficient of x^j; carry-less products are then plain polynomial
// products. Folding a block F bits forward replaces its high half H and low
// half L by H * x^(F+64) + L * x^F (both reduced modulo the polynomial),
// which is congruent, at most 127 bits wide, lines up with the block F bits
// later and is XORed into it.

// x^exponent modulo the polynomial.
constexpr std::uint64_t FoldConstant(unsigned exponent) {
  std::uint64_t r = 1;
  for (unsigned i = 0; i < exponent; ++i) r = (r & kTopBit) ? (r << 1) ^ kPolynomial : r << 1;
  return r;
}

constexpr std::uint64_t kFold512High = FoldConstant(512 + 64), kFold512Low = FoldConstant(512);
constexpr std::uint64_t kFold128High = FoldConstant(128 + 64), kFold128Low = FoldConstant(128);

__attribute__((target("pclmul,ssse3"))) inline __m128i Fold(__m128i block, __m128i constants, __m128i next) {
  const __m128i low = _mm_clmulepi64_si128(block, constants, 0x00);
  const __m128i high = _mm_clmulepi64_si128(block, constants, 0x11);
  return _mm_xor_si128(_mm_xor_si128(high, low), next);
}

__attribute__((target("pclmul,ssse3"))) inline __m128i ByteSwap(__m128i v) {
  return _mm_shuffle_epi8(v, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

__attribute__((target("pclmul,ssse3"))) inline __m128i Load(const unsigned char* p) {
  return ByteSwap(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

// n >= 64 and a multiple of 16. Four independent lanes 64 bytes apart hide
// the multiplier's latency; they are folded into one at the end, and the
// last 128 bits are reduced by the table routine from a zero register.
__attribute__((target("pclmul,ssse3"))) std::uint64_t UpdateCarryless(std::uint64_t crc, const unsigned char* p,
                                                                       std::size_t n) {
  // The register is the first 64 message bits' contribution: XOR it in.
  __m128i x0 = _mm_xor_si128(Load(p), _mm_set_epi64x(static_cast<long long>(crc), 0));
  __m128i x1 = Load(p + 16), x2 = Load(p + 32), x3 = Load(p + 48);
  p += 64;
  n -= 64;
  const __m128i k512 = _mm_set_epi64x(static_cast<long long>(kFold512High), static_cast<long long>(kFold512Low));
  for (; n >= 64; n -= 64, p += 64) {
    x0 = Fold(x0, k512, Load(p));
    x1 = Fold(x1, k512, Load(p + 16));
    x2 = Fold(x2, k512, Load(p + 32));
    x3 = Fold(x3, k512, Load(p + 48));
  }
  const __m128i k128 = _mm_set_epi64x(static_cast<long long>(kFold128High), static_cast<long long>(kFold128Low));
  __m128i x = Fold(Fold(Fold(x0, k128, x1), k128, x2), k128, x3);
  for (; n >= 16; n -= 16, p += 16) x = Fold(x, k128, Load(p));

  alignas(16) unsigned char rest[16];
  _mm_store_si128(reinterpret_cast<__m128i*>(rest), ByteSwap(x));
  return UpdateSlicing8(0, rest, sizeof rest);
}

std::uint64_t Update(std::uint64_t crc, const unsigned char* p, std::size_t n) {
  return FXCrcSupport::UpdateFastest<std::uint64_t, UpdateCarryless, UpdateSlicing8>(crc, p, n);
}
#else
std::uint64_t Update(std::uint64_t crc, const unsigned char* p, std::size_t n) { return UpdateSlicing8(crc, p, n); }
#endif

}  // namespace

void CZuCRC64::UpdateCRC64(const unsigned char* data, unsigned int length) {
  if (data != nullptr) m_register = Update(m_register, data, length);
}

void CZuCRC64::UpdateCRC64_slicing8(const unsigned char* data, unsigned int length) {
  if (data != nullptr) m_register = UpdateSlicing8(m_register, data, length);
}

void CZuCRC64::UpdateCRC64_old(const unsigned char* data, unsigned int length) {
  if (data != nullptr) m_register = UpdateBytes(m_register, data, length);
}

bool CZuCRC64::CheckWordByWord() {
  const auto* text = reinterpret_cast<const unsigned char*>(FXCrcSupport::kSelfTestText);
  const std::uint64_t expected = 0x32FDC6D0926034C8u;
  return ~UpdateSlicing8(~std::uint64_t(0), text, FXCrcSupport::kSelfTestLength) == expected &&
         ~Update(~std::uint64_t(0), text, FXCrcSupport::kSelfTestLength) == expected;
}
