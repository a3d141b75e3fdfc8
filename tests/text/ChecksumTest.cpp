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

std::string Md5Hex(const std::string& data) {
  CMd5 md5;
  md5.Process(data.data(), static_cast<unsigned int>(data.size()));
  md5.End();
  unsigned char digest[16];
  md5.GetCode(digest);
  return Hex(digest, sizeof digest);
}

// Uniform access to the three checksums for the chunking tests.
struct Crc32Sum {
  CZuCRC32 crc;
  void Add(const unsigned char* p, unsigned int n) { crc.UpdateCRC32(p, n); }
  std::string Result() { return std::to_string(crc.GetCRC32()); }
};
struct Crc64Sum {
  CZuCRC64 crc;
  void Add(const unsigned char* p, unsigned int n) { crc.UpdateCRC64(p, n); }
  std::string Result() { return std::to_string(crc.GetCRC64()); }
};
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

template <class Sum>
void ExpectPieceSizesDoNotMatter() {
  const std::vector<unsigned char> data = RandomBytes(20000, 7);
  const std::string whole = InPieces<Sum>(data, {data.size()});
  for (std::size_t piece : {1, 7, 8, 63, 64, 65, 1000}) EXPECT_EQ(whole, InPieces<Sum>(data, {piece})) << piece;
  std::mt19937 random(11);
  for (int round = 0; round < 20; ++round) {
    std::vector<std::size_t> pieces;
    for (int i = 0; i < 50; ++i) pieces.push_back(random() % 300);
    pieces.push_back(1);  // never only empty pieces
    EXPECT_EQ(whole, InPieces<Sum>(data, pieces)) << round;
  }
}

TEST(Crc32, CheckValueWithEveryRoutine) {
  const auto* check = reinterpret_cast<const unsigned char*>(kCheck);
  CZuCRC32 crc;
  EXPECT_EQ(0u, crc.GetCRC32());
  crc.UpdateCRC32(kCheck, 9);
  EXPECT_EQ(0xCBF43926u, crc.GetCRC32());
  EXPECT_EQ(0xCBF43926u, crc.GetCRC32());  // reading keeps the register

  CZuCRC32 old, sliced, bytewise;
  old.UpdateCRC32_old(check, 9);
  sliced.UpdateCRC32_slicing8(check, 9);
  for (int i = 0; i < 9; ++i) bytewise.UpdateCRC32(check + i, 1);
  EXPECT_EQ(0xCBF43926u, old.GetCRC32());
  EXPECT_EQ(0xCBF43926u, sliced.GetCRC32());
  EXPECT_EQ(0xCBF43926u, bytewise.GetCRC32());

  crc.UpdateCRC32(static_cast<const char*>(nullptr), 5);
  crc.UpdateCRC32(check, 0);
  EXPECT_EQ(0xCBF43926u, crc.GetCRC32());
  CZuCRC32 copy = crc;
  copy.UpdateCRC32(check, 1);
  EXPECT_EQ(0xCBF43926u, crc.GetCRC32());  // copies are independent
  crc.Reset();
  EXPECT_EQ(0u, crc.GetCRC32());

  EXPECT_TRUE(CZuCRC32::CheckWordByWord());
}

TEST(Crc64, CheckValueWithEveryRoutine) {
  const auto* check = reinterpret_cast<const unsigned char*>(kCheck);
  CZuCRC64 crc;
  EXPECT_EQ(0u, crc.GetCRC64());
  crc.UpdateCRC64(kCheck, 9);
  EXPECT_EQ(0x62EC59E3F1A4F00Au, crc.GetCRC64());

  CZuCRC64 old, sliced, bytewise;
  old.UpdateCRC64_old(check, 9);
  sliced.UpdateCRC64_slicing8(check, 9);
  for (int i = 0; i < 9; ++i) bytewise.UpdateCRC64(check + i, 1);
  EXPECT_EQ(0x62EC59E3F1A4F00Au, old.GetCRC64());
  EXPECT_EQ(0x62EC59E3F1A4F00Au, sliced.GetCRC64());
  EXPECT_EQ(0x62EC59E3F1A4F00Au, bytewise.GetCRC64());

  crc.UpdateCRC64(static_cast<const char*>(nullptr), 5);
  crc.UpdateCRC64(check, 0);
  EXPECT_EQ(0x62EC59E3F1A4F00Au, crc.GetCRC64());
  crc.Reset();
  EXPECT_EQ(0u, crc.GetCRC64());

  EXPECT_TRUE(CZuCRC64::CheckWordByWord());
}

