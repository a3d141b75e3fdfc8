#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PathMatchReference.h"
#include "errors/ErrorUtil.h"
#include "paths/PathMatch.h"
#include "support/CountingNew.h"
#include "text/StringConvert.h"

namespace {

struct TCase {
  const char* pattern;
  const char* subject;
  bool matches;
  bool recursive;
  bool everything;
};

TEST(PathMatch, MatchesAndMarksByTable) {
  const TCase cases[] = {
      {"C:\\data\\*", "C:\\data\\a.txt", true, false, false},
      {"C:\\data\\*", "C:\\data\\sub\\a.txt", false, false, false},
      {"C:\\data\\**\\*.txt", "C:\\data\\a.txt", true, true, false},
      {"C:\\data\\**\\*.txt", "C:\\data\\sub\\deeper\\a.txt", true, true, false},
      {"C:\\data\\**\\*.txt", "C:\\data\\sub\\a.doc", false, true, false},
      {"C:\\data\\**", "C:\\data\\sub\\x", true, true, true},
      {"C:\\data\\***", "C:\\data\\sub\\x", true, true, true},
      {"C:\\data\\***", "C:\\data", true, false, false},
      {"C:\\data\\**", "C:\\data", false, false, false},
      {"C:\\*\\***", "C:\\x", true, false, false},
      {"C:\\d?ta\\[a-c]*", "C:\\data\\b1", true, false, false},
      {"C:\\d?ta\\[!a-c]*", "C:\\data\\b1", false, false, false},
      {"C:\\[abc", "C:\\[abc", true, false, false},
      {"C:\\[a\\b]", "C:\\[a\\b]", true, false, false},
      {"a/*b", "a*b", true, false, false},
      {"a/*b", "axb", false, false, false},
      {"ab/", "ab/", true, false, false},
      {"ab", "a\xE2\x80\x8B" "b", true, false, false},
      {"ab", "\xEF\xBB\xBF" "a\xE2\x80\x8C" "b", true, false, false},
      {"*", "a\\b", false, false, false},
      {"?", "\\", false, false, false},
      {"[]a]", "]", true, false, false},
      {"[a-]", "-", true, false, false},
  };
  for (const TCase& c : cases) {
    CPathMatch matcher;
    ASSERT_FALSE(matcher.initialize(c.pattern, true, false).IsError()) << c.pattern;
    CPathMatchWorkData wd;
    EXPECT_EQ(matcher.match(wd, c.subject), c.matches ? PATHMATCH_MATCH : PATHMATCH_NOMATCH)
        << c.pattern << " ~ " << c.subject;
    EXPECT_EQ(wd.isRecursiveMatch(), c.recursive) << c.pattern << " ~ " << c.subject;
    EXPECT_EQ(wd.isMatchEverything(), c.everything) << c.pattern << " ~ " << c.subject;
  }
}

TEST(PathMatch, DefaultsSettersAndCase) {
  CPathMatch m;
  EXPECT_TRUE(m.getCaseSensitivity());
  EXPECT_EQ(m.getDelimiter(), '\\');
  EXPECT_EQ(m.getEscape(), '/');
  m.setDelimiter('/');
  EXPECT_EQ(m.getEscape(), '\\');
  m.setDelimiter('|');  // kept, escape unchanged
  EXPECT_EQ(m.getDelimiter(), '|');
  EXPECT_EQ(m.getEscape(), '\\');

  CPathMatch ci;
  ci.caseInsensitive();
  ASSERT_FALSE(ci.initialize("[A-Z]*", true, false).IsError());
  EXPECT_TRUE(ci.IsLongMode());
  EXPECT_EQ(ci.match("abc"), PATHMATCH_MATCH);
  EXPECT_EQ(ci.match("ABC"), PATHMATCH_MATCH);
  ASSERT_FALSE(ci.initialize("C:\\Data\\*", true, false).IsError());
  EXPECT_FALSE(ci.IsLongMode());
  EXPECT_EQ(ci.match("c:\\DATA\\x"), PATHMATCH_MATCH);
  CPathMatch cs;
  ASSERT_FALSE(cs.initialize("C:\\Data\\*", true, false).IsError());
  EXPECT_EQ(cs.match("c:\\data\\x"), PATHMATCH_NOMATCH);
}

TEST(PathMatch, CompileModesAndLimits) {
  CPathMatch m;
  // Literal: wildcards match only themselves.
  ASSERT_FALSE(m.initialize("C:\\a*b?[c]/", false, false).IsError());
  EXPECT_EQ(std::string(m.byteTemplate().getPattern()), "C:\\a/*b/?/[c]//");
  EXPECT_EQ(m.match("C:\\a*b?[c]/"), PATHMATCH_MATCH);
  EXPECT_EQ(m.match("C:\\axb?[c]/"), PATHMATCH_NOMATCH);
  // Name-only wildcards: the folder part is literal.
  ASSERT_FALSE(m.initialize("C:\\a*\\*.txt", true, true).IsError());
  EXPECT_EQ(m.match("C:\\a*\\x.txt"), PATHMATCH_MATCH);
  EXPECT_EQ(m.match("C:\\ab\\x.txt"), PATHMATCH_NOMATCH);
  CZuError noDelimiter = m.initialize("*.txt", true, true);
  EXPECT_TRUE(FXErrorUtil::IsWin32(noDelimiter, 1627));
  EXPECT_NE(noDelimiter.AsString().find("Pattern contains no delimiter, Delimiter=0x5C"), std::string::npos);

  EXPECT_FALSE(m.initialize(std::string(1025, 'a').c_str(), true, false).IsError());
  CZuError tooLong = m.initialize(std::string(1026, 'a').c_str(), true, false);
  EXPECT_TRUE(FXErrorUtil::IsWin32(tooLong, 111));
  EXPECT_NE(tooLong.AsString().find("Pattern too long, MaxLength=1026"), std::string::npos);
  // 1024 characters and one inserted escape reach the limit.
  EXPECT_TRUE(FXErrorUtil::IsWin32(m.initialize((std::string(1024, 'a') + "*").c_str(), false, false), 111));
  EXPECT_FALSE(m.initialize((std::string(1023, 'a') + "*").c_str(), false, false).IsError());
  // A trailing escape stands for itself.
  ASSERT_FALSE(m.initialize("ab/", true, false).IsError());
  EXPECT_EQ(m.match("ab/"), PATHMATCH_MATCH);
}

TEST(PathMatch, NextBasenameAfterFolderMatch) {
  struct {
    const char* pattern;
    const char* folder;
    CBaseNameType type;
    const char* text;
  } const cases[] = {
      {"C:\\data\\sub\\*.txt", "C:\\data", BASENAME_LITERAL, "sub"},
      {"C:\\data\\su*\\x", "C:\\data", BASENAME_LITERAL_PREFIX, "su"},
      {"C:\\data\\*\\x", "C:\\data", BASENAME_WILDCARD_OR_END, ""},
      {"C:\\*\\s/*b\\x", "C:\\data", BASENAME_LITERAL, "s*b"},
      {"C:\\data\\**\\x", "C:\\data\\y", BASENAME_WILDCARD_OR_END, ""},
      {"\\data\\x", "\\", BASENAME_LITERAL, "data"},
      {"C:\\d?ta\\s\xC3\xBC" "b\\x", "C:\\data", BASENAME_LITERAL, "s\xC3\xBC" "b"},
      {"C:\\data\\x", "D:\\data", BASENAME_NONE, ""},
  };
  for (const auto& c : cases) {
    CPathMatch m;
    ASSERT_FALSE(m.initialize(c.pattern, true, false).IsError());
    CPathMatchWorkData wd;
    EXPECT_EQ(m.match(wd, c.folder), PATHMATCH_NOMATCH) << c.pattern;
    std::string basename;
    EXPECT_EQ(m.getNextBasename(wd, basename), c.type) << c.pattern;
    EXPECT_EQ(basename, c.text) << c.pattern;
  }
}

TEST(PathMatch, UncRewrite) {
  CPathMatchUnc m;
  ASSERT_FALSE(m.initialize("\\\\srv\\share\\*", true, false).IsError());
  EXPECT_EQ(m.match("\\\\srv\\share\\x"), PATHMATCH_MATCH);
  EXPECT_EQ(m.match("\\\\srv\\other\\x"), PATHMATCH_NOMATCH);
  ASSERT_FALSE(m.initialize("\\UNC-NT_srv\\**", true, false).IsError());
  EXPECT_EQ(m.match("\\\\srv\\share\\deep\\x"), PATHMATCH_MATCH);
}

TEST(PathMatch, LongModeFallsBackOnInvalidSubject) {
  CPathMatch m;
  ASSERT_FALSE(m.initialize("a?c", true, false).IsError());
  ASSERT_TRUE(m.IsLongMode());
  EXPECT_EQ(m.match("a\xC3\xA9" "c"), PATHMATCH_MATCH);     // one code point
  EXPECT_EQ(m.match("a\xFF" "c"), PATHMATCH_MATCH);         // one byte, byte matcher
  EXPECT_EQ(m.match("a\xC3\xA9\xC3\xA9" "c"), PATHMATCH_NOMATCH);
  // A long-mode pattern must be UTF-8: the conversion's failure is returned.
  const CZuError invalid = m.initialize("a?\xFF", true, false);
  EXPECT_TRUE(FXErrorUtil::IsWin32(invalid, 122));
  EXPECT_NE(invalid.AsString().find("CPathMatch::initialize"), std::string::npos);
  EXPECT_FALSE(m.IsLongMode());
}

TEST(PathMatch, ByteModeDoesNotAllocate) {
  CPathMatch m;
  ASSERT_FALSE(m.initialize("C:\\data\\**\\*.t*t", true, false).IsError());
  const std::string subject = "C:\\data\\a\\b\\c\\report.txt";
  CPathMatchWorkData wd;
  const long before = ZuTest::AllocationCount();
  for (int i = 0; i < 100; ++i) ASSERT_EQ(m.match(wd, subject.c_str()), PATHMATCH_MATCH);
  EXPECT_EQ(ZuTest::AllocationCount(), before);
}

// Stars and long subjects that take a plain recursion exponential time.
TEST(PathMatch, BacktrackingIsBounded) {
  const std::string tenKiB(10 * 1024, 'a');
  const std::string deep = [] {
    std::string s = "C:";
    for (int i = 0; i < 4096; ++i) s += "\\a";
    return s;
  }();
  struct {
    std::string pattern;
    const std::string* subject;
    bool matches;
  } const cases[] = {
      {"*a*a*a*a*a*a*a*a*b", &tenKiB, false},
      {"*a*a*a*a*a*a*a*a*", &tenKiB, true},
      {"?*?*?*?*?*?*?*?*b", &tenKiB, false},
      {"C:\\**\\a\\**\\a\\**\\a\\**\\b", &deep, false},
      {"C:\\**\\*a*\\**\\*a*\\**\\a", &deep, true},
      {"C:\\*\\**\\*\\**\\*\\**\\*\\b", &deep, false},
  };
  for (const auto& c : cases) {
    CPathMatch m;
    ASSERT_FALSE(m.initialize(c.pattern.c_str(), true, false).IsError());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(m.match(c.subject->c_str()), c.matches ? PATHMATCH_MATCH : PATHMATCH_NOMATCH) << c.pattern;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)) << c.pattern;
  }
  // 64 KiB of subject against a pattern of the maximum length.
  CPathMatch m;
  std::string pattern;
  while (pattern.size() < 1020) pattern += "*a?";
  pattern += "b";
  ASSERT_FALSE(m.initialize(pattern.c_str(), true, false).IsError());
  EXPECT_EQ(m.match(std::string(64 * 1024, 'a').c_str()), PATHMATCH_NOMATCH);
}

