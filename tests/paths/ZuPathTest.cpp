// CZuPath's text questions; the ones that ask the file system are in
// PathSystemTest.cpp.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "paths/Path.h"

namespace {

TEST(ZuPath, PartsOfAPath) {
  struct TRow {
    const char *path, *base, *ext, *parent, *root;
    bool isRoot, absolute, unc;
  } rows[] = {
      {"C:\\a\\b.txt", "b.txt", ".txt", "C:\\a", "C:\\", false, true, false},
      {"C:/a/b.tar.gz", "b.tar.gz", ".gz", "C:\\a", "C:\\", false, true, false},
      {"C:\\a\\.profile", ".profile", "", "C:\\a", "C:\\", false, true, false},
      {"C:\\a\\b\\", "b", "", "C:\\a", "C:\\", false, true, false},
      {"C:\\", "", "", "", "C:\\", true, true, false},
      {"\\\\srv\\share\\x", "x", "", "\\\\srv\\share\\", "\\\\srv\\share\\", false, true, true},
      {"\\\\srv\\share", "", "", "", "\\\\srv\\share", true, true, true},
      {"\\\\?\\C:\\x.y", "x.y", ".y", "\\\\?\\C:\\", "\\\\?\\C:\\", false, true, true},  // "\\" starts it
      {"dir\\file", "file", "", "dir", "", false, false, false},
      {"/usr/share", "share", "", "\\usr", "\\", false, false, false},
      {"", "", "", "", "", false, false, false},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.path);
    const CZuPath path(row.path);
    EXPECT_STREQ(row.base, path.GetBaseName().c_str());
    EXPECT_STREQ(row.ext, path.GetExt().c_str());
    EXPECT_STREQ(row.parent, path.GetParent().c_str());
    EXPECT_STREQ(row.root, path.GetRoot().c_str());
    EXPECT_EQ(row.isRoot, path.IsRoot());
    EXPECT_EQ(row.absolute, path.IsAbsolute());
    EXPECT_EQ(row.unc, path.IsUNC());
    EXPECT_STREQ(row.base, CZuPath::GetBaseName(row.path).c_str());
  }
  EXPECT_STREQ("", CZuPath::GetBaseName(nullptr).c_str());
  EXPECT_FALSE(CZuPath::IsRoot(nullptr));
  EXPECT_FALSE(CZuPath::IsUNC(nullptr));

  CZuPath copy("x");
  copy = CZuPath("C:\\y");
  EXPECT_STREQ("C:\\y", CZuPath(copy).GetPath().c_str());
  EXPECT_STREQ("a\\b", CZuPath::Append("a", "\\b").c_str());
  EXPECT_STREQ("a", CZuPath::Append("a", nullptr).c_str());
}

TEST(ZuPath, SplittingAndSharePaths) {
  std::vector<CZuString> parts;
  CZuPath("C:\\a//b\\c\\").Split(parts);
  ASSERT_EQ(4u, parts.size());
  EXPECT_STREQ("C:", parts[0].c_str());
  EXPECT_STREQ("c", parts[3].c_str());
  CZuPath::Split(nullptr, parts);
  EXPECT_TRUE(parts.empty());

  CZuString server, share, rest;
  ASSERT_FALSE(CZuPath("\\\\srv\\share\\a\\b").SplitUNC(server, share, rest).IsError());
  EXPECT_STREQ("srv", server.c_str());
  EXPECT_STREQ("share", share.c_str());
  EXPECT_STREQ("a\\b", rest.c_str());
  ASSERT_FALSE(CZuPath::SplitUNC("\\\\?\\UNC\\srv\\share", server, share, rest).IsError());
  EXPECT_STREQ("srv", server.c_str());
  EXPECT_STREQ("share", share.c_str());
  EXPECT_STREQ("", rest.c_str());
  EXPECT_TRUE(FXErrorUtil::IsWin32(CZuPath::SplitUNC("C:\\x", server, share, rest), ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(FXErrorUtil::IsWin32(CZuPath::SplitUNC("\\\\?\\C:\\x", server, share, rest), ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(FXErrorUtil::IsWin32(CZuPath::SplitUNC(nullptr, server, share, rest), ERROR_INVALID_PARAMETER));
}

TEST(ZuPath, CommandLineSanity) {
  for (const char* fine : {"Program Files\\x-y_z.1", "/usr/lib/a\tb", "a"})
    EXPECT_TRUE(CZuPath::checkPathSanityForCommandLine(fine)) << fine;
  for (const char* risky : {"C:\\x", "a;b", "a&b", "\"a\"", "a|b", "$x", "a'b", "C:\\caf\xC3\xA9", "", "a%b"})
    EXPECT_FALSE(CZuPath::checkPathSanityForCommandLine(risky)) << risky;
  EXPECT_FALSE(CZuPath::checkPathSanityForCommandLine(nullptr));
}

}  // namespace
