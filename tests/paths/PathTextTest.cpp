// The text rules of FXPath, each table run for narrow and wide strings. No
// expectation depends on the platform: the same program runs on Linux and
// under wine.
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "paths/Path.h"
#include "support/CountingNew.h"

namespace {

template <class Char>
std::basic_string<Char> S(std::string_view ascii) {
  return std::basic_string<Char>(ascii.begin(), ascii.end());
}

template <class Char>
class PathText : public ::testing::Test {};
using CharTypes = ::testing::Types<char, wchar_t>;
TYPED_TEST_SUITE(PathText, CharTypes);

bool Has(const CZuError& r, const char* text) { return r.AsString().find(text) != std::string::npos; }

TYPED_TEST(PathText, Classification) {
  using C = TypeParam;
  const std::string guid = "{01234567-89ab-cdef-0123-456789abcdef}";
  struct TRow {
    std::string path;
    bool device, shadow, volumeGuid;
  } rows[] = {
      {"\\\\?\\GLOBALROOT\\Device", true, false, false},
      {"\\\\?\\GLOBALROOT\\Devic", false, false, false},
      {"\\\\?\\globalroot\\device\\HarddiskVolume1\\x", true, false, false},
      {"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy", true, true, false},
      {"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy12\\a", true, true, false},
      {"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCop", true, false, false},
      {"\\\\?\\Volume{", false, false, true},  // the prefix alone decides
      {"\\\\?\\volume" + guid + "\\", false, false, true},
      {"\\\\.\\Volume" + guid, false, false, true},
      {"\\\\?\\Harddisk" + guid, false, false, true},
      {"\\\\?\\X{0123}", false, false, false},
      {"\\\\?\\X{01234567-89ab-cdef-0123-456789abcdef", false, false, false},  // no "}"
      {"C:\\" + guid, false, false, false},
      {"\\\\?", false, false, false},
      {"", false, false, false},
      {"\\", false, false, false},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.path);
    const auto p = S<C>(row.path);
    EXPECT_EQ(row.device, FXPath::IsDevicePath(p));
    EXPECT_EQ(row.shadow, FXPath::IsShadowPath(p));
    EXPECT_EQ(row.volumeGuid, FXPath::IsVolumeGuidPath(p));
  }
  EXPECT_TRUE(FXPath::IsVolumeUniqueId(S<C>("UniqueId:00fF")));
  EXPECT_FALSE(FXPath::IsVolumeUniqueId(S<C>("UniqueId:0")));
  EXPECT_FALSE(FXPath::IsVolumeUniqueId(S<C>("UniqueId:")));
  EXPECT_FALSE(FXPath::IsVolumeUniqueId(S<C>("UniqueId:0g")));
  EXPECT_FALSE(FXPath::IsVolumeUniqueId(S<C>("\\\\?\\Volume" + guid)));
}

TYPED_TEST(PathText, Sameness) {
  using C = TypeParam;
  struct TRow {
    const char *a, *b;
    bool same;
  } rows[] = {
      {"C:\\Data", "c:\\data\\", true},
      {"C:\\Data", "\\\\?\\C:\\DATA", true},
      {"\\\\srv\\s", "\\\\?\\UNC\\srv\\s", true},
      {"\\\\srv\\s", "\\\\?\\unc\\SRV\\S\\", true},
      {"\\\\srv\\s", "\\srv\\s", false},  // UNC against rooted
      {"\\srv\\s", "srv\\s", true},       // one leading "\" is disregarded
      {"", "\\", true},
      {"", "", true},
      {"C:\\a\\", "C:\\a\\\\", false},  // only one trailing "\" is disregarded
      {"C:\\a", "C:\\ab", false},
      {"\\\\?\\Volume{x}\\", "\\\\?\\volume{X}", true},
      {"\\\\?\\UNC\\srv\\s", "\\\\?\\srv\\s", false},
      // Prefixes cut short or nearly spelled.
      {"\\\\?\\UNC", "UNC", true},
      {"\\\\?\\UNC\\", "\\\\", true},
      {"\\\\?", "\\\\?\\", false},
      {"\\\\?\\uNc\\srv", "\\\\srv", true},
      {"\\\\?\\U5C\\x", "\\\\?\\UNC\\x", false},
      {"\\\\?\\UN\\x", "UN\\x", true},
      // Long enough to be compared a word at a time: only A-Z fold.
      {"C:\\Some Long Folder\\With Mixed Case\\File.TXT", "c:\\some long folder\\with mixed CASE\\file.txt", true},
      {"C:\\abcdefgh\\@@@@@@@@\\x", "C:\\abcdefgh\\````````\\x", false},
      {"C:\\abcdefgh\\[[[[[[[[\\x", "C:\\abcdefgh\\{{{{{{{{\\x", false},
      {"C:\\abcdefgh\\\xC1\xC1\xC1\xC1\xC1\xC1\xC1\xC1", "C:\\abcdefgh\\\xE1\xE1\xE1\xE1\xE1\xE1\xE1\xE1", false},
      {"C:\\abcdefgh\\ZZZZZZZZ\\AAAAAAAA", "C:\\abcdefgh\\zzzzzzzz\\aaaaaaaa", true},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(std::string(row.a) + " | " + row.b);
    EXPECT_EQ(row.same, FXPath::IsSamePathAs(S<C>(row.a), S<C>(row.b)));
    EXPECT_EQ(row.same, FXPath::IsSamePathAs(S<C>(row.b), S<C>(row.a)));
  }
}

