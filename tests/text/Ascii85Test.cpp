#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "text/Ascii85.h"

namespace {

std::string Encode(const std::string& data) {
  std::string text = "unchanged?";
  const CZuError r = CAscii85::Encode(data.data(), data.size(), text);
  EXPECT_FALSE(r.IsError()) << r.AsString();
  return text;
}

// Both decoding forms, which must agree; failures return the error text.
std::string Decode(const std::string& text, CZuError* error = nullptr) {
  std::vector<char> buffer(text.size() * 4 + 16);
  std::size_t length = buffer.size();
  const CZuError r = CAscii85::Decode(text, buffer.data(), length);

  auto_ptr_array<char> owned;
  std::size_t ownedLength = 12345;
  const CZuError r2 = CAscii85::Decode(text, owned, ownedLength);
  EXPECT_EQ(r.GetErrorCode(), r2.GetErrorCode()) << text;
  if (error != nullptr) *error = r;
  if (r.IsError()) {
    EXPECT_EQ(nullptr, owned.get());  // left unchanged
    EXPECT_EQ(12345u, ownedLength);
    return r.AsString();
  }
  EXPECT_EQ(length, ownedLength);
  const std::string decoded(buffer.data(), length);
  EXPECT_EQ(decoded, std::string(owned.get(), ownedLength));
  return decoded;
}

bool Contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

TEST(Ascii85, EncodingOfGroupsZerosAndShortEnds) {
  EXPECT_EQ("<~~>", Encode(""));
  EXPECT_EQ("<~z~>", Encode(std::string(4, '\0')));
  EXPECT_EQ("<~!!~>", Encode(std::string(1, '\0')));
  EXPECT_EQ("<~!!!!~>", Encode(std::string(3, '\0')));  // a short group is never 'z'
  EXPECT_EQ("<~zz!!~>", Encode(std::string(9, '\0')));
  EXPECT_EQ("<~s8W-!~>", Encode("\xFF\xFF\xFF\xFF"));
  EXPECT_EQ("<~9jqo^BlbD-BleB1DJ+*+F(f,q~>", Encode("Man is distinguished"));

  std::string out = "kept";
  EXPECT_TRUE(FXErrorUtil::IsWin32(CAscii85::Encode(nullptr, 3, out), ERROR_INVALID_PARAMETER));
  EXPECT_FALSE(CAscii85::Encode(nullptr, 0, out).IsError());
  EXPECT_EQ("<~~>", out);

  // Too large to allocate: fails before a byte is read, `out` unchanged.
  out = "kept";
  const CZuError r = CAscii85::Encode("x", SIZE_MAX / 2, out);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_OUTOFMEMORY)) << r.AsString();
  EXPECT_TRUE(Contains(r.AsString(), "CAscii85::Encode"));
  EXPECT_EQ("kept", out);
}

TEST(Ascii85, RoundTripsOfRandomDataWithZeroGroupsAndWhitespace) {
  std::mt19937 random(9);
  for (std::size_t n = 0; n <= 300; ++n) {
    std::string data(n, '\0');
    for (auto& b : data) b = static_cast<char>(random() % 3 == 0 ? 0 : random());
    const std::string text = Encode(data);
    ASSERT_EQ(data, Decode(text)) << n;

    // The skipped characters may stand anywhere between the markers,
    // inside groups too, but not between '~' and '>'.
    static const char kSkipped[] = {'\0', '\b', '\t', '\n', '\f', '\r', ' ', '\x7F'};
    std::string spaced = text.substr(0, 2);
    for (std::size_t i = 2; i < text.size(); ++i) {
      if (i + 1 < text.size() && random() % 4 == 0) spaced += kSkipped[random() % sizeof kSkipped];
      spaced += text[i];
    }
    spaced += " \x7F\v ignored after the end";
    ASSERT_EQ(data, Decode(spaced)) << n;
  }
}

TEST(Ascii85, DecodingEdgeCases) {
  EXPECT_EQ(std::string(1, '\0'), Decode("<~!!~>"));
  EXPECT_EQ(std::string(4, '\0'), Decode("<~z~>"));
  EXPECT_EQ(std::string(16, '\0'), Decode("<~zzzz~>"));  // more bytes than characters
  EXPECT_EQ("", Decode("<~!~>"));                       // a lone digit writes nothing
  EXPECT_EQ("", Decode("<~~>"));
  EXPECT_EQ(std::string(1, '\0'), Decode("<~!!~>anything after the end"));
  // "uuuuu" is 85^5 - 1, above 2^32 - 1: it wraps without an error.
  EXPECT_EQ("\x08\x78\x0E\xC4", Decode("<~uuuuu~>"));

  const std::pair<const char*, const char*> failures[] = {
      {"<~!!z~>", "'z' inside a group"},
      {"<~!!", "No end marker found"},
      {"<~!!~", "Incomplete end marker found (~ without >)"},
      {"<~!!~!~>", "Incomplete end marker found (~ without >)"},
      {"abc", "Invalid beginning marker"},
      {"<~>", "Invalid beginning marker"},
      {"[~!!~>", "Invalid beginning marker"},
      {"<~!\v!~>", "Invalid ASCII85 character"},  // vertical tab is not skipped
      {"<~!v~>", "Invalid ASCII85 character"},
      {"<~!!\x80~>", "Invalid ASCII85 character"},
  };
  for (const auto& f : failures) {
    CZuError r = CZuError::Success();
    const std::string text = Decode(f.first, &r);
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_DATA)) << f.first << ": " << text;
    EXPECT_TRUE(Contains(text, f.second)) << f.first << ": " << text;
    EXPECT_TRUE(Contains(text, "CAscii85::Decode")) << text;
  }
}

TEST(Ascii85, OutputThatDoesNotFitTheCallersBuffer) {
  const std::string eight = Encode("ABCDEFGH");
  char buffer[8] = {};
  std::size_t length = 6;
  CZuError r = CAscii85::Decode(eight, buffer, length);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_BUFFER_OVERFLOW));
  EXPECT_TRUE(Contains(r.AsString(), "OutputGroupToBuffer")) << r.AsString();
  EXPECT_TRUE(Contains(r.AsString(), "CAscii85::Decode"));
  EXPECT_EQ(4u, length);  // the first group stays
  EXPECT_EQ("ABCD", std::string(buffer, 4));

  length = 3;
  r = CAscii85::Decode("<~z~>", buffer, length);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_BUFFER_OVERFLOW));
  EXPECT_FALSE(Contains(r.AsString(), "OutputGroupToBuffer"));
  EXPECT_EQ(0u, length);

  length = 2;  // a final partial group of three bytes
  EXPECT_TRUE(FXErrorUtil::IsWin32(CAscii85::Decode(Encode("xyz"), buffer, length), ERROR_BUFFER_OVERFLOW));
  length = 8;  // a null buffer has no room
  EXPECT_TRUE(FXErrorUtil::IsWin32(CAscii85::Decode("<~!!~>", nullptr, length), ERROR_BUFFER_OVERFLOW));
}

}  // namespace
