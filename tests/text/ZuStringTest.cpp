#include <climits>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ZuTypes.h"
#include "text/ZuString.h"

namespace {

std::vector<std::string> Texts(const std::vector<CZuString>& tokens) {
  std::vector<std::string> out;
  for (const CZuString& t : tokens) out.emplace_back(t.c_str(), t.Length());
  return out;
}

typedef std::vector<std::string> Strings;

TEST(ZuString, EmptyFormsNeverHandOutNull) {
  const CZuString fromNull(static_cast<const char*>(nullptr)), fromEmpty(""), fromZero('\0'), plain;
  for (const CZuString* s : {&fromNull, &fromEmpty, &fromZero, &plain}) {
    EXPECT_TRUE(s->IsEmpty());
    ASSERT_NE(nullptr, s->c_str());
    EXPECT_STREQ("", s->c_str());
    EXPECT_EQ(nullptr, const_cast<CZuString*>(s)->GetBuffer());
    EXPECT_EQ(0u, s->GetAllocatedSize());
  }
  CZuString s("abc");
  s.Clear();
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_STREQ("", s.c_str());
  EXPECT_EQ(4u, s.GetAllocatedSize());  // Clear keeps the buffer
  EXPECT_EQ(s, "");
}

TEST(ZuString, NumbersPrintByTheirType) {
  EXPECT_STREQ("-1", CZuString(static_cast<short>(-1)).c_str());
  EXPECT_EQ(2u, CZuString(static_cast<short>(-1)).Length());
  EXPECT_STREQ("65535", CZuString(static_cast<unsigned short>(0xFFFF)).c_str());
  EXPECT_STREQ("-2147483648", CZuString(INT_MIN).c_str());
  EXPECT_STREQ("4294967295", CZuString(UINT_MAX).c_str());
  EXPECT_STREQ("-9223372036854775808", CZuString(LLONG_MIN).c_str());
  EXPECT_STREQ("18446744073709551615", CZuString(ULLONG_MAX).c_str());
  // long follows the platform: 32 bits on Windows, 64 on Linux.
  EXPECT_STREQ(kZuIsWindows ? "2147483647" : "9223372036854775807", CZuString(LONG_MAX).c_str());
  EXPECT_STREQ("0.1", CZuString(0.1).c_str());
  EXPECT_STREQ("1e+20", CZuString(1e20).c_str());
  // Constructors allocate exactly what the text needs.
  EXPECT_EQ(3u, CZuString(42).GetAllocatedSize());

  CZuString s("n=");
  s += 5;
  s += static_cast<unsigned long long>(7);
  s += -2.5;
  s += 'x';
  s += '\0';  // appends nothing
  EXPECT_STREQ("n=57-2.5x", s.c_str());
}

TEST(ZuString, HexValuesAreSignExtendedTo64Bits) {
  EXPECT_STREQ("ffffffffffffffff", CZuString::ToHexString(static_cast<short>(-1)).c_str());
  EXPECT_STREQ("ffff", CZuString::ToHexString(static_cast<unsigned short>(0xFFFF)).c_str());
  EXPECT_STREQ("ffffffffffffff80", CZuString::ToHexString(-128).c_str());
  EXPECT_STREQ("ffffffff", CZuString::ToHexString(0xFFFFFFFFu).c_str());
  EXPECT_STREQ("ffffffffffffffff", CZuString::ToHexString(-1L).c_str());
  EXPECT_STREQ("0", CZuString::ToHexString(0LL).c_str());
  CZuString s("0x");
  s.AppendHexValue(0xABCDEF0123456789ull);
  EXPECT_STREQ("0xabcdef0123456789", s.c_str());
}

TEST(ZuString, ConcatenationLeavesTheOperandsAlone) {
  const CZuString a("ab");
  const CZuString b = a + "cd" + 'e' + 1;
  EXPECT_STREQ("ab", a.c_str());
  EXPECT_STREQ("abcde1", b.c_str());
  const CZuString c = a << "x";
  EXPECT_STREQ("ab", a.c_str());  // << is + and not an append
  EXPECT_STREQ("abx", c.c_str());
  EXPECT_STREQ(">ab", (">" + a).c_str());
  CZuString self("xy");
  self += self;
  self += self.c_str();
  EXPECT_STREQ("xyxyxyxy", self.c_str());
  self = self;
  self = self.c_str() + 2;
  EXPECT_STREQ("xyxyxy", self.c_str());
}

TEST(ZuString, AppendingGrowsInBlocksOf256) {
  CZuString s("abc");
  EXPECT_EQ(4u, s.GetAllocatedSize());
  s += "d";
  EXPECT_EQ(256u, s.GetAllocatedSize());
  const char* buffer = s.c_str();
  for (int i = 0; i < 251; ++i) s += 'x';  // 255 characters and the terminator
  EXPECT_EQ(256u, s.GetAllocatedSize());
  EXPECT_EQ(buffer, s.c_str());  // reused, not moved
  s += 'y';
  EXPECT_EQ(512u, s.GetAllocatedSize());
  EXPECT_EQ(256u, s.Length());
  s.ShrinkBufferToFit();
  EXPECT_EQ(257u, s.GetAllocatedSize());
  EXPECT_EQ('y', s[255]);
}

TEST(ZuString, AccessOutOfRangeReadsZero) {
  const CZuString s("abc");
  EXPECT_EQ('c', s[2]);
  EXPECT_EQ('\0', s[10]);
  EXPECT_EQ('\0', s[-1]);
  EXPECT_EQ('\0', s[static_cast<std::size_t>(3)]);
  EXPECT_STREQ("bc", s.SubStr(1, 100).c_str());
  EXPECT_STREQ("bc", s.SubStr(1, static_cast<std::size_t>(-1)).c_str());
  EXPECT_STREQ("bc", s.SubStr(1, 0xFFFFFFFFu).c_str());
  // The count is read as 32 bits: 2^32 + 1 is one character.
  EXPECT_STREQ("b", s.SubStr(1, (static_cast<std::size_t>(1) << 32) | 1).c_str());
  EXPECT_STREQ("b", s(1, 1).c_str());
  EXPECT_TRUE(s.SubStr(3, 1).IsEmpty());
  EXPECT_TRUE(s.SubStr(1, 0).IsEmpty());
}

TEST(ZuString, ComparisonIsBytewiseAndNullSafe) {
  const CZuString a("abc"), b("abd"), high("\xC3\xA9");
  EXPECT_TRUE(a < b);
  EXPECT_TRUE(a <= "abc");
  EXPECT_TRUE("abd" > a);
  EXPECT_TRUE(high > "z");  // unsigned bytes
  EXPECT_TRUE(a != "ABC");
  EXPECT_TRUE(CZuString() == static_cast<const char*>(nullptr));
  EXPECT_TRUE(CZuString("") == CZuString());
  EXPECT_FALSE(a == static_cast<const char*>(nullptr));
  EXPECT_TRUE(a >= a);
}

TEST(ZuString, FindAndReverseFind) {
  const CZuString s("abxab");
  EXPECT_EQ(1, s.Find('b'));
  EXPECT_EQ(4, s.Find('b', 2));
  EXPECT_EQ(5, s.Find('\0'));  // the terminator
  EXPECT_EQ(-1, s.Find('a', 6));
  EXPECT_EQ(-1, s.Find('a', 5));
  EXPECT_EQ(3, s.Find("ab", 1));
  EXPECT_EQ(-1, s.Find(static_cast<const char*>(nullptr)));
  EXPECT_EQ(-1, CZuString().Find('a'));
  EXPECT_EQ(-1, CZuString("abc").Find('a', 4));
  EXPECT_EQ(-1, CZuString("abc").Find('a', 3));

  EXPECT_EQ(2, CZuString("abx").ReverseFind('x', 0));
  EXPECT_EQ(3, CZuString("abc").ReverseFind('\0', 0));
  EXPECT_EQ(3, s.ReverseFind('a'));
  EXPECT_EQ(0, s.ReverseFind('a', 3));  // from index 2 down
  EXPECT_EQ(-1, s.ReverseFind('a', 6));
  EXPECT_EQ(3, s.ReverseFind("ab"));
  EXPECT_EQ(3, s.ReverseFind("ab", 2));  // the candidate at 3 is compared in full
  EXPECT_EQ(0, s.ReverseFind("ab", 3));
  EXPECT_EQ(-1, s.ReverseFind("abxab!"));
  EXPECT_EQ(-1, s.ReverseFind(static_cast<const char*>(nullptr)));
}

TEST(ZuString, EditingInPlace) {
  CZuString path("a\\b\\c");
  EXPECT_STREQ("a\\b", path.RemoveLastToken('\\').c_str());
  EXPECT_STREQ("a\\b", path.RemoveLastToken('/').c_str());
  EXPECT_STREQ("a\\b\\", path.AppendBackwardSlash().c_str());
  EXPECT_STREQ("a\\b\\", path.AppendBackwardSlash().c_str());
  EXPECT_STREQ("a\\b", path.RTrimBackwardSlash().c_str());

  CZuString empty;
  EXPECT_TRUE(empty.CheckAndAppendLastCharacter('/').IsEmpty());
  CZuString a("a/");
  EXPECT_STREQ("a/", a.AppendForwardSlash().c_str());
  EXPECT_STREQ("a", a.CheckAndRemoveLastCharacter('/').c_str());
  EXPECT_STREQ("a", a.CheckAndRemoveLastCharacter('/').c_str());
  EXPECT_STREQ("a/", a.CheckAndAppendLastCharacter('/').c_str());

  CZuString s("xxabcxx");
  EXPECT_STREQ("abcxx", s.LTrim('x').c_str());
  EXPECT_STREQ("abc", s.RTrim('x').c_str());
  EXPECT_TRUE(CZuString("xxx").LTrim('x').IsEmpty());
  CZuString blanks(" \t\r\n\v\fa b \n");
  EXPECT_STREQ("a b", blanks.LTrimAll().RTrimAll().c_str());
  EXPECT_TRUE(CZuString(" \t ").RTrimAll().IsEmpty());

  CZuString chop("abcdef");
  EXPECT_STREQ("abcdef", chop.ChopAt(7).c_str());
  EXPECT_STREQ("abcdef", chop.ChopAt(static_cast<std::size_t>(-1)).c_str());
  EXPECT_STREQ("abc", chop.ChopAt(3).c_str());

  const CZuString mixed("MiXeD 1\xC3\x89");
  EXPECT_STREQ("mixed 1\xC3\x89", mixed.ToLower().c_str());
  EXPECT_STREQ("MIXED 1\xC3\x89", mixed.ToUpper().c_str());
  EXPECT_STREQ("MiXeD 1\xC3\x89", mixed.c_str());
}

TEST(ZuString, BuffersWrittenDirectly) {
  CZuString s;
  s.AssignBuffer("a\0b", 3);
  EXPECT_EQ(3u, s.Length());
  EXPECT_EQ(0, std::memcmp(s.c_str(), "a\0b", 4));
  s.AssignBuffer(nullptr, 3);
  EXPECT_TRUE(s.IsEmpty());

  ASSERT_TRUE(s.AllocateBuffer(16));
  EXPECT_EQ(16u, s.GetAllocatedSize());
  std::memcpy(s.GetBuffer(), "written", 8);
  EXPECT_EQ(7u, s.ReCalculateLength());
  EXPECT_STREQ("written", s.c_str());
  EXPECT_TRUE(s.AllocateBuffer(8));  // within the used size: nothing changes
  EXPECT_STREQ("written", s.c_str());

  // No terminator in the buffer: the last byte becomes one.
  ASSERT_TRUE(s.AllocateBuffer(20));
  std::memset(s.GetBuffer(), 'z', 20);
  EXPECT_EQ(19u, s.ReCalculateLength());
  EXPECT_EQ(0u, CZuString().ReCalculateLength());
}

TEST(ZuString, FormatNumberedPlaceholders) {
  EXPECT_STREQ("Copied 4 of 9 files{3}",
               CZuString::Format("Copied {1} of {2} files{3}", CZuString("4"), CZuString("9")).c_str());
  EXPECT_STREQ("xx", CZuString::Format("{1}{1}", CZuString("x")).c_str());
  EXPECT_STREQ("{2}", CZuString::Format("{2}", CZuString("x")).c_str());
  EXPECT_STREQ("a{1b", CZuString::Format("a{1b", CZuString("x")).c_str());
  EXPECT_STREQ("x", CZuString::Format("x{2", CZuString("y")).c_str());
  EXPECT_STREQ("{0}{}", CZuString::Format("{0}{}", CZuString("y")).c_str());
  EXPECT_STREQ("{y", CZuString::Format("{{1}", CZuString("y")).c_str());
  EXPECT_STREQ("{99999999999999999999}",
               CZuString::Format("{99999999999999999999}", CZuString("y")).c_str());
  EXPECT_STREQ("j", CZuString::Format("{10}", CZuString("a"), CZuString("b"), CZuString("c"), CZuString("d"),
                                      CZuString("e"), CZuString("f"), CZuString("g"), CZuString("h"),
                                      CZuString("i"), CZuString("j"))
                        .c_str());
  EXPECT_STREQ("plain", CZuString::Format("plain").c_str());
}

TEST(ZuString, TokenizeQuotesEscapesAndEmptyTokens) {
  std::vector<CZuString> out;
  CZuString("\"a,b\",c").Tokenize(out, '"', '"', '\\', ',', false);
  EXPECT_EQ((Strings{"a,b", "c"}), Texts(out));
  CZuString("a\\,b").Tokenize(out, '"', '"', '\\', ',', false);
  EXPECT_EQ((Strings{"a", "b"}), Texts(out));  // the escape does not protect a delimiter
  CZuString("a\\\\b\\\"c").Tokenize(out, '"', '"', '\\', ',', false);
  EXPECT_EQ((Strings{"a\\b\"c"}), Texts(out));

  CZuString("a,,b").Tokenize(out, '"', '"', '\\', ',', true);
  EXPECT_EQ((Strings{"a", "", "b"}), Texts(out));
  CZuString("a,,b").Tokenize(out, '"', '"', '\\', ',', false);
  EXPECT_EQ((Strings{"a", "b"}), Texts(out));
  CZuString("a,").Tokenize(out, '"', '"', '\\', ',', true);
  EXPECT_EQ((Strings{"a", ""}), Texts(out));
  CZuString("a,").Tokenize(out, '"', '"', '\\', ',', false);
  EXPECT_EQ((Strings{"a"}), Texts(out));
  CZuString().Tokenize(out, '"', '"', '\\', ',', true);
  EXPECT_TRUE(out.empty());
  // A quoted empty token is a token like any other, also the last one.
  CZuString("a,\"\"").Tokenize(out, '"', '"', '\\', ',', true);
  EXPECT_EQ((Strings{"a", ""}), Texts(out));
  CZuString("\"\"").Tokenize(out, '"', '"', '\\', ',', true);
  EXPECT_EQ((Strings{""}), Texts(out));
  CZuString("\"\",\"\"").Tokenize(out, '"', '"', '\\', ',', false);
  EXPECT_TRUE(out.empty());

  CZuString("a b;c").Tokenize(out, '"', '"', '\\', " ;", false);
  EXPECT_EQ((Strings{"a", "b", "c"}), Texts(out));
  CZuString("a b").Tokenize(out, '"', '"', '\\', static_cast<const char*>(nullptr), false);
  EXPECT_EQ((Strings{"a b"}), Texts(out));

  // Each opening quote is closed only by its partner.
  CZuString("[a ]b] (c [d) e").Tokenize(out, "[(", "])", '\\', ' ', false);
  EXPECT_EQ((Strings{"a b]", "c [d", "e"}), Texts(out));
  CZuString("'a b' c").Tokenize(out, "'", static_cast<const char*>(nullptr), '\\', ' ', false);
  EXPECT_EQ((Strings{"a b", "c"}), Texts(out));
}

}  // namespace