// Case is folded a word of characters at a time: one character changed at
// every position of texts of 1 to 17 characters (short of, at and across
// word boundaries, narrow and wide) must give the answer of a character by
// character comparison, for the neighbours of the letters in ASCII, for
// bytes above it and, in wide text, for characters whose low byte is a
// letter. A backslash probe at either end is reduced away on both sides
// alike, so the expectation still holds.
TYPED_TEST(PathText, SamenessFoldsOnlyAsciiLettersAtEveryPosition) {
  using C = TypeParam;
  auto lower = [](C c) { return c >= C('A') && c <= C('Z') ? C(c - 'A' + 'a') : c; };
  std::basic_string<C> probes;
  for (const char c : std::string_view("@AZ[`az{Mm0\\\x7F\x80\xC1\xE1\xFF")) probes.push_back(C(c));
  if constexpr (sizeof(C) > 1) {
    for (const unsigned v : {0x141u, 0x161u, 0x4100u, 0x6100u, 0xC0C1u, 0xFF41u, 0xFF61u}) probes.push_back(C(v));
  }
  if constexpr (sizeof(C) > 2) {
    for (const unsigned v : {0x10041u, 0x10061u, 0x410000u, 0x41000000u}) probes.push_back(C(v));
  }
  for (std::size_t length = 1; length <= 17; ++length) {
    const std::basic_string<C> base = S<C>(std::string("dAtA-zYxW@[`{Q_9g").substr(0, length));
    for (std::size_t at = 0; at < length; ++at) {
      for (const C x : probes) {
        for (const C y : probes) {
          std::basic_string<C> a = base, b = base;
          a[at] = x;
          b[at] = y;
          const bool expected = lower(x) == lower(y);
          if (FXPath::IsSamePathAs(a, b) != expected || FXPath::IsSamePathAs(b, a) != expected) {
            ADD_FAILURE() << "length " << length << ", position " << at << ", characters " << unsigned(x) << " and "
                          << unsigned(y);
            return;
          }
        }
      }
    }
  }
}

TYPED_TEST(PathText, Ancestry) {
  using C = TypeParam;
  struct TRow {
    const char *a, *b;
    bool allowEqual, expected;
  } rows[] = {
      {"C:\\dir", "C:\\dir", false, false},
      {"C:\\dir", "C:\\dir\\", true, true},
      {"C:\\dir", "C:\\directory", false, false},
      {"C:\\dir", "c:\\DIR\\x", false, true},
      {"C:\\", "C:\\x", false, true},
      {"C:", "C:\\x", false, true},
      {"C:\\x", "C:\\", false, false},
      {"\\\\?\\C:\\dir", "C:\\dir\\a\\b", false, true},
      {"\\\\srv\\s", "\\\\?\\UNC\\srv\\s\\x", false, true},
      {"\\\\srv\\s", "\\srv\\s\\x", false, false},  // UNC marks differ
      {"C:\\a", "a\\b", false, false},             // relative marks differ
      {"\\a", "a\\b", false, true},                // both relative
      {"", "a", false, true},                      // the empty relative path holds every relative one
      {"", "", true, true},
      {"", "", false, false},
      {"", "C:\\a", false, false},
      {"a", "ab", false, false},
      {"dir\\", "dir\\sub", false, true},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(std::string(row.a) + " | " + row.b);
    EXPECT_EQ(row.expected, FXPath::IsAncestorOf(S<C>(row.a), S<C>(row.b), row.allowEqual));
  }
}

