#include <list>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"
#include "text/StringAlgo.h"
#include "text/StringFormat.h"

namespace {

typedef std::vector<std::string> Strings;

Strings SplitOf(const std::string& text, const std::string& delimiter, unsigned int flags) {
  Strings out{"stale"};
  FXString::Split(text, delimiter, out, flags);
  return out;
}

TEST(StringAlgo, SplitWithAndWithoutMerging) {
  for (unsigned int flags : {0u, FXString::kSplitMergeDelimiters}) {
    SCOPED_TRACE(flags);
    EXPECT_EQ((Strings{"a", "b"}), SplitOf("a,b", ",", flags));
    EXPECT_EQ((Strings{"", "a"}), SplitOf(",a", ",", flags));
    EXPECT_EQ((Strings{"a", ""}), SplitOf("a,", ",", flags));
    EXPECT_EQ(Strings{}, SplitOf("", ",", flags));
    EXPECT_EQ(Strings{"a,b"}, SplitOf("a,b", "", flags));
    EXPECT_EQ((Strings{"a", "b", "c"}), SplitOf("a::b::c", "::", flags));
  }
  EXPECT_EQ((Strings{"a", "", "b"}), SplitOf("a,,b", ",", 0));
  EXPECT_EQ((Strings{"a", "b"}), SplitOf("a,,b", ",", FXString::kSplitMergeDelimiters));
  EXPECT_EQ((Strings{"", "", ""}), SplitOf(",,", ",", 0));
  EXPECT_EQ((Strings{"", ""}), SplitOf(",,,", ",", FXString::kSplitMergeDelimiters));
  EXPECT_EQ((Strings{"a", ":b"}), SplitOf("a:::b", "::", FXString::kSplitMergeDelimiters));

  std::list<std::wstring> wide{L"stale"};
  FXString::Split(std::wstring(L"x;;y"), L";", wide, FXString::kSplitMergeDelimiters);
  EXPECT_EQ((std::list<std::wstring>{L"x", L"y"}), wide);
  std::list<std::string> narrow;
  FXString::Split("p q", " ", narrow);
  EXPECT_EQ((std::list<std::string>{"p", "q"}), narrow);
}

TEST(StringAlgo, SplitAndJoinRoundTrip) {
  for (const std::string text : {"", "a", "a,,b", ",x,", "\xC3\xA9,\xE6\x9D\xB1"}) {
    Strings parts;
    FXString::Split(text, ",", parts);
    EXPECT_EQ(text, FXString::Join(parts, ","));
    std::vector<std::wstring> wide;
    FXString::Split(std::wstring(text.begin(), text.end()), L",", wide);
    std::wstring joined = L"stale";
    FXString::Join(wide, L",", joined);
    EXPECT_EQ(std::wstring(text.begin(), text.end()), joined);
  }
  EXPECT_EQ("a,,b", FXString::Join(std::list<std::string>{"a", "", "b"}, ","));
  EXPECT_EQ("a-b-c", FXString::Join(std::set<std::string>{"c", "a", "b"}, "-"));  // sorted
  EXPECT_EQ("", FXString::Join(Strings{}, ","));
  EXPECT_EQ("only", FXString::Join(Strings{"only"}, ","));
  const Strings items{"a", "b", "c", "d"};
  EXPECT_EQ("b, c", FXString::Join(items, ", ", 1, 2));
  EXPECT_EQ("c,d", FXString::Join(items, ",", 2, 100));
  EXPECT_EQ("", FXString::Join(items, ",", 4, 1));
  std::string out = "stale";
  FXString::Join(std::set<std::string>{}, ",", out);
  EXPECT_EQ("", out);
}

TEST(StringAlgo, SplitArgumentsKeepsQuotedRuns) {
  Strings out;
  FXString::SplitArguments("copy \"C:\\My Files\\a b.txt\" D:\\x", " ", out);
  EXPECT_EQ((Strings{"copy", "\"C:\\My Files\\a b.txt\"", "D:\\x"}), out);
  FXString::SplitArguments("a \"b  c\" d", " ", out);
  EXPECT_EQ((Strings{"a", "\"b  c\"", "d"}), out);  // the run's own blanks are kept
  FXString::SplitArguments("\"x\" \"open end", " ", out);
  EXPECT_EQ((Strings{"\"x\"", "\"open end"}), out);
  std::list<std::string> listed;
  FXString::SplitArguments("a  b", " ", listed, FXString::kSplitMergeDelimiters);
  EXPECT_EQ((std::list<std::string>{"a", "b"}), listed);
  FXString::SplitPaths("\"C:\\a;b\";D:\\c;;E:", ";", out);
  EXPECT_EQ((Strings{"\"C:\\a;b\"", "D:\\c", "", "E:"}), out);
  // A lone quote both begins and ends with a quote: it opens nothing.
  FXString::SplitArguments("a \" b c", " ", out);
  EXPECT_EQ((Strings{"a", "\"", "b", "c"}), out);
  FXString::SplitArguments("\" y\"", " ", out);
  EXPECT_EQ((Strings{"\"", "y\""}), out);
  FXString::SplitArguments("\"x y \" z", " ", out);
  EXPECT_EQ((Strings{"\"x y \"", "z"}), out);
}

TEST(StringAlgo, AppendWithDelimiter) {
  std::stringstream longer;
  FXString::AppendWithDelimiter(longer, "a", ", ");
  FXString::AppendWithDelimiter(longer, 7, std::string(", "));
  FXString::AppendWithDelimiter(longer, "", ", ");
  FXString::AppendWithDelimiter(longer, "b", ", ");  // the stream ends with ", ": no second one
  FXString::AppendWithDelimiter(longer, "c", "");
  EXPECT_EQ("a, 7, bc", longer.str());

  // One character: compared with the character at the read position, which
  // moves on by one with every call.
  std::stringstream one;
  FXString::AppendWithDelimiter(one, "ab", ',');  // empty stream: no delimiter
  FXString::AppendWithDelimiter(one, "c", ',');   // reads 'a'
  FXString::AppendWithDelimiter(one, "d", ',');   // reads 'b'
  FXString::AppendWithDelimiter(one, "e", ',');   // reads ',': none written
  EXPECT_EQ("ab,c,de", one.str());
  std::stringstream shortText;
  shortText << "x";
  FXString::AppendWithDelimiter(shortText, "y", ";");  // reads 'x': "x;y"
  FXString::AppendWithDelimiter(shortText, "z", ";");  // reads ';': "x;yz"
  FXString::AppendWithDelimiter(shortText, "", ";");   // reads 'y': "x;yz;"
  FXString::AppendWithDelimiter(shortText, "", ";");   // reads 'z': "x;yz;;"
  FXString::AppendWithDelimiter(shortText, "", ";");   // reads ';'
  FXString::AppendWithDelimiter(shortText, "", ";");   // reads ';'
  FXString::AppendWithDelimiter(shortText, "w", ";");  // at the end: written, and the stream still works
  EXPECT_EQ("x;yz;;;w", shortText.str());
}

TEST(StringAlgo, TrimAndCase) {
  std::string s = "  ";
  FXString::Trim(s, " ");
  EXPECT_EQ("", s);
  s = "xaxx";
  FXString::Trim(s, "x");
  EXPECT_EQ("a", s);
  std::wstring w = L" \tab \t";
  FXString::TrimLeft(w, L" \t");
  EXPECT_EQ(L"ab \t", w);
  FXString::TrimRight(w, L" \t");
  EXPECT_EQ(L"ab", w);
  s = "MiXeD \xC3\x89";
  FXString::ToLower(s);
  EXPECT_EQ("mixed \xC3\x89", s);
  w = L"Stra\u00DFe";
  FXString::ToUpper(w);
  EXPECT_EQ(L"STRA\u00DFE", w);
}

TEST(StringAlgo, FindWithAndWithoutCase) {
  const char* hay = "The Quick brown fox";
  EXPECT_EQ(hay + 4, FXString::FindString(hay, "quick", true));
  EXPECT_EQ(nullptr, FXString::FindString(hay, "quick", false));
  EXPECT_EQ(hay, FXString::FindString(hay, "", false));
  EXPECT_EQ(nullptr, FXString::FindString("", "a", true));
  EXPECT_EQ(nullptr, FXString::FindString(static_cast<const char*>(nullptr), "a", true));
  EXPECT_EQ(0, FXString::FindStringPos(std::string("abc"), "", false));
  EXPECT_EQ(-1, FXString::FindStringPos(std::string(""), "abc", false));
  EXPECT_EQ(16, FXString::FindStringPos(std::string(hay), "FOX", true));
  EXPECT_EQ(3, FXString::FindStringPos(std::string("a1_@[\x80"), "@[\x80", true));
  EXPECT_EQ(-1, FXString::FindStringPos(std::string("a1_`{"), "@[", true));  // not letters: no folding
  // Candidates across the 8-byte blocks of the narrow search, and a match
  // that ends exactly at the end of the text.
  std::string longText(100, 'q');
  longText += "qQqQxY";
  EXPECT_EQ(102, FXString::FindStringPos(longText, "QQXy", true));
  EXPECT_EQ(-1, FXString::FindStringPos(longText, "QQXyz", true));

  // Every offset, for the search that tests sixteen positions at a time:
  // near misses before the match, and needles of one byte and of
  // non-letters.
  for (std::size_t at = 0; at < 40; ++at) {
    std::string text(64, 'x');
    text.replace(0, at, std::string(at, 'N'));  // "N" matches the first byte only
    text.replace(at, 4, "nEe_");
    EXPECT_EQ(static_cast<long long>(at), FXString::FindStringPos(text, "NEE_", true)) << at;
    EXPECT_EQ(static_cast<long long>(at), FXString::FindStringPos(text, "e_", true) - 2) << at;
    EXPECT_EQ(static_cast<long long>(at + 3), FXString::FindStringPos(text, "_", true)) << at;
    EXPECT_EQ(-1, FXString::FindStringPos(text, "NEE_X_", true)) << at;
  }

  // Wide text without case compares the folded low bytes only.
  const std::wstring word = L"x\u0161y";
  EXPECT_EQ(1, FXString::FindStringPos(word, L"A", true));
  EXPECT_EQ(-1, FXString::FindStringPos(word, L"A", false));
  EXPECT_EQ(word.c_str() + 1, FXString::FindString(word.c_str(), L"\u0161Y", true));
}

TEST(StringAlgo, RemovePrefixAndSuffix) {
  std::string s = "prefix.body.SUFFIX";
  EXPECT_FALSE(FXString::RemoveLeft(s, "PREFIX"));
  EXPECT_TRUE(FXString::RemoveLeftNoCase(s, "PREFIX."));
  EXPECT_FALSE(FXString::RemoveRight(s, ".suffix"));
  EXPECT_TRUE(FXString::RemoveRightNoCase(s, ".suffix"));
  EXPECT_EQ("body", s);
  EXPECT_TRUE(FXString::RemoveLeft(s, ""));  // present, removes nothing
  EXPECT_FALSE(FXString::RemoveRight(s, "longer than body"));
  std::string empty;
  EXPECT_FALSE(FXString::RemoveLeft(empty, ""));
  std::wstring w = L"\\\\?\\C:\\x";
  EXPECT_TRUE(FXString::RemoveLeft(w, L"\\\\?\\"));
  EXPECT_TRUE(FXString::RemoveRight(w, std::wstring(L"\\x")));
  EXPECT_EQ(L"C:", w);
}

TEST(StringAlgo, Replace) {
  std::string s = "aaa";
  EXPECT_EQ(2, FXString::ReplaceAll(s, "a", "b", 1));
  EXPECT_EQ("abb", s);
  s = "aa";
  EXPECT_EQ(2, FXString::ReplaceAll(s, "a", "aa"));
  EXPECT_EQ("aaaa", s);  // replacements are never searched again
  EXPECT_EQ(0, FXString::ReplaceAll(s, "", "x"));
  EXPECT_EQ(0, FXString::ReplaceAll(s, "a", "x", 5));
  s = "One one ONE";
  EXPECT_EQ(3, FXString::ReplaceAllNoCase(s, "one", "1"));
  EXPECT_EQ("1 1 1", s);
  std::wstring w = L"\u0161a";  // _wcsnicmp folds whole characters: U+0161 is not 'a'
  EXPECT_EQ(1, FXString::ReplaceAllNoCase(w, L"A", L"b"));
  EXPECT_EQ(L"\u0161b", w);
  EXPECT_EQ("x-y-z", FXString::CopyAndReplaceAll(std::string("x y z"), " ", "-"));

  s = "<a>old</a><a>x</a>";
  EXPECT_EQ(2, FXString::ReplaceAllByMatchingLeftAndRight(s, "<a>", "</a>", "new"));
  EXPECT_EQ("<a>new</a><a>new</a>", s);
  // The next search starts at the old index of the right marker: a longer
  // replacement makes it start inside the inserted text.
  s = "[ab][cd]";
  EXPECT_EQ(2, FXString::ReplaceAllByMatchingLeftAndRight(s, "[", "]", "123456"));
  EXPECT_EQ("[123456][123456]", s);
  s = "[x]";
  EXPECT_EQ(0, FXString::ReplaceAllByMatchingLeftAndRight(s, "[", "]", "y", 3));
  EXPECT_EQ(0, FXString::ReplaceAllByMatchingLeftAndRight(s, "", "]", "y"));
  // A replacement that keeps making markers ends.
  s = "<>";
  EXPECT_EQ(2, FXString::ReplaceAllByMatchingLeftAndRight(s, "<", ">", "<<>>"));

  s = "C:\\dir\\file.TXT";
  EXPECT_EQ(0, FXString::ReplaceLeft(s, "c:", "D:"));
  EXPECT_EQ(1, FXString::ReplaceLeftNoCase(s, "c:", "D:"));
  EXPECT_EQ(0, FXString::ReplaceRight(s, ".txt", ".log"));
  EXPECT_EQ(1, FXString::ReplaceRightNoCase(s, ".txt", ".log"));
  EXPECT_EQ(0, FXString::ReplaceRight(s, "", "!"));
  EXPECT_EQ("D:\\dir\\file.log", s);
}

TEST(StringFormat, NumbersSizesAndIdentifiers) {
  EXPECT_EQ("1,234,567", FXString::FormatNumber(1234567));
  EXPECT_EQ("-123,456", FXString::FormatNumber(-123456));
  EXPECT_EQ("999", FXString::FormatNumber(999u));
  EXPECT_EQ("-1", FXString::FormatNumber(-1));
  EXPECT_EQ("18,446,744,073,709,551,615", FXString::FormatNumber(18446744073709551615ull));
  EXPECT_EQ("-9,223,372,036,854,775,808", FXString::FormatNumber(-9223372036854775807LL - 1));

  EXPECT_EQ("0 B ", FXString::FormatByteSize(0, 2));
  EXPECT_EQ("512 B ", FXString::FormatByteSize(512, 2));
  EXPECT_EQ("1.50 KB", FXString::FormatByteSize(1536, 2));
  EXPECT_EQ("1 MB", FXString::FormatByteSize(1048576, 2));
  EXPECT_EQ("1.33301 KB", FXString::FormatByteSize(1365, -1));
  EXPECT_EQ("16 EB", FXString::FormatByteSize(18446744073709551615ull, 1));

  const GUID guid = {0x6B29FC40, 0xCA47, 0x1067, {0xB3, 0x1D, 0x00, 0xDD, 0x01, 0x06, 0x62, 0xDA}};
  EXPECT_EQ("{6B29FC40-CA47-1067-B31D-00DD010662DA}", FXString::AsString(guid));
  EXPECT_EQ(L"{6B29FC40-CA47-1067-B31D-00DD010662DA}", FXString::AsWstring(guid));
  LUID luid;
  luid.LowPart = 0x3E7;
  luid.HighPart = 0;
  EXPECT_EQ("0:0x3e7", FXString::AsString(luid));
  EXPECT_EQ(L"0:0x3e7", FXString::AsWstring(luid));
}

TEST(StringFormat, OverflowIsReportedAndTheTextKept) {
  std::string out = "stale";
  EXPECT_FALSE(FXString::Format(out, "%s-%d", "x", 5).IsError());
  EXPECT_EQ("x-5", out);
  // Needs more than the first buffer (2 * 2 + 512) but fits after growing.
  const std::string big(20000, 'b');
  EXPECT_FALSE(FXString::Format(out, "%s", big.c_str()).IsError());
  EXPECT_EQ(big, out);
  // "%s" starts at 2 * 2 + 512 = 516 and grows by 16384 until the size
  // reaches 131072: the last buffer holds 516 + 8 * 16384 = 131588, which
  // leaves room for 131587 characters and the terminator.
  const std::size_t largest = 516 + 8 * 16384 - 1;
  const std::string exact(largest, 'e');
  EXPECT_FALSE(FXString::Format(out, "%s", exact.c_str()).IsError());
  EXPECT_EQ(exact.size(), out.size());
  const std::string over(largest + 1, 'h');
  const CZuError r = FXString::Format(out, "%s", over.c_str());
  EXPECT_EQ(DWORD(ERROR_BUFFER_OVERFLOW), FXErrorUtil::GetWin32(r));
  EXPECT_NE(std::string::npos, r.AsString().find("FXString::FormatArgList"));
  EXPECT_EQ(exact.size(), out.size());
  EXPECT_TRUE(out == FXString::Format("%s", over.c_str()));
  // L"%ls" is one character longer: 518 + 8 * 16384.
  std::wstring wide;
  const std::wstring wideExact(largest + 2, L'w');
  EXPECT_FALSE(FXString::Format(wide, L"%ls", wideExact.c_str()).IsError());
  EXPECT_EQ(wideExact.size(), wide.size());
  EXPECT_EQ(DWORD(ERROR_BUFFER_OVERFLOW),
            FXErrorUtil::GetWin32(FXString::Format(wide, L"%ls", std::wstring(largest + 3, L'w').c_str())));
  EXPECT_EQ(wideExact.size(), wide.size());
  EXPECT_EQ(L"7 x", FXString::Format(L"%d %ls", 7, L"x"));
  EXPECT_EQ(DWORD(ERROR_INVALID_PARAMETER), FXErrorUtil::GetWin32(FXString::Format(out, nullptr)));
}

}  // namespace
