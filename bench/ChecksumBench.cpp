// CRC-32, CRC-64 and MD5 throughput against the well-known implementations:
// zlib's crc32 and ISA-L's crc32_gzip_refl (the same CRC-32), liblzma's
// lzma_crc64 (the reflected CRC-64/XZ: same work, other values) and ISA-L's
// crc64_ecma_norm (our CRC-64/WE), OpenSSL's EVP MD5. "slicing8" is our
// portable routine, to show what the carry-less multiplication path gains.
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <isa-l/crc.h>
#include <isa-l/crc64.h>
#include <lzma.h>
#include <openssl/evp.h>
#include <zlib.h>

#include "text/Md5.h"
#include "text/ZuCRC32.h"
#include "text/ZuCRC64.h"

namespace {

// 16 MiB of random bytes, the largest size measured.
const unsigned char* Data() {
  static const std::vector<unsigned char> data = [] {
    std::vector<unsigned char> bytes(std::size_t(16) << 20);
    std::mt19937 random(1);
    for (auto& b : bytes) b = static_cast<unsigned char>(random());
    return bytes;
  }();
  return data.data();
}

template <class Checksum>
void Run(benchmark::State& state, Checksum checksum) {
  const std::size_t size = static_cast<std::size_t>(state.range(0));
  const unsigned char* data = Data();
  for (auto _ : state) benchmark::DoNotOptimize(checksum(data, size));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(size));
}

std::uint32_t Crc32Ours(const unsigned char* p, std::size_t n) {
  CZuCRC32 crc;
  crc.UpdateCRC32(p, static_cast<unsigned int>(n));
  return crc.GetCRC32();
}
std::uint32_t Crc32Slicing8(const unsigned char* p, std::size_t n) {
  CZuCRC32 crc;
  crc.UpdateCRC32_slicing8(p, static_cast<unsigned int>(n));
  return crc.GetCRC32();
}
std::uint32_t Crc32Zlib(const unsigned char* p, std::size_t n) {
  return static_cast<std::uint32_t>(crc32(0, p, static_cast<uInt>(n)));
}
std::uint32_t Crc32Isal(const unsigned char* p, std::size_t n) { return crc32_gzip_refl(0, p, n); }

std::uint64_t Crc64Ours(const unsigned char* p, std::size_t n) {
  CZuCRC64 crc;
  crc.UpdateCRC64(p, static_cast<unsigned int>(n));
  return crc.GetCRC64();
}
std::uint64_t Crc64Slicing8(const unsigned char* p, std::size_t n) {
  CZuCRC64 crc;
  crc.UpdateCRC64_slicing8(p, static_cast<unsigned int>(n));
  return crc.GetCRC64();
}
std::uint64_t Crc64Lzma(const unsigned char* p, std::size_t n) { return lzma_crc64(p, n, 0); }
std::uint64_t Crc64Isal(const unsigned char* p, std::size_t n) { return crc64_ecma_norm(0, p, n); }

std::uint32_t Md5Ours(const unsigned char* p, std::size_t n) {
  CMd5 md5;
  md5.Process(reinterpret_cast<const char*>(p), static_cast<unsigned int>(n));
  md5.End();
  unsigned char digest[16];
  md5.GetCode(digest);
  return digest[0];
}
std::uint32_t Md5OpenSsl(const unsigned char* p, std::size_t n) {
  static EVP_MD_CTX* context = EVP_MD_CTX_new();
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  EVP_DigestInit_ex(context, EVP_md5(), nullptr);
  EVP_DigestUpdate(context, p, n);
  EVP_DigestFinal_ex(context, digest, &length);
  return digest[0];
}

// The peers must compute what we compute, or the comparison means nothing.
bool SameResults() {
  const unsigned char* p = Data();
  const std::size_t n = 100003;
  unsigned char ours[16], theirs[EVP_MAX_MD_SIZE];
  CMd5 md5;
  md5.Process(reinterpret_cast<const char*>(p), n);
  md5.End();
  md5.GetCode(ours);
  unsigned int length = 0;
  EVP_Digest(p, n, theirs, &length, EVP_md5(), nullptr);
  return Crc32Ours(p, n) == Crc32Zlib(p, n) && Crc32Ours(p, n) == Crc32Isal(p, n) &&
         Crc32Ours(p, n) == Crc32Slicing8(p, n) && Crc64Ours(p, n) == Crc64Isal(p, n) &&
         Crc64Ours(p, n) == Crc64Slicing8(p, n) && length == 16 && std::memcmp(ours, theirs, 16) == 0;
}

template <class Result>
void Register(const char* name, Result (*checksum)(const unsigned char*, std::size_t)) {
  benchmark::RegisterBenchmark(name, [checksum](benchmark::State& state) { Run(state, checksum); })
      ->Arg(64 << 10)
      ->Arg(16 << 20);
}

const bool kRegistered = [] {
  if (!SameResults()) {
    benchmark::RegisterBenchmark("checksums/mismatch", [](benchmark::State& state) {
      state.SkipWithError("a peer computes another checksum than ours");
      for (auto _ : state) {
      }
    });
    return false;
  }
  Register("crc32/ours", Crc32Ours);
  Register("crc32/zlib", Crc32Zlib);
  Register("crc32/slicing8", Crc32Slicing8);
  Register("crc64/ours", Crc64Ours);
  Register("crc64/liblzma", Crc64Lzma);
  Register("crc64/slicing8", Crc64Slicing8);
  Register("md5/ours", Md5Ours);
  Register("md5/openssl", Md5OpenSsl);
  // ISA-L's AVX-512 routines leave the upper vector state dirty, which
  // halves the speed of every SSE-encoded routine that runs after them in
  // the process (ours and liblzma's alike): they run last.
  Register("crc32/isal", Crc32Isal);
  Register("crc64/isal", Crc64Isal);
  return true;
}();

}  // namespace
