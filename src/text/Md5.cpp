#include "text/Md5.h"

#include <cstring>

namespace {

inline std::uint32_t Rotl(std::uint32_t x, int s) { return (x << s) | (x >> (32 - s)); }

// The four round functions in the forms with the shortest dependency on b:
// F and I select bits, G's two terms are disjoint so they may be added, and
// the message word and constant are added before b is known.
inline void StepF(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t m, int s) {
  a = Rotl(a + m + (d ^ (b & (c ^ d))), s) + b;
}
inline void StepG(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t m, int s) {
  a = Rotl(a + m + (c & ~d) + (b & d), s) + b;
}
inline void StepH(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t m, int s) {
  a = Rotl(a + m + (b ^ c ^ d), s) + b;
}
inline void StepI(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t m, int s) {
  a = Rotl(a + m + (c ^ (b | ~d)), s) + b;
}

inline std::uint32_t Word(const unsigned char* p, int i) {
  p += 4 * i;
  return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 | std::uint32_t(p[3]) << 24;
}

}  // namespace

void CMd5::Start() {
  m_state[0] = 0x67452301u;
  m_state[1] = 0xEFCDAB89u;
  m_state[2] = 0x98BADCFEu;
  m_state[3] = 0x10325476u;
  m_byteCount = 0;
  m_bufferFill = 0;
}

void CMd5::Process(const char* data, unsigned int length) {
  if (data == nullptr || length == 0) return;
  const auto* p = reinterpret_cast<const unsigned char*>(data);
  m_byteCount += length;
  if (m_bufferFill != 0) {
    const unsigned int take = length < 64 - m_bufferFill ? length : 64 - m_bufferFill;
    std::memcpy(m_buffer + m_bufferFill, p, take);
    m_bufferFill += take;
    p += take;
    length -= take;
    if (m_bufferFill < 64) return;
    ProcessBlocks(m_buffer, 1);
    m_bufferFill = 0;
  }
  if (length >= 64) {
    ProcessBlocks(p, length / 64);
    p += length & ~63u;
    length &= 63u;
  }
  std::memcpy(m_buffer, p, length);
  m_bufferFill = length;
}

void CMd5::End() {
  const std::uint64_t bits = m_byteCount * 8;
  m_buffer[m_bufferFill++] = 0x80;
  if (m_bufferFill > 56) {
    std::memset(m_buffer + m_bufferFill, 0, 64 - m_bufferFill);
    ProcessBlocks(m_buffer, 1);
    m_bufferFill = 0;
  }
  std::memset(m_buffer + m_bufferFill, 0, 56 - m_bufferFill);
  for (int i = 0; i < 8; ++i) m_buffer[56 + i] = static_cast<unsigned char>(bits >> (8 * i));
  ProcessBlocks(m_buffer, 1);
  m_bufferFill = 0;
}

void CMd5::GetCode(unsigned char digest[16]) const {
  for (int i = 0; i < 16; ++i) digest[i] = static_cast<unsigned char>(m_state[i / 4] >> (8 * (i % 4)));
}