// The fast routines against the byte routine for every length up to 4096
// at every alignment within 16 bytes, starting from a register that is not
// the initial one. The byte routine's results for all lengths come from one
// pass, reading the register after each byte.
template <class Crc, class Value>
void ExpectRoutinesAgree(void (Crc::*fast)(const unsigned char*, unsigned int),
                         void (Crc::*old)(const unsigned char*, unsigned int), Value (Crc::*get)() const,
                         std::size_t maxLength) {
  const std::vector<unsigned char> data = RandomBytes(maxLength + 16, 3);
  Crc start;
  (start.*old)(data.data(), 5);
  for (std::size_t offset = 0; offset < 16; ++offset) {
    const unsigned char* p = data.data() + offset;
    std::vector<Value> expected;
    Crc reference = start;
    expected.push_back((reference.*get)());
    for (std::size_t n = 0; n < maxLength; ++n) {
      (reference.*old)(p + n, 1);
      expected.push_back((reference.*get)());
    }
    for (std::size_t n = 0; n <= maxLength; ++n) {
      Crc crc = start;
      (crc.*fast)(p, static_cast<unsigned int>(n));
      ASSERT_EQ(expected[n], (crc.*get)()) << "offset " << offset << " length " << n;
    }
  }
}

TEST(Crc32, FastRoutinesMatchTheByteRoutine) {
  ExpectRoutinesAgree<CZuCRC32>(&CZuCRC32::UpdateCRC32, &CZuCRC32::UpdateCRC32_old, &CZuCRC32::GetCRC32, 4096);
  ExpectRoutinesAgree<CZuCRC32>(&CZuCRC32::UpdateCRC32_slicing8, &CZuCRC32::UpdateCRC32_old,
                                &CZuCRC32::GetCRC32, 300);
}

TEST(Crc64, FastRoutinesMatchTheByteRoutine) {
  ExpectRoutinesAgree<CZuCRC64>(&CZuCRC64::UpdateCRC64, &CZuCRC64::UpdateCRC64_old, &CZuCRC64::GetCRC64, 4096);
  ExpectRoutinesAgree<CZuCRC64>(&CZuCRC64::UpdateCRC64_slicing8, &CZuCRC64::UpdateCRC64_old,
                                &CZuCRC64::GetCRC64, 300);
}

TEST(Checksums, PieceSizesDoNotMatter) {
  ExpectPieceSizesDoNotMatter<Crc32Sum>();
  ExpectPieceSizesDoNotMatter<Crc64Sum>();
  ExpectPieceSizesDoNotMatter<Md5Sum>();
}

TEST(Md5, Rfc1321SuiteAndPaddingBoundaries) {
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", Md5Hex(""));
  EXPECT_EQ("0cc175b9c0f1b6a831c399e269772661", Md5Hex("a"));
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", Md5Hex("abc"));
  EXPECT_EQ("f96b697d7cb7938d525a2f31aaf161d0", Md5Hex("message digest"));
  EXPECT_EQ("c3fcd3d76192e4007dfb496cca67e13b", Md5Hex("abcdefghijklmnopqrstuvwxyz"));
  EXPECT_EQ("d174ab98d277d9f5a5611c2c9f419d9f",
            Md5Hex("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"));
  EXPECT_EQ("57edf4a22be3c955ac49da2e2107b67a",
            Md5Hex("12345678901234567890123456789012345678901234567890123456789012345678901234567890"));

  // Where the length field does or does not fit after the 0x80 byte.
  const std::pair<std::size_t, const char*> boundaries[] = {
      {55, "ef1772b6dff9a122358552954ad0df65"},  {56, "3b0c8ac703f828b04c6c197006d17218"},
      {57, "652b906d60af96844ebd21b674f35e93"},  {63, "b06521f39153d618550606be297466d5"},
      {64, "014842d480b571495a4a0363793f7367"},  {65, "c743a45e0d2e6a95cb859adae0248435"},
      {119, "8a7bd0732ed6a28ce75f6dabc90e1613"}, {120, "5f61c0ccad4cac44c75ff505e1f1e537"}};
  for (const auto& b : boundaries) EXPECT_EQ(b.second, Md5Hex(std::string(b.first, 'a'))) << b.first;

  CMd5 million;
  const std::string thousand(1000, 'a');
  for (int i = 0; i < 1000; ++i) million.Process(thousand.data(), 1000);
  million.End();
  unsigned char digest[16];
  million.GetCode(digest);
  EXPECT_EQ("7707d6ae4e027c70eea2a935c2296f21", Hex(digest, 16));

  // Start() makes a used object new; a copy carries the whole state.
  CMd5 md5;
  md5.Process("abc", 3);
  CMd5 copy = md5;
  md5.Start();
  md5.Process("message digest", 14);
  md5.End();
  md5.GetCode(digest);
  EXPECT_EQ("f96b697d7cb7938d525a2f31aaf161d0", Hex(digest, 16));
  copy.Process(nullptr, 4);
  copy.Process("x", 0);
  copy.End();
  copy.GetCode(digest);
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", Hex(digest, 16));
}

}  // namespace