// Random short patterns and subjects over an alphabet rich in the elements
// that interact: the bounded matcher must agree with the plain recursion on
// the answer, every mark and the next-basename position.
template <class C>
void Differential(unsigned seed, int rounds) {
  static const char* const kPatternPieces[] = {"a", "b", "\\", "*", "**", "***", "?", "[a-b]", "[!a]", "[", "]",
                                               "/", "/*", ".", "A", "\\***", "[\\]"};
  static const char* const kSubjectPieces[] = {"a", "b", "\\", ".", "A", "[", "*", "\xE2\x80\x8B"};
  std::mt19937 rng(seed);
  auto build = [&](const char* const* pieces, std::size_t n, int maxCount) {
    std::basic_string<C> out;
    const int count = static_cast<int>(rng() % static_cast<unsigned>(maxCount + 1));
    for (int i = 0; i < count; ++i) {
      const char* piece = pieces[rng() % n];
      if constexpr (sizeof(C) == 1) {
        out += piece;
      } else if (static_cast<unsigned char>(piece[0]) == 0xE2) {
        out += C(0x200B);
      } else {
        for (const char* p = piece; *p; ++p) out += C(static_cast<unsigned char>(*p));
      }
    }
    return out;
  };
  for (int round = 0; round < rounds; ++round) {
    const std::basic_string<C> pattern = build(kPatternPieces, std::size(kPatternPieces), 7);
    const std::basic_string<C> subject = build(kSubjectPieces, std::size(kSubjectPieces), 9);
    const int flags = static_cast<int>(rng() % 8);
    const bool insensitive = rng() % 4 == 0;
    const std::string where = "round " + std::to_string(round) + " flags " + std::to_string(flags) + " pattern " +
                              std::string(pattern.begin(), pattern.end()) + " subject " +
                              std::string(subject.begin(), subject.end());
    const std::string differs = ZuTest::CompareWithReference(pattern, subject, flags, insensitive);
    ASSERT_TRUE(differs.empty()) << where << ": " << differs;
  }
}