TYPED_TEST(PathText, NormalAndLongForms) {
  using C = TypeParam;
  struct TRow {
    const char *path, *normal, *longForm;
  } rows[] = {
      {"\\\\?\\UNC\\srv\\share\\x", "\\\\srv\\share\\x", "\\\\?\\UNC\\srv\\share\\x"},
      {"\\\\?\\unc\\srv\\share", "\\\\srv\\share", "\\\\?\\unc\\srv\\share"},
      {"\\\\?\\C:\\x", "C:\\x", "\\\\?\\C:\\x"},
      {"\\\\?\\C", "\\\\?\\C", "\\\\?\\C"},  // shorter than 6: kept
      {"\\\\?\\C:", "C:", "\\\\?\\C:"},
      {"\\\\?\\Volume{x}\\a", "\\\\?\\Volume{x}\\a", "\\\\?\\Volume{x}\\a"},
      {"\\\\.\\C:", "\\\\.\\C:", "\\\\.\\C:"},
      {"\\\\srv\\share", "\\\\srv\\share", "\\\\?\\UNC\\srv\\share"},
      {"C:\\x", "C:\\x", "\\\\?\\C:\\x"},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.path);
    auto path = S<C>(row.path), result = S<C>("old");
    EXPECT_FALSE(FXPath::MakeNormalPath(path, result).IsError());
    EXPECT_EQ(S<C>(row.normal), result);
    EXPECT_FALSE(FXPath::MakeNormalPath(path).IsError());
    EXPECT_EQ(S<C>(row.normal), path);
    path = S<C>(row.path);
    EXPECT_FALSE(FXPath::MakeLongPath(path).IsError());
    EXPECT_EQ(S<C>(row.longForm), path);
  }
  for (const char* notQualified : {"x\\y", "\\x", "C:x", ""}) {
    auto path = S<C>(notQualified);
    EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::MakeLongPath(path), ERROR_INVALID_PARAMETER)) << notQualified;
    EXPECT_EQ(S<C>(notQualified), path);
  }
}

TYPED_TEST(PathText, NativeFormWithoutCurrentFolder) {
  using C = TypeParam;
  struct TRow {
    const char *path, *native;
  } rows[] = {
      {"C:", "C:"},
      {"C:\\", "C:\\"},
      {"C:/", "C:\\"},   // rule 1, then the clean-up
      {"C:x", "C:x"},    // length 3: a bare drive by rule 1
      {"C:\\a/b//c", "\\\\?\\C:\\a\\b\\c"},
      {"C:\\a\\\\\\b", "\\\\?\\C:\\a\\\\b"},  // pairs are replaced, not runs
      {"\\\\?\\C:\\x//y", "\\\\?\\C:\\x\\y"},
      {"\\\\?\\Volume{x}\\", "\\\\?\\Volume{x}\\"},
      {"\\\\.\\PhysicalDrive0", "\\\\.\\PhysicalDrive0"},
      {"\\\\srv\\share\\x", "\\\\?\\UNC\\srv\\share\\x"},
      {"\\\\.", "\\\\."},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.path);
    std::basic_string<C> result;
    const CZuError r = FXPath::MakeNativePath(S<C>(row.path), result);
    ASSERT_FALSE(r.IsError()) << r.AsString();
    EXPECT_EQ(S<C>(row.native), result);
  }
  // In/out: written only on success.
  auto path = S<C>("\\\\?");
  const CZuError r = FXPath::MakeNativePath(path);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_NAME));
  EXPECT_TRUE(Has(r, "FXPath::MakeNativePath"));
  EXPECT_EQ(S<C>("\\\\?"), path);
  path.clear();
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::MakeNativePath(path), ERROR_INVALID_PARAMETER));
  path.assign(FXPath::kMaxPathLength, C('a'));
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::MakeNativePath(path), ERROR_FILENAME_EXCED_RANGE));
  EXPECT_EQ(FXPath::kMaxPathLength, path.size());
}

