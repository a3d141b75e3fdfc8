// Base64 against OpenSSL's EVP_EncodeBlock/EVP_DecodeBlock (both sides write
// into a caller's buffer) and Ascii85 against a straightforward loop kept
// here (both sides allocate the encoded text, decode into a buffer).
// Throughput is counted in binary bytes for encoding and decoding alike.
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include "text/Ascii85.h"
#include "text/ZuBase64.h"

namespace {

std::string RandomBytes(std::size_t n) {
  std::mt19937 random(2);
  std::string bytes(n, '\0');
  for (auto& b : bytes) b = static_cast<char>(random());
  return bytes;
}

void Count(benchmark::State& state, std::size_t size) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(size));
}

// ---- Base64 ----

void Base64EncodeOurs(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  std::vector<char> out(data.size() * 4 / 3 + 8);
  for (auto _ : state)
    benchmark::DoNotOptimize(ZuBase64::Encode(data.data(), static_cast<int>(data.size()), out.data(), out.size()));
  Count(state, data.size());
}

void Base64EncodeOpenSsl(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  std::vector<unsigned char> out(data.size() * 4 / 3 + 8);
  for (auto _ : state)
    benchmark::DoNotOptimize(EVP_EncodeBlock(out.data(), reinterpret_cast<const unsigned char*>(data.data()),
                                             static_cast<int>(data.size())));
  Count(state, data.size());
}

void Base64DecodeOurs(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  const std::string text = ZuBase64::Encode(data);
  std::vector<char> out(data.size() + 8);
  for (auto _ : state)
    benchmark::DoNotOptimize(ZuBase64::Decode(text.data(), static_cast<int>(text.size()), out.data(), out.size()));
  Count(state, data.size());
}

void Base64DecodeOpenSsl(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  const std::string text = ZuBase64::Encode(data);
  std::vector<unsigned char> out(data.size() + 8);
  for (auto _ : state)
    benchmark::DoNotOptimize(EVP_DecodeBlock(out.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                             static_cast<int>(text.size())));
  Count(state, data.size());
}

// ---- Ascii85 ----

// The textbook encoder: one group at a time, appended to a string.
std::string ReferenceAscii85Encode(const unsigned char* p, std::size_t n) {
  std::string out = "<~";
  for (std::size_t i = 0; i < n; i += 4) {
    const std::size_t k = n - i < 4 ? n - i : 4;
    std::uint32_t v = 0;
    for (std::size_t j = 0; j < 4; ++j) v = v << 8 | (j < k ? p[i + j] : 0u);
    if (k == 4 && v == 0) {
      out += 'z';
      continue;
    }
    char digits[5];
    for (int j = 4; j >= 0; --j, v /= 85) digits[j] = static_cast<char>(v % 85 + '!');
    out.append(digits, k + 1);
  }
  out += "~>";
  return out;
}

// The textbook decoder: one character at a time; no error texts, -1 on
// any fault, else the number of bytes.
long ReferenceAscii85Decode(const std::string& text, unsigned char* out, std::size_t capacity) {
  if (text.size() < 4 || text[0] != '<' || text[1] != '~') return -1;
  std::size_t written = 0;
  std::uint32_t v = 0;
  int digits = 0;
  for (std::size_t i = 2; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == ' ' || c == '\n' || c == '\r' || c == '\t') continue;
    if (c == '~') {
      if (digits == 1) return -1;
      if (digits > 1) {
        for (int j = digits; j < 5; ++j) v = v * 85 + 84;
        for (int j = 0; j < digits - 1; ++j) out[written++] = static_cast<unsigned char>(v >> (24 - 8 * j));
      }
      return static_cast<long>(written);
    }
    if (c == 'z' && digits == 0) {
      if (capacity - written < 4) return -1;
      for (int j = 0; j < 4; ++j) out[written++] = 0;
      continue;
    }
    if (c < '!' || c > 'u') return -1;
    v = v * 85 + (c - '!');
    if (++digits == 5) {
      if (capacity - written < 4) return -1;
      for (int j = 0; j < 4; ++j) out[written++] = static_cast<unsigned char>(v >> (24 - 8 * j));
      v = 0;
      digits = 0;
    }
  }
  return -1;
}

void Ascii85EncodeOurs(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::string text;
    benchmark::DoNotOptimize(CAscii85::Encode(data.data(), data.size(), text).IsError());
    benchmark::DoNotOptimize(text.data());
  }
  Count(state, data.size());
}

void Ascii85EncodeReference(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::string text = ReferenceAscii85Encode(reinterpret_cast<const unsigned char*>(data.data()), data.size());
    benchmark::DoNotOptimize(text.data());
  }
  Count(state, data.size());
}

void Ascii85DecodeOurs(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  std::string text;
  CAscii85::Encode(data.data(), data.size(), text);
  std::vector<char> out(data.size() + 8);
  for (auto _ : state) {
    std::size_t length = out.size();
    benchmark::DoNotOptimize(CAscii85::Decode(text, out.data(), length).IsError());
  }
  Count(state, data.size());
}

void Ascii85DecodeReference(benchmark::State& state) {
  const std::string data = RandomBytes(static_cast<std::size_t>(state.range(0)));
  const std::string text = ReferenceAscii85Encode(reinterpret_cast<const unsigned char*>(data.data()), data.size());
  std::vector<unsigned char> out(data.size() + 8);
  for (auto _ : state) benchmark::DoNotOptimize(ReferenceAscii85Decode(text, out.data(), out.size()));
  Count(state, data.size());
}

// The references must agree with us, or the comparison means nothing.
bool SameResults() {
  const std::string data = RandomBytes(100003) + std::string(8, '\0');
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
  std::string text;
  CAscii85::Encode(data.data(), data.size(), text);
  std::vector<unsigned char> decoded(data.size() + 8);
  const long n = ReferenceAscii85Decode(text, decoded.data(), decoded.size());

  const std::string base64 = ZuBase64::Encode(data);
  std::vector<unsigned char> openssl(base64.size() + 8);
  const int encoded = EVP_EncodeBlock(openssl.data(), bytes, static_cast<int>(data.size()));
  return text == ReferenceAscii85Encode(bytes, data.size()) && n == static_cast<long>(data.size()) &&
         std::string(decoded.begin(), decoded.begin() + n) == data &&
         base64 == std::string(openssl.begin(), openssl.begin() + encoded);
}

void Register(const char* name, void (*run)(benchmark::State&)) {
  benchmark::RegisterBenchmark(name, run)->Arg(1 << 10)->Arg(1 << 20);
}

const bool kRegistered = [] {
  if (!SameResults()) {
    benchmark::RegisterBenchmark("codecs/mismatch", [](benchmark::State& state) {
      state.SkipWithError("a reference encodes or decodes differently from us");
      for (auto _ : state) {
      }
    });
    return false;
  }
  Register("base64_encode/ours", Base64EncodeOurs);
  Register("base64_encode/openssl", Base64EncodeOpenSsl);
  Register("base64_decode/ours", Base64DecodeOurs);
  Register("base64_decode/openssl", Base64DecodeOpenSsl);
  Register("ascii85_encode/ours", Ascii85EncodeOurs);
  Register("ascii85_encode/reference", Ascii85EncodeReference);
  Register("ascii85_decode/ours", Ascii85DecodeOurs);
  Register("ascii85_decode/reference", Ascii85DecodeReference);
  return true;
}();

}  // namespace
