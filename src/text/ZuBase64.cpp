#include "text/ZuBase64.h"

#include <climits>
#include <cstdint>
#include <cstring>

namespace {

constexpr char kStandard[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kUrl[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

// Every 12-bit value as its two characters: one lookup per two characters.
struct TAlphabet {
  char single[64];
  char pairs[4096][2];
  bool pad;
};

constexpr TAlphabet MakeAlphabet(const char (&characters)[65], bool pad) {
  TAlphabet a{};
  for (int i = 0; i < 64; ++i) a.single[i] = characters[i];
  for (int i = 0; i < 4096; ++i) {
    a.pairs[i][0] = characters[i >> 6];
    a.pairs[i][1] = characters[i & 63];
  }
  a.pad = pad;
  return a;
}

constexpr TAlphabet kStandardAlphabet = MakeAlphabet(kStandard, true);
constexpr TAlphabet kUrlAlphabet = MakeAlphabet(kUrl, false);

std::size_t EncodedLength(std::size_t n, bool pad) {
  const std::size_t rest = n % 3;
  return n / 3 * 4 + (rest == 0 ? 0 : pad ? 4 : rest + 1);
}

std::size_t EncodeInto(const unsigned char* in, std::size_t n, char* out, const TAlphabet& a) {
  char* o = out;
  for (; n >= 3; n -= 3, in += 3, o += 4) {
    const std::uint32_t v = std::uint32_t(in[0]) << 16 | std::uint32_t(in[1]) << 8 | in[2];
    std::memcpy(o, a.pairs[v >> 12], 2);
    std::memcpy(o + 2, a.pairs[v & 0xFFF], 2);
  }
  if (n != 0) {
    const std::uint32_t v = std::uint32_t(in[0]) << 16 | (n == 2 ? std::uint32_t(in[1]) << 8 : 0);
    *o++ = a.single[v >> 18];
    *o++ = a.single[(v >> 12) & 63];
    if (n == 2) *o++ = a.single[(v >> 6) & 63];
    if (a.pad) {
      if (n == 1) *o++ = '=';
      *o++ = '=';
    }
  }
  return static_cast<std::size_t>(o - out);
}

std::string EncodeString(const char* data, std::size_t length, const TAlphabet& a) {
  if (data == nullptr) length = 0;
  std::string out(EncodedLength(length, a.pad), '\0');
  EncodeInto(reinterpret_cast<const unsigned char*>(data), length, &out[0], a);
  return out;
}

// One table per position in a group, the value already shifted into
// place, so a group is four lookups ORed together; kInvalid survives the
// OR, so one test covers all four characters. '+' and '-' are 62, '/' and
// '_' 63: both alphabets decode through the same tables.
constexpr std::uint32_t kInvalid = 0x01000000u;

// The fast decoding loop stores byte-swapped words.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "little-endian hosts only");

struct TDecodeTables {
  std::uint32_t shifted[4][256];
};

constexpr TDecodeTables MakeDecodeTables() {
  TDecodeTables t{};
  for (int c = 0; c < 256; ++c)
    for (int k = 0; k < 4; ++k) t.shifted[k][c] = kInvalid;
  for (int i = 0; i < 64; ++i)
    for (int k = 0; k < 4; ++k) {
      const int shift = 18 - 6 * k;
      t.shifted[k][static_cast<unsigned char>(kStandard[i])] = std::uint32_t(i) << shift;
      t.shifted[k][static_cast<unsigned char>(kUrl[i])] = std::uint32_t(i) << shift;
    }
  return t;
}

constexpr TDecodeTables kDecode = MakeDecodeTables();

// The most bytes `n` characters can give.
std::size_t DecodeBound(std::size_t n) { return n / 4 * 3 + 2; }

// Decodes into `out` (room for `capacity` bytes): the number of bytes, or
// -1 for invalid text or a result larger than `capacity`.
std::ptrdiff_t DecodeInto(const unsigned char* in, std::size_t n, unsigned char* out, std::size_t capacity) {
  while (n != 0 && (in[n - 1] == '\n' || in[n - 1] == '=')) --n;
  const auto& t = kDecode.shifted;
  const unsigned char* p = in;
  const unsigned char* const end = in + n;
  unsigned char* o = out;
  unsigned char* const outEnd = out + capacity;
  // Two groups per step while there is room to store eight bytes at once
  // (the bytes beyond the result are rewritten by the next step or lie past
  // the end). No store reaches past the characters already read, so the
  // text may be decoded in place.
  while (end - p >= 8 && outEnd - o >= 8) {
    const std::uint32_t first = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
    if (p[4] == '\n') {
      if (first & kInvalid) return -1;
      const std::uint32_t bytes = __builtin_bswap32(first << 8);
      std::memcpy(o, &bytes, 4);
      o += 3;
      p += 5;
      continue;
    }
    const std::uint32_t second = t[0][p[4]] | t[1][p[5]] | t[2][p[6]] | t[3][p[7]];
    if ((first | second) & kInvalid) return -1;
    const std::uint64_t bytes = __builtin_bswap64(std::uint64_t(first) << 40 | std::uint64_t(second) << 16);
    std::memcpy(o, &bytes, 8);
    o += 6;
    p += 8;
    if (p != end && *p == '\n') ++p;
  }
  while (end - p >= 4) {
    if (outEnd - o < 3) return -1;
    const std::uint32_t v = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
    if (v & kInvalid) return -1;
    o[0] = static_cast<unsigned char>(v >> 16);
    o[1] = static_cast<unsigned char>(v >> 8);
    o[2] = static_cast<unsigned char>(v);
    o += 3;
    p += 4;
    if (p != end && *p == '\n') ++p;
  }
  const std::ptrdiff_t rest = end - p;
  if (rest == 1) return -1;
  if (rest >= 2) {
    const std::uint32_t v = t[0][p[0]] | t[1][p[1]] | (rest == 3 ? t[2][p[2]] : 0);
    if ((v & kInvalid) || outEnd - o < rest - 1) return -1;
    *o++ = static_cast<unsigned char>(v >> 16);
    if (rest == 3) *o++ = static_cast<unsigned char>(v >> 8);
  }
  return o - out;
}

template <class Container>
void DecodeTo(const char* text, std::size_t length, Container& out) {
  if (text == nullptr) length = 0;
  out.resize(DecodeBound(length));
  const std::ptrdiff_t n =
      DecodeInto(reinterpret_cast<const unsigned char*>(text), length, reinterpret_cast<unsigned char*>(&out[0]),
                 out.size());
  out.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
}

// The arguments of the C-style forms that allow a result at all.
bool UsableBuffers(const char* in, int length, const char* out, std::size_t outSize) {
  return out != nullptr && outSize != 0 && length >= 0 && (in != nullptr || length == 0);
}

// -1, leaving an empty string where there is room for one.
int Fail(char* out, std::size_t outSize) {
  if (out != nullptr && outSize != 0) out[0] = '\0';
  return -1;
}

}  // namespace

std::string ZuBase64::Encode(const std::string& data) { return EncodeString(data.data(), data.size(), kStandardAlphabet); }
std::string ZuBase64::Encode(const char* data, std::size_t length) {
  return EncodeString(data, length, kStandardAlphabet);
}
std::string ZuBase64::Encode_url(const std::string& data) { return EncodeString(data.data(), data.size(), kUrlAlphabet); }
std::string ZuBase64::Encode_url(const char* data, std::size_t length) {
  return EncodeString(data, length, kUrlAlphabet);
}

std::string ZuBase64::Decode(const std::string& text) { return Decode(text.data(), text.size()); }
std::string ZuBase64::Decode(const char* text, std::size_t length) {
  std::string out;
  DecodeTo(text, length, out);
  return out;
}
void ZuBase64::Decode(const std::string& text, std::vector<unsigned char>& out) {
  DecodeTo(text.data(), text.size(), out);
}
void ZuBase64::Decode(const char* text, std::size_t length, std::vector<unsigned char>& out) {
  DecodeTo(text, length, out);
}

int ZuBase64::Encode(const char* data, int length, char* out, std::size_t outSize) {
  if (!UsableBuffers(data, length, out, outSize)) return Fail(out, outSize);
  const std::size_t n = EncodedLength(static_cast<std::size_t>(length), true);
  if (n >= outSize || n > INT_MAX) return Fail(out, outSize);
  EncodeInto(reinterpret_cast<const unsigned char*>(data), static_cast<std::size_t>(length), out, kStandardAlphabet);
  out[n] = '\0';
  return static_cast<int>(n);
}

int ZuBase64::Decode(const char* text, int length, char* out, std::size_t outSize) {
  // The text may lie in `out` itself: each group is read before its bytes
  // are written, and they are fewer.
  if (!UsableBuffers(text, length, out, outSize)) return Fail(out, outSize);
  const std::ptrdiff_t n = DecodeInto(reinterpret_cast<const unsigned char*>(text), static_cast<std::size_t>(length),
                                      reinterpret_cast<unsigned char*>(out), outSize - 1);
  if (n <= 0) return Fail(out, outSize);
  out[n] = '\0';
  return static_cast<int>(n);
}