TYPED_TEST(PathText, NativeFormResolvesAgainstTheCurrentFolder) {
  using C = TypeParam;
  std::basic_string<C> current, result;
  ASSERT_FALSE(FXPath::GetCurrentFolder(current).IsError());
  ASSERT_GE(current.size(), 3u);
  std::basic_string<C> longCurrent = current;
  ASSERT_FALSE(FXPath::MakeLongPath(longCurrent).IsError());
  const std::basic_string<C> drive = current.substr(0, 2);  // "C:" (or "Z:" on POSIX)
  const auto join = [&](const char* tail) { return FXPath::Join(longCurrent, S<C>(tail)); };

  struct TRow {
    std::basic_string<C> path, native;
  } rows[] = {
      {S<C>("a\\b"), join("a\\b")},                                    // rule 11
      {S<C>("."), longCurrent},                                        // rule 10
      {S<C>(".\\a/b"), join("a\\b")},                                  // rule 9
      {S<C>("./a"), join("a")},                                        // rule 9
      {S<C>("\\x\\y"), S<C>("\\\\?\\") + drive + S<C>("\\x\\y")},      // rule 8
      {S<C>("/usr/share"), S<C>("\\\\?\\") + drive + S<C>("\\usr\\share")},  // rule 8, a POSIX spelling
      {S<C>("\\"), S<C>("\\\\?\\") + drive + S<C>("\\")},             // a single backslash: the root
      {S<C>("//srv/share"), S<C>("\\\\?\\") + drive + S<C>("\\srv\\share")},  // "/" is no share prefix
      {drive + S<C>(".\\x"), join("x")},                               // rule 6
      {drive + S<C>("x\\y"), join("x\\y")},                            // rule 7
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(FXPath::Join(S<C>(""), row.path));
    ASSERT_FALSE(FXPath::MakeNativePath(row.path, result).IsError());
    EXPECT_EQ(row.native, result);
  }
}

