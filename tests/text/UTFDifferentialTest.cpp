// The vector blocks against the scalar code they stand in for: random text
// of every shape the blocks look for, broken at random places, must give
// the same answer on both paths, through the public conversions and
// through the internal converters of both wide widths.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/StringConvert.h"
#include "text/UTFCore.h"

namespace {

using Random = std::mt19937;

std::uint32_t In(Random& random, std::uint32_t low, std::uint32_t high) {
  return std::uniform_int_distribution<std::uint32_t>(low, high)(random);
}

void PutUtf8(std::string& out, std::uint32_t c) {
  std::uint8_t bytes[4];
  const std::uint8_t* end = FXUTFDetail::PutUtf8(bytes, c);
  out.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(end - bytes));
}

// Runs long enough to fill blocks (ASCII, two-byte, three-byte, mixed),
// four-byte characters, and the faults: stray and cut-off sequences,
// overlong forms, encoded surrogates, values above U+10FFFF, bytes that
// never occur. Never a NUL, at which the public conversions stop.
// European text is mostly ASCII mixed with two-byte characters, which the
// blocks take together, with the faults that can break such blocks.
std::string RandomUtf8(Random& random, bool european) {
  static const std::uint32_t kEuropean[] = {3, 3, 3, 3, 3, 0, 1, 5, 6, 7, 9};
  std::string out;
  const std::uint32_t pieces = In(random, 1, 30);
  for (std::uint32_t i = 0; i < pieces; ++i) {
    const std::uint32_t run = In(random, 1, 24);
    switch (european ? kEuropean[In(random, 0, 10)] : In(random, 0, 9)) {
      case 0:
        for (std::uint32_t k = 0; k < run; ++k) PutUtf8(out, In(random, 1, 0x7F));
        break;
      case 1:
        for (std::uint32_t k = 0; k < run; ++k) PutUtf8(out, In(random, 0x80, 0x7FF));
        break;
      case 2:
        for (std::uint32_t k = 0; k < run; ++k) {
          const std::uint32_t c = In(random, 0x800, 0xFFFF);
          PutUtf8(out, c >= 0xD800 && c < 0xE000 ? 0x3042 : c);
        }
        break;
      case 3:  // European: mostly ASCII, some two-byte
        for (std::uint32_t k = 0; k < run; ++k) PutUtf8(out, In(random, 0, 3) == 0 ? In(random, 0x80, 0x7FF) : In(random, 0x20, 0x7E));
        break;
      case 4:
        PutUtf8(out, In(random, 0x10000, 0x10FFFF));
        break;
      case 5:  // stray bytes, including continuations and F5..FF
        for (std::uint32_t k = 0; k < In(random, 1, 3); ++k) out += static_cast<char>(In(random, 0x80, 0xFF));
        break;
      case 6: {  // a sequence cut short
        std::string whole;
        PutUtf8(whole, In(random, 0, 1) ? In(random, 0x800, 0xD7FF) : In(random, 0x10000, 0x10FFFF));
        out += whole.substr(0, In(random, 1, static_cast<std::uint32_t>(whole.size()) - 1));
        break;
      }
      case 7: {  // overlong forms, encoded surrogates, above U+10FFFF
        static const char* const kBad[] = {"\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80",
                                           "\xED\xBF\xBF", "\xF0\x80\x80\xAF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};
        out += kBad[In(random, 0, 8)];
        break;
      }
      case 8: {  // a fault inside a run of three-byte characters
        std::string whole;
        for (std::uint32_t k = 0; k < run + 8; ++k) PutUtf8(whole, In(random, 0x4E00, 0x9FFF));
        whole[In(random, 0, static_cast<std::uint32_t>(whole.size()) - 1)] = static_cast<char>(In(random, 0x01, 0xFF));
        out += whole;
        break;
      }
      default: {  // a fault inside a run of two-byte characters
        std::string whole;
        for (std::uint32_t k = 0; k < run + 8; ++k) PutUtf8(whole, In(random, 0x391, 0x3C9));
        whole[In(random, 0, static_cast<std::uint32_t>(whole.size()) - 1)] = static_cast<char>(In(random, 0x01, 0xFF));
        out += whole;
      }
    }
  }
  return out;
}

// Units of every length in runs, with unpaired surrogates and (in 32 bits)
// values above U+10FFFF and ones with the sign bit set. Never a 0.
// European text: as above.
template <class Unit>
std::vector<Unit> RandomWide(Random& random, bool european) {
  static const std::uint32_t kEuropean[] = {2, 2, 2, 2, 2, 0, 1, 3, 5, 6};
  std::vector<Unit> out;
  const auto put = [&out](std::uint32_t c) {
    if (sizeof(Unit) == 2 && c > 0xFFFF) {
      out.push_back(static_cast<Unit>(0xD800 + ((c - 0x10000) >> 10)));
      out.push_back(static_cast<Unit>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    } else {
      out.push_back(static_cast<Unit>(c));
    }
  };
  const std::uint32_t pieces = In(random, 1, 30);
  for (std::uint32_t i = 0; i < pieces; ++i) {
    const std::uint32_t run = In(random, 1, 24);
    switch (european ? kEuropean[In(random, 0, 9)] : In(random, 0, 7)) {
      case 0:
        for (std::uint32_t k = 0; k < run; ++k) put(In(random, 1, 0x7F));
        break;
      case 1:
        for (std::uint32_t k = 0; k < run; ++k) put(In(random, 0x80, 0x7FF));
        break;
      case 2:
        for (std::uint32_t k = 0; k < run; ++k) put(In(random, 0, 3) == 0 ? In(random, 0x80, 0x7FF) : In(random, 0x20, 0x7E));
        break;
      case 3:
        for (std::uint32_t k = 0; k < run; ++k) put(In(random, 0, 1) ? In(random, 0x800, 0xD7FF) : In(random, 0xE000, 0xFFFF));
        break;
      case 4:
        put(In(random, 0x10000, 0x10FFFF));
        break;
      case 5:  // an unpaired surrogate
        out.push_back(static_cast<Unit>(In(random, 0xD800, 0xDFFF)));
        break;
      case 6:  // out of range in 32 bits (a negative wchar_t included), a low surrogate in 16
        out.push_back(static_cast<Unit>(sizeof(Unit) == 4 ? In(random, 0x110000, 0xFFFFFFFF) : In(random, 0xDC00, 0xDFFF)));
        break;
      default:  // a surrogate inside a run of three-unit characters
        for (std::uint32_t k = 0; k < run + 8; ++k) put(In(random, 0x4E00, 0x9FFF));
        out[out.size() - 1 - In(random, 0, run + 7)] = static_cast<Unit>(In(random, 0xD800, 0xDFFF));
    }
  }
  return out;
}

template <class Unit, bool kVector>
std::vector<Unit> Decode(const std::string& text) {
  const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
  std::vector<Unit> out(text.size());
  Unit* end = FXUTFDetail::DecodeUtf8Replacing<Unit, kVector>(s, s + text.size(), out.data());
  out.resize(static_cast<std::size_t>(end - out.data()));
  return out;
}

template <class Unit, bool kVector>
std::string Encode(const std::vector<Unit>& text) {
  std::string out(text.size() * 4, '\0');
  auto* begin = reinterpret_cast<std::uint8_t*>(&out[0]);
  const std::uint8_t* end = FXUTFDetail::EncodeUtf8Replacing<Unit, kVector>(text.data(), text.data() + text.size(), begin);
  out.resize(static_cast<std::size_t>(end - begin));
  return out;
}

constexpr int kRounds = 4000;

TEST(UTFDifferential, ToWstringAgreesWithTheScalarPath) {
  Random random(1123);
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = RandomUtf8(random, round % 2 == 1);
    const std::vector<wchar_t> expected = Decode<wchar_t, false>(text);
    ASSERT_EQ(std::wstring(expected.begin(), expected.end()), FXString::ToWstring(text)) << "round " << round;
    const std::size_t cut = In(random, 0, static_cast<std::uint32_t>(text.size()) - 1);
    std::string withNul = text;
    withNul[cut] = '\0';
    const std::vector<wchar_t> beforeNul = Decode<wchar_t, false>(text.substr(0, cut));
    ASSERT_EQ(std::wstring(beforeNul.begin(), beforeNul.end()), FXString::ToWstring(withNul)) << "round " << round;
    if constexpr (FXUTFDetail::kHaveVector) {
      ASSERT_EQ((Decode<std::uint16_t, false>(text)), (Decode<std::uint16_t, true>(text))) << "round " << round;
      ASSERT_EQ((Decode<std::uint32_t, false>(text)), (Decode<std::uint32_t, true>(text))) << "round " << round;
    }
  }
}

TEST(UTFDifferential, ToStringAgreesWithTheScalarPath) {
  Random random(2311);
  for (int round = 0; round < kRounds; ++round) {
    const bool european = round % 2 == 1;
    const std::vector<wchar_t> text = RandomWide<wchar_t>(random, european);
    ASSERT_EQ((Encode<wchar_t, false>(text)), FXString::ToString(std::wstring(text.begin(), text.end())))
        << "round " << round;
    // A NUL ends the text, whatever comes before it (a surrogate whose pair
    // it cuts off) or after it.
    const std::size_t cut = In(random, 0, static_cast<std::uint32_t>(text.size()) - 1);
    std::wstring withNul(text.begin(), text.end());
    withNul[cut] = L'\0';
    ASSERT_EQ((Encode<wchar_t, false>(std::vector<wchar_t>(text.begin(), text.begin() + cut))),
              FXString::ToString(withNul))
        << "round " << round;
    if constexpr (FXUTFDetail::kHaveVector) {
      const std::vector<std::uint16_t> narrow = RandomWide<std::uint16_t>(random, european);
      ASSERT_EQ((Encode<std::uint16_t, false>(narrow)), (Encode<std::uint16_t, true>(narrow))) << "round " << round;
      const std::vector<std::uint32_t> wide = RandomWide<std::uint32_t>(random, european);
      ASSERT_EQ((Encode<std::uint32_t, false>(wide)), (Encode<std::uint32_t, true>(wide))) << "round " << round;
    }
  }
}

// Long texts are converted a stretch (16 KiB) at a time; a sequence or an
// ill-formed subpart at the cut must convert as in one piece, and a NUL
// ends the text wherever it is.
TEST(UTFDifferential, LongTextsConvertAsOnePiece) {
  static const char* const kPieces[] = {"\xF0\x9F\x98\x80", "\xE6\x9D\xB1", "\xE6\x9D\x61", "\x80\x80\x80\x80\x80",
                                        "\xF0\x9F\x98\x80\x80\x80", "\xC3\xA9", "\xED\xA0\x80", "\xF4\x90\x80"};
  for (std::size_t at = (1 << 14) - 8; at <= (1 << 14) + 4; ++at) {
    for (const char* piece : kPieces) {
      // A first non-ASCII byte keeps the whole text on the stretch path.
      const std::string text = "\xC3\xA9" + std::string(at - 2, 'a') + piece + std::string(40, 'b') + "\xCE\xB1";
      const std::vector<wchar_t> expected = Decode<wchar_t, false>(text);
      ASSERT_EQ(std::wstring(expected.begin(), expected.end()), FXString::ToWstring(text)) << at << " " << piece;
    }
  }
  Random random(4242);
  std::string text;
  while (text.size() < 50000) text += RandomUtf8(random, text.size() % 2 == 1);
  const std::vector<wchar_t> expected = Decode<wchar_t, false>(text);
  EXPECT_EQ(std::wstring(expected.begin(), expected.end()), FXString::ToWstring(text));
  for (const std::size_t nul : {std::size_t{0}, std::size_t{5000}, std::size_t{20000}, text.size() - 1}) {
    std::string cut = text;
    cut[nul] = '\0';
    const std::vector<wchar_t> before = Decode<wchar_t, false>(text.substr(0, nul));
    EXPECT_EQ(std::wstring(before.begin(), before.end()), FXString::ToWstring(cut)) << nul;
  }
  // Plain ASCII takes the one pass that looks for the NUL as it widens.
  std::string ascii(40000, 'x');
  ascii[30001] = '\0';
  EXPECT_EQ(std::wstring(30001, L'x'), FXString::ToWstring(ascii));
}

// Long wide texts become UTF-8 a piece (2048 units) at a time; a surrogate
// pair, an unpaired surrogate or a NUL at the cut must convert as in one
// piece.
TEST(UTFDifferential, LongWideTextsConvertAsOnePiece) {
  const std::vector<std::vector<wchar_t>> pieces = {
      {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)}, {static_cast<wchar_t>(0xD83D)},
      {static_cast<wchar_t>(0xDE00)}, {0x00E9, 0x6771}, {0}, {0x00E9, 0}};
  for (std::size_t at = 2048 - 3; at <= 2048 + 2; ++at) {
    for (const std::vector<wchar_t>& piece : pieces) {
      std::vector<wchar_t> text(at, L'a');
      text.insert(text.end(), piece.begin(), piece.end());
      text.insert(text.end(), 3000, 0x00FC);
      std::vector<wchar_t> beforeNul(text.begin(), std::find(text.begin(), text.end(), L'\0'));
      ASSERT_EQ((Encode<wchar_t, false>(beforeNul)), FXString::ToString(std::wstring(text.begin(), text.end())))
          << at << " " << piece.size();
    }
  }
}

// Valid text goes there and back unchanged on the vector path too, at
// every length around the block sizes.
TEST(UTFDifferential, ValidTextRoundTripsAtEveryLength) {
  const std::string sample =
      "abc\xC3\xA4\xCE\xB1\xCE\xB2\xE6\x9D\xB1\xE4\xBA\xAC\xF0\x9F\x98\x80xyz\xD0\x96\xD0\x96\xD0\x96\xD0\x96";
  std::string text;
  for (int i = 0; i < 12; ++i) text += sample;
  for (std::size_t length = 0; length <= 200; ++length) {
    std::string piece = text.substr(0, length);
    while (!piece.empty() && (static_cast<unsigned char>(text[piece.size()]) & 0xC0) == 0x80) piece.pop_back();
    ASSERT_EQ(piece, FXString::ToString(FXString::ToWstring(piece))) << "length " << length;
  }
}

}  // namespace