void CMd5::ProcessBlocks(const unsigned char* blocks, std::uint64_t count) {
  std::uint32_t a = m_state[0], b = m_state[1], c = m_state[2], d = m_state[3];
  for (; count != 0; --count, blocks += 64) {
    const unsigned char* x = blocks;
    const std::uint32_t a0 = a, b0 = b, c0 = c, d0 = d;

    StepF(a, b, c, d, Word(x, 0) + 0xd76aa478u, 7);
    StepF(d, a, b, c, Word(x, 1) + 0xe8c7b756u, 12);
    StepF(c, d, a, b, Word(x, 2) + 0x242070dbu, 17);
    StepF(b, c, d, a, Word(x, 3) + 0xc1bdceeeu, 22);
    StepF(a, b, c, d, Word(x, 4) + 0xf57c0fafu, 7);
    StepF(d, a, b, c, Word(x, 5) + 0x4787c62au, 12);
    StepF(c, d, a, b, Word(x, 6) + 0xa8304613u, 17);
    StepF(b, c, d, a, Word(x, 7) + 0xfd469501u, 22);
    StepF(a, b, c, d, Word(x, 8) + 0x698098d8u, 7);
    StepF(d, a, b, c, Word(x, 9) + 0x8b44f7afu, 12);
    StepF(c, d, a, b, Word(x, 10) + 0xffff5bb1u, 17);
    StepF(b, c, d, a, Word(x, 11) + 0x895cd7beu, 22);
    StepF(a, b, c, d, Word(x, 12) + 0x6b901122u, 7);
    StepF(d, a, b, c, Word(x, 13) + 0xfd987193u, 12);
    StepF(c, d, a, b, Word(x, 14) + 0xa679438eu, 17);
    StepF(b, c, d, a, Word(x, 15) + 0x49b40821u, 22);

    StepG(a, b, c, d, Word(x, 1) + 0xf61e2562u, 5);
    StepG(d, a, b, c, Word(x, 6) + 0xc040b340u, 9);
    StepG(c, d, a, b, Word(x, 11) + 0x265e5a51u, 14);
    StepG(b, c, d, a, Word(x, 0) + 0xe9b6c7aau, 20);
    StepG(a, b, c, d, Word(x, 5) + 0xd62f105du, 5);
    StepG(d, a, b, c, Word(x, 10) + 0x02441453u, 9);
    StepG(c, d, a, b, Word(x, 15) + 0xd8a1e681u, 14);
    StepG(b, c, d, a, Word(x, 4) + 0xe7d3fbc8u, 20);
    StepG(a, b, c, d, Word(x, 9) + 0x21e1cde6u, 5);
    StepG(d, a, b, c, Word(x, 14) + 0xc33707d6u, 9);
    StepG(c, d, a, b, Word(x, 3) + 0xf4d50d87u, 14);
    StepG(b, c, d, a, Word(x, 8) + 0x455a14edu, 20);
    StepG(a, b, c, d, Word(x, 13) + 0xa9e3e905u, 5);
    StepG(d, a, b, c, Word(x, 2) + 0xfcefa3f8u, 9);
    StepG(c, d, a, b, Word(x, 7) + 0x676f02d9u, 14);
    StepG(b, c, d, a, Word(x, 12) + 0x8d2a4c8au, 20);

    StepH(a, b, c, d, Word(x, 5) + 0xfffa3942u, 4);
    StepH(d, a, b, c, Word(x, 8) + 0x8771f681u, 11);
    StepH(c, d, a, b, Word(x, 11) + 0x6d9d6122u, 16);
    StepH(b, c, d, a, Word(x, 14) + 0xfde5380cu, 23);
    StepH(a, b, c, d, Word(x, 1) + 0xa4beea44u, 4);
    StepH(d, a, b, c, Word(x, 4) + 0x4bdecfa9u, 11);
    StepH(c, d, a, b, Word(x, 7) + 0xf6bb4b60u, 16);
    StepH(b, c, d, a, Word(x, 10) + 0xbebfbc70u, 23);
    StepH(a, b, c, d, Word(x, 13) + 0x289b7ec6u, 4);
    StepH(d, a, b, c, Word(x, 0) + 0xeaa127fau, 11);
    StepH(c, d, a, b, Word(x, 3) + 0xd4ef3085u, 16);
    StepH(b, c, d, a, Word(x, 6) + 0x04881d05u, 23);
    StepH(a, b, c, d, Word(x, 9) + 0xd9d4d039u, 4);
    StepH(d, a, b, c, Word(x, 12) + 0xe6db99e5u, 11);
    StepH(c, d, a, b, Word(x, 15) + 0x1fa27cf8u, 16);
    StepH(b, c, d, a, Word(x, 2) + 0xc4ac5665u, 23);

    StepI(a, b, c, d, Word(x, 0) + 0xf4292244u, 6);
    StepI(d, a, b, c, Word(x, 7) + 0x432aff97u, 10);
    StepI(c, d, a, b, Word(x, 14) + 0xab9423a7u, 15);
    StepI(b, c, d, a, Word(x, 5) + 0xfc93a039u, 21);
    StepI(a, b, c, d, Word(x, 12) + 0x655b59c3u, 6);
    StepI(d, a, b, c, Word(x, 3) + 0x8f0ccc92u, 10);
    StepI(c, d, a, b, Word(x, 10) + 0xffeff47du, 15);
    StepI(b, c, d, a, Word(x, 1) + 0x85845dd1u, 21);
    StepI(a, b, c, d, Word(x, 8) + 0x6fa87e4fu, 6);
    StepI(d, a, b, c, Word(x, 15) + 0xfe2ce6e0u, 10);
    StepI(c, d, a, b, Word(x, 6) + 0xa3014314u, 15);
    StepI(b, c, d, a, Word(x, 13) + 0x4e0811a1u, 21);
    StepI(a, b, c, d, Word(x, 4) + 0xf7537e82u, 6);
    StepI(d, a, b, c, Word(x, 11) + 0xbd3af235u, 10);
    StepI(c, d, a, b, Word(x, 2) + 0x2ad7d2bbu, 15);
    StepI(b, c, d, a, Word(x, 9) + 0xeb86d391u, 21);

    a += a0;
    b += b0;
    c += c0;
    d += d0;
  }
  m_state[0] = a;
  m_state[1] = b;
  m_state[2] = c;
  m_state[3] = d;
}