TYPED_TEST(PathText, Joining) {
  using C = TypeParam;
  struct TRow {
    const char *base, *tail;
    unsigned int flags;
    const char* joined;
  } rows[] = {
      {"", "x", 0, "\\x"},
      {"", "x", FXPath::kAppendNoLeadingDelimiter, "x"},
      {"a", "", 0, "a"},
      {"a", "", FXPath::kAppendEmptyTail, "a\\"},
      {"a\\", "", FXPath::kAppendEmptyTail, "a\\"},
      {"", "", FXPath::kAppendEmptyTail, "\\"},
      {"", "", FXPath::kAppendEmptyTail | FXPath::kAppendNoLeadingDelimiter, ""},
      {"a\\", "\\\\b", 0, "a\\\\b"},  // one backslash is dropped from the tail only
      {"a", "\\b", 0, "a\\b"},
      {"a\\", "b", 0, "a\\b"},
      {"C:\\", "b\\", 0, "C:\\b\\"},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(std::string(row.base) + " + " + row.tail);
    auto base = S<C>(row.base);
    ASSERT_FALSE(FXPath::Append(base, S<C>(row.tail), row.flags).IsError());
    EXPECT_EQ(S<C>(row.joined), base);
    EXPECT_EQ(S<C>(row.joined), FXPath::Join(S<C>(row.base), S<C>(row.tail), row.flags));

    C buffer[16];
    std::char_traits<C>::copy(buffer, S<C>(row.base).c_str(), std::char_traits<C>::length(S<C>(row.base).c_str()) + 1);
    const auto tail = S<C>(row.tail);
    ASSERT_FALSE(FXPath::Append(buffer, 16, tail.c_str(), row.flags).IsError());
    EXPECT_EQ(S<C>(row.joined), std::basic_string<C>(buffer));
  }

  // The buffer form: exactly full fits; one more is refused untouched.
  C small[6] = {C('a'), C('b'), C(0)};
  EXPECT_FALSE(FXPath::Append(small, 6, S<C>("cd").c_str()).IsError());  // "ab\cd" + terminator
  EXPECT_EQ(S<C>("ab\\cd"), std::basic_string<C>(small));
  C tight[6] = {C('a'), C('b'), C(0)};
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::Append(tight, 6, S<C>("cde").c_str()), ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(S<C>("ab"), std::basic_string<C>(tight));
  C unterminated[2] = {C('a'), C('b')};
  EXPECT_TRUE(FXPath::Append(unterminated, 2, S<C>("c").c_str()).IsError());
  EXPECT_FALSE(FXPath::Append(small, 6, nullptr).IsError());  // a null tail is empty
  const CZuError null = FXPath::Append(static_cast<C*>(nullptr), 10, S<C>("x").c_str());
  EXPECT_TRUE(FXErrorUtil::IsWin32(null, ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(Has(null, "Path is NULL"));

  // Too long a result fails and loses nothing.
  std::basic_string<C> longBase(FXPath::kMaxPathLength - 2, C('a'));
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::Append(longBase, S<C>("b")), ERROR_FILENAME_EXCED_RANGE));
  EXPECT_EQ(FXPath::kMaxPathLength - 2, longBase.size());
  EXPECT_EQ(longBase, FXPath::Join(longBase, S<C>("b")));

  C trailing[] = {C('C'), C(':'), C('\\'), C('\\'), C(0)};
  EXPECT_FALSE(FXPath::RemoveTrailingDelimiter(trailing).IsError());
  EXPECT_EQ(S<C>("C:\\"), std::basic_string<C>(trailing));
  C empty[] = {C(0)};
  EXPECT_FALSE(FXPath::RemoveTrailingDelimiter(empty).IsError());
  EXPECT_FALSE(FXPath::RemoveTrailingDelimiter(static_cast<C*>(nullptr)).IsError());
}

TEST(PathTextAllocations, PredicatesNeverAllocateAndAppendOnce) {
  const std::string a = "\\\\?\\UNC\\server\\share\\Projects\\2026\\Reports\\Quarterly\\summary.docx";
  const std::string b = "\\\\server\\share\\projects\\2026\\reports";
  const std::wstring wa(a.begin(), a.end()), wb(b.begin(), b.end());
  const long before = ZuTest::AllocationCount();
  bool sink = FXPath::IsSamePathAs(a, b) || FXPath::IsAncestorOf(b, a, false) || FXPath::IsDevicePath(a) ||
              FXPath::IsShadowPath(a) || FXPath::IsVolumeGuidPath(a) || FXPath::IsVolumeUniqueId(a);
  sink = sink && (FXPath::IsSamePathAs(wa, wb) || FXPath::IsAncestorOf(wb, wa, true) || FXPath::IsVolumeGuidPath(wa));
  EXPECT_EQ(before, ZuTest::AllocationCount());
  EXPECT_TRUE(sink);

  // Beyond the system's limit predicates still answer.
  const std::string huge(FXPath::kMaxPathLength + 10, 'x');
  EXPECT_TRUE(FXPath::IsSamePathAs(huge, huge + "\\"));
  EXPECT_TRUE(FXPath::IsAncestorOf(huge, huge + "\\y", false));

  std::string base = "C:\\Users\\someone\\Documents";
  std::wstring wbase(base.begin(), base.end());
  const std::string tail(300, 'x');
  const std::wstring wtail(300, L'x');
  const long start = ZuTest::AllocationCount();
  ASSERT_FALSE(FXPath::Append(base, tail).IsError());
  EXPECT_LE(ZuTest::AllocationCount() - start, 1);
  const long wideStart = ZuTest::AllocationCount();
  ASSERT_FALSE(FXPath::Append(wbase, wtail).IsError());
  EXPECT_LE(ZuTest::AllocationCount() - wideStart, 1);
  const long joinStart = ZuTest::AllocationCount();
  const std::string joined = FXPath::Join(base, tail);
  EXPECT_LE(ZuTest::AllocationCount() - joinStart, 1);
  EXPECT_EQ(base.size() + 1 + tail.size(), joined.size());
}

}  // namespace
