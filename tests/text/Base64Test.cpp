#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/ZuBase64.h"

namespace {

std::string RandomBytes(std::size_t n, std::mt19937& random) {
  std::string bytes(n, '\0');
  for (auto& b : bytes) b = static_cast<char>(random());
  return bytes;
}

// Every decoding form gives the same answer; the C-style form says -1
// where the others say "empty".
std::string DecodeAllForms(const std::string& text) {
  const std::string decoded = ZuBase64::Decode(text);
  EXPECT_EQ(decoded, ZuBase64::Decode(text.data(), text.size()));
  std::vector<unsigned char> bytes{1, 2, 3};
  ZuBase64::Decode(text, bytes);
  EXPECT_EQ(decoded, std::string(bytes.begin(), bytes.end()));
  std::vector<char> buffer(text.size() + 2, 'x');
  const int n = ZuBase64::Decode(text.data(), static_cast<int>(text.size()), buffer.data(), buffer.size());
  EXPECT_EQ(decoded.empty() ? -1 : static_cast<int>(decoded.size()), n) << text;
  if (n >= 0) {
    EXPECT_EQ(decoded, std::string(buffer.data(), static_cast<std::size_t>(n)));
  }
  EXPECT_EQ('\0', buffer[n < 0 ? 0 : static_cast<std::size_t>(n)]);
  return decoded;
}

TEST(Base64, Rfc4648VectorsInBothAlphabets) {
  const std::pair<const char*, const char*> vectors[] = {{"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},  {"foob", "Zm9vYg=="},  {"fooba", "Zm9vYmE="},
                                                         {"foobar", "Zm9vYmFy"}};
  for (const auto& v : vectors) {
    const std::string data = v.first, padded = v.second;
    const std::string unpadded = padded.substr(0, padded.find('='));
    EXPECT_EQ(padded, ZuBase64::Encode(data));
    EXPECT_EQ(unpadded, ZuBase64::Encode_url(data));
    if (!data.empty()) {
      EXPECT_EQ(data, DecodeAllForms(padded));
      EXPECT_EQ(data, DecodeAllForms(unpadded));
    }
  }
  const std::string fbff("\xFB\xFF", 2);
  EXPECT_EQ("+/8=", ZuBase64::Encode(fbff));
  EXPECT_EQ("-_8", ZuBase64::Encode_url(fbff));
  EXPECT_EQ(fbff, DecodeAllForms("+/8="));
  EXPECT_EQ(fbff, DecodeAllForms("-_8"));
  EXPECT_EQ(fbff, DecodeAllForms("+_8"));  // one table serves both alphabets
}

TEST(Base64, RoundTripsOfRandomData) {
  std::mt19937 random(5);
  for (std::size_t n = 0; n <= 300; ++n) {
    const std::string data = RandomBytes(n, random);
    const std::string text = ZuBase64::Encode(data);
    const std::string url = ZuBase64::Encode_url(data);
    ASSERT_EQ((n + 2) / 3 * 4, text.size());
    std::string expectedUrl = text.substr(0, text.find('='));
    for (char& c : expectedUrl) c = c == '+' ? '-' : c == '/' ? '_' : c;
    ASSERT_EQ(expectedUrl, url);
    ASSERT_EQ(data, DecodeAllForms(text)) << n;
    ASSERT_EQ(data, DecodeAllForms(url)) << n;

    char buffer[410];
    ASSERT_EQ(static_cast<int>(text.size()),
              ZuBase64::Encode(data.data(), static_cast<int>(n), buffer, sizeof buffer));
    ASSERT_EQ(text, std::string(buffer));
  }
}

TEST(Base64, LineFeedsAndPaddingAreTolerated) {
  for (const char* text : {"Zg", "Zg==", "Zg==\n", "Zg=\n=", "Zg\n\n", "Zg======"}) EXPECT_EQ("f", DecodeAllForms(text));
  EXPECT_EQ("ABCDEF", DecodeAllForms("QUJD\nREVG"));
  EXPECT_EQ("ABCDEF", DecodeAllForms("QUJD\nREVG\n"));
  EXPECT_EQ("ABCDEFf", DecodeAllForms("QUJD\nREVG\nZg==\n"));
}

TEST(Base64, InvalidTextDecodesToNothing) {
  // A single character left over, carriage returns, more than one line
  // feed or one inside a group, padding inside, characters outside both
  // alphabets (NUL and bytes above 0x7F among them); and text that is only
  // padding and line feeds, which leaves nothing.
  const std::string invalid[] = {"Z",        "QUJDZ",     "Zg\r\n",   "QUJD\r\nREVG", "QUJD\n\nREVG", "QU\nJD",
                                 "QU=D",     "Zg==QUJD",  "QUJD REVG", "QUJ*",         std::string("QU\0D", 4),
                                 "QUJ\x80", "QUJ\xFF",   "\n",       "====",         "=\n="};
  for (const std::string& text : invalid) EXPECT_EQ("", DecodeAllForms(text)) << text;
}

TEST(Base64, CallerBuffers) {
  char out[8] = "xxxxxxx";
  EXPECT_EQ(4, ZuBase64::Encode("foo", 3, out, 5));
  EXPECT_STREQ("Zm9v", out);
  EXPECT_EQ(-1, ZuBase64::Encode("foo", 3, out, 4));  // no room for the terminator
  EXPECT_STREQ("", out);
  EXPECT_EQ(0, ZuBase64::Encode("", 0, out, 1));
  EXPECT_EQ(0, ZuBase64::Encode(nullptr, 0, out, 1));
  EXPECT_EQ(-1, ZuBase64::Encode(nullptr, 3, out, sizeof out));
  EXPECT_EQ(-1, ZuBase64::Encode("foo", -1, out, sizeof out));
  EXPECT_EQ(-1, ZuBase64::Encode("foo", 3, nullptr, sizeof out));
  EXPECT_EQ(-1, ZuBase64::Encode("foo", 3, out, 0));

  EXPECT_EQ(3, ZuBase64::Decode("Zm9v\n", 5, out, 4));  // the line feed needs no room
  EXPECT_STREQ("foo", out);
  EXPECT_EQ(-1, ZuBase64::Decode("Zm9v", 4, out, 3));
  EXPECT_STREQ("", out);
  EXPECT_EQ(-1, ZuBase64::Decode("Zm9vYg", 6, out, 4));  // the last partial group does not fit
  EXPECT_EQ(-1, ZuBase64::Decode("", 0, out, sizeof out));  // an empty result
  EXPECT_EQ(-1, ZuBase64::Decode(nullptr, 4, out, sizeof out));

  char inPlace[] = "Zm9vYmFy";
  EXPECT_EQ(6, ZuBase64::Decode(inPlace, 8, inPlace, sizeof inPlace));
  EXPECT_STREQ("foobar", inPlace);
  char wrapped[] = "Zm9v\nYmFy\nZm9vYmFy\nYmF6Zm9vYmFyYmF6Zm9vYmFy\nZm9v";
  EXPECT_EQ(33, ZuBase64::Decode(wrapped, sizeof wrapped - 1, wrapped, sizeof wrapped));
  EXPECT_STREQ("foobarfoobarbazfoobarbazfoobarfoo", wrapped);
}

}  // namespace