// CPathMatch's shortcuts (the plain lead, ASCII subjects in long mode)
// must give what its templates give.
TEST(PathMatch, PublicMatcherAgreesWithItsTemplates) {
  static const char* const kPieces[] = {"C:", "\\", "a", "A", "\xC3\xA9", "*", "?", "[a-z]", "[!a]", "**", "x"};
  std::mt19937 rng(5);
  auto build = [&](int maxCount) {
    std::string out;
    for (int i = static_cast<int>(rng() % static_cast<unsigned>(maxCount)); i >= 0; --i) out += kPieces[rng() % 11];
    return out;
  };
  for (int round = 0; round < 20000; ++round) {
    const std::string pattern = build(6);
    std::string subject = build(8);
    if (rng() % 8 == 0) subject += "\xFF";
    CPathMatch m;
    if (rng() % 3 == 0) m.caseInsensitive();
    ASSERT_FALSE(m.initialize(pattern.c_str(), true, false).IsError());
    CPathMatchWorkData got, want;
    const CPathMatchResult result = m.match(got, subject.c_str());
    std::wstring wide = FXString::ToWstring(subject);
    std::basic_string<unsigned long> points(wide.begin(), wide.end());
    const bool valid = subject.find('\xFF') == std::string::npos;
    const CPathMatchResult expected = m.IsLongMode() && valid ? m.longTemplate().match(want, points.c_str())
                                                              : m.byteTemplate().match(want, subject.c_str());
    const std::string where = pattern + " ~ " + subject;
    ASSERT_EQ(result, expected) << where;
    ASSERT_EQ(got.isRecursiveMatch(), want.isRecursiveMatch()) << where;
    ASSERT_EQ(got.isMatchEverything(), want.isMatchEverything()) << where;
    ASSERT_EQ(got.isLiteralMatch(), want.isLiteralMatch()) << where;
    ASSERT_EQ(got.nextBasenameExists(), want.nextBasenameExists()) << where;
    std::string gotNext;
    const CBaseNameType gotType = m.getNextBasename(got, gotNext);
    if (m.IsLongMode() && valid) {
      unsigned long buffer[CPathMatchTemplate<unsigned long>::kMaxPatternLength + 1];
      ASSERT_EQ(gotType, m.longTemplate().getNextBasename(want, buffer, std::size(buffer))) << where;
      std::wstring next;
      for (const unsigned long* p = buffer; *p; ++p) next += static_cast<wchar_t>(*p);
      ASSERT_EQ(gotNext, FXString::ToString(next)) << where;
    } else {
      char buffer[CPathMatchTemplate<char>::kMaxPatternLength + 1];
      ASSERT_EQ(gotType, m.byteTemplate().getNextBasename(want, buffer, sizeof buffer)) << where;
      ASSERT_EQ(gotNext, buffer) << where;
    }
  }
}

TEST(PathMatch, AgreesWithPlainRecursionOnBytes) { Differential<char>(1, 300000); }
TEST(PathMatch, AgreesWithPlainRecursionOnCodePoints) { Differential<unsigned long>(2, 200000); }

}  // namespace
