#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "text/Md5.h"
#include "text/ZuCRC32.h"
#include "text/ZuCRC64.h"

namespace {

const char kCheck[] = "123456789";

std::vector<unsigned char> RandomBytes(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<unsigned char> bytes(n);
  for (auto& b : bytes) b = static_cast<unsigned char>(random());
  return bytes;
}

std::string Hex(const unsigned char* bytes, std::size_t n) {
  std::string text;
  char pair[3];
  for (std::size_t i = 0; i < n; ++i) {
    std::snprintf(pair, sizeof pair, "%02x", bytes[i]);
    text += pair;
  }
  return text;
}

struct Md5Sum {
  CMd5 md5;
  void Add(const unsigned char* p, unsigned int n) { md5.Process(reinterpret_cast<const char*>(p), n); }
  std::string Result() {
    md5.End();
    unsigned char digest[16];
    md5.GetCode(digest);
    return Hex(digest, sizeof digest);
  }
};

std::string Md5Hex(const std::string& data) {
  Md5Sum sum;
  sum.Add(reinterpret_cast<const unsigned char*>(data.data()), static_cast<unsigned int>(data.size()));
  return sum.Result();
}

// The routines of each CRC class, so that one set of tests covers both.
template <class Crc>
using Routine = void (Crc::*)(const unsigned char*, unsigned int);

struct Crc32Traits {
  using Crc = CZuCRC32;
  static constexpr Routine<Crc> kFast = &Crc::UpdateCRC32, kSliced = &Crc::UpdateCRC32_slicing8,
                                kOld = &Crc::UpdateCRC32_old;
  static constexpr std::uint64_t kCheckValue = 0xCBF43926u;
  static std::uint64_t Get(const Crc& crc) { return crc.GetCRC32(); }
};
struct Crc64Traits {
  using Crc = CZuCRC64;
  static constexpr Routine<Crc> kFast = &Crc::UpdateCRC64, kSliced = &Crc::UpdateCRC64_slicing8,
                                kOld = &Crc::UpdateCRC64_old;
  static constexpr std::uint64_t kCheckValue = 0x62EC59E3F1A4F00Au;
  static std::uint64_t Get(const Crc& crc) { return crc.GetCRC64(); }
};

template <class Traits>
class CrcTest : public ::testing::Test {};
using CrcTypes = ::testing::Types<Crc32Traits, Crc64Traits>;
TYPED_TEST_SUITE(CrcTest, CrcTypes);

TYPED_TEST(CrcTest, CheckValueWithEveryRoutine) {
  using Crc = typename TypeParam::Crc;
  const auto* check = reinterpret_cast<const unsigned char*>(kCheck);
  for (Routine<Crc> update : {TypeParam::kFast, TypeParam::kSliced, TypeParam::kOld}) {
    Crc whole, bytewise;
    EXPECT_EQ(0u, TypeParam::Get(whole));
    (whole.*update)(check, 9);
    for (int i = 0; i < 9; ++i) (bytewise.*update)(check + i, 1);
    EXPECT_EQ(TypeParam::kCheckValue, TypeParam::Get(whole));
    EXPECT_EQ(TypeParam::kCheckValue, TypeParam::Get(bytewise));  // reading kept the register

    (whole.*update)(nullptr, 5);
    (whole.*update)(check, 0);
    Crc copy = whole;
    (copy.*update)(check, 1);
    EXPECT_EQ(TypeParam::kCheckValue, TypeParam::Get(whole));  // copies are independent
    whole.Reset();
    EXPECT_EQ(0u, TypeParam::Get(whole));
  }
  EXPECT_TRUE(Crc::CheckWordByWord());
}

// The fast routines against the byte routine for every length up to 4096
// (300 for the table routine, whose only period is 8) at every alignment
// within 16 bytes, from a register that is not the initial one. The byte
// routine's results for all lengths come from one pass.
TYPED_TEST(CrcTest, FastRoutinesMatchTheByteRoutine) {
  using Crc = typename TypeParam::Crc;
  const std::size_t kMaxLength = 4096;
  const std::vector<unsigned char> data = RandomBytes(kMaxLength + 16, 3);
  Crc start;
  (start.*TypeParam::kOld)(data.data(), 5);
  for (std::size_t offset = 0; offset < 16; ++offset) {
    const unsigned char* p = data.data() + offset;
    std::vector<std::uint64_t> expected;
    Crc reference = start;
    expected.push_back(TypeParam::Get(reference));
    for (std::size_t n = 0; n < kMaxLength; ++n) {
      (reference.*TypeParam::kOld)(p + n, 1);
      expected.push_back(TypeParam::Get(reference));
    }
    for (std::size_t n = 0; n <= kMaxLength; ++n) {
      for (Routine<Crc> update : {TypeParam::kFast, TypeParam::kSliced}) {
        if (update == TypeParam::kSliced && n > 300) continue;
        Crc crc = start;
        (crc.*update)(p, static_cast<unsigned int>(n));
        ASSERT_EQ(expected[n], TypeParam::Get(crc)) << "offset " << offset << " length " << n;
      }
    }
  }
}

// Chunking: pieces of any size give the result of one call.
template <class Sum>
std::string InPieces(const std::vector<unsigned char>& data, const std::vector<std::size_t>& pieces) {
  Sum sum;
  std::size_t at = 0;
  for (std::size_t i = 0; at < data.size(); ++i) {
    const std::size_t n = std::min(pieces[i % pieces.size()], data.size() - at);
    sum.Add(data.data() + at, static_cast<unsigned int>(n));
    at += n;
  }
  return sum.Result();
}

struct CrcSum {
  Crc32Traits::Crc crc32;
  Crc64Traits::Crc crc64;
  void Add(const unsigned char* p, unsigned int n) {
    crc32.UpdateCRC32(p, n);
    crc64.UpdateCRC64(p, n);
  }
  std::string Result() { return std::to_string(crc32.GetCRC32()) + " " + std::to_string(crc64.GetCRC64()); }
};

template <class Sum>
void ExpectPieceSizesDoNotMatter() {
  const std::vector<unsigned char> data = RandomBytes(20000, 7);
  const std::string whole = InPieces<Sum>(data, {data.size()});
  std::vector<std::vector<std::size_t>> splits = {{1}, {7}, {8}, {63}, {64}, {65}, {1000}};
  std::mt19937 random(11);
  for (int round = 0; round < 20; ++round) {
    splits.emplace_back();
    for (int i = 0; i < 50; ++i) splits.back().push_back(random() % 300);
    splits.back().push_back(1);  // never only empty pieces
  }
  for (const auto& pieces : splits) EXPECT_EQ(whole, InPieces<Sum>(data, pieces)) << pieces[0];
}

TEST(Checksums, PieceSizesDoNotMatter) {
  ExpectPieceSizesDoNotMatter<CrcSum>();
  ExpectPieceSizesDoNotMatter<Md5Sum>();
}

TEST(Md5, Rfc1321SuiteAndPaddingBoundaries) {
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", Md5Hex(""));
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", Md5Hex("abc"));
  EXPECT_EQ("f96b697d7cb7938d525a2f31aaf161d0", Md5Hex("message digest"));
  EXPECT_EQ("57edf4a22be3c955ac49da2e2107b67a",
            Md5Hex("12345678901234567890123456789012345678901234567890123456789012345678901234567890"));

  // Where the length field does or does not fit after the 0x80 byte.
  const std::pair<std::size_t, const char*> boundaries[] = {
      {55, "ef1772b6dff9a122358552954ad0df65"},  {56, "3b0c8ac703f828b04c6c197006d17218"},
      {57, "652b906d60af96844ebd21b674f35e93"},  {63, "b06521f39153d618550606be297466d5"},
      {64, "014842d480b571495a4a0363793f7367"},  {65, "c743a45e0d2e6a95cb859adae0248435"},
      {119, "8a7bd0732ed6a28ce75f6dabc90e1613"}, {120, "5f61c0ccad4cac44c75ff505e1f1e537"}};
  for (const auto& b : boundaries) EXPECT_EQ(b.second, Md5Hex(std::string(b.first, 'a'))) << b.first;

  Md5Sum million;
  const std::string thousand(1000, 'a');
  for (int i = 0; i < 1000; ++i) million.Add(reinterpret_cast<const unsigned char*>(thousand.data()), 1000);
  EXPECT_EQ("7707d6ae4e027c70eea2a935c2296f21", million.Result());

  // Start() makes a used object new; a copy carries the whole state.
  Md5Sum sum;
  sum.md5.Process("abc", 3);
  Md5Sum copy = sum;
  sum.md5.Start();
  sum.md5.Process("message digest", 14);
  EXPECT_EQ("f96b697d7cb7938d525a2f31aaf161d0", sum.Result());
  copy.md5.Process(nullptr, 4);
  copy.md5.Process("x", 0);
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", copy.Result());
}

}  // namespace
