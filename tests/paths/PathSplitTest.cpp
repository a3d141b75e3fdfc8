// Splitting and the operations that depend on where a path's root ends,
// for narrow and wide strings alike.
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "paths/Path.h"

namespace {

template <class Char>
std::basic_string<Char> S(std::string_view ascii) {
  return std::basic_string<Char>(ascii.begin(), ascii.end());
}

template <class Char>
class PathSplit : public ::testing::Test {};
using CharTypes = ::testing::Types<char, wchar_t>;
TYPED_TEST_SUITE(PathSplit, CharTypes);

TYPED_TEST(PathSplit, ParentAndLeafNeverSplitARoot) {
  using C = TypeParam;
  const std::string guid = "\\\\?\\Volume{01234567-89ab-cdef-0123-456789abcdef}";
  struct TRow {
    std::string path, parent, leaf;
  } rows[] = {
      {"C:\\a\\b", "C:\\a", "b"},
      {"C:\\a\\b\\", "C:\\a", "b"},
      {"C:\\a", "C:\\", "a"},
      {"C:a\\b", "C:a", "b"},
      {"C:a", "C:", "a"},
      {"\\a", "\\", "a"},
      {"a\\b", "a", "b"},
      {"a", "", "a"},
      {"\\\\srv\\share\\a", "\\\\srv\\share\\", "a"},
      {"\\\\srv\\share\\a\\b", "\\\\srv\\share\\a", "b"},
      {"\\\\?\\UNC\\srv\\share\\a", "\\\\?\\UNC\\srv\\share\\", "a"},
      {"\\\\?\\C:\\a", "\\\\?\\C:\\", "a"},
      {"\\\\?\\C:\\a\\b", "\\\\?\\C:\\a", "b"},
      {guid + "\\a", guid + "\\", "a"},
      {guid + "\\a\\b", guid + "\\a", "b"},
      {"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy3\\a", "\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy3\\",
       "a"},
      {"\\\\.\\C:\\a", "\\\\.\\C:\\", "a"},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.path);
    std::basic_string<C> parent, leaf;
    const CZuError r = FXPath::SplitParentPath(S<C>(row.path), parent, leaf);
    ASSERT_FALSE(r.IsError()) << r.AsString();
    EXPECT_EQ(S<C>(row.parent), parent);
    EXPECT_EQ(S<C>(row.leaf), leaf);
  }
  // Nothing beyond the root: path not found, outputs untouched.
  for (const std::string& root :
       {std::string("C:\\"), std::string("C:"), std::string("\\"), std::string(""), std::string("\\\\srv\\share\\"),
        std::string("\\\\srv"), std::string("\\\\?\\UNC\\srv\\share"), guid + "\\", guid,
        std::string("\\\\?\\GLOBALROOT\\Device\\HarddiskVolume1\\"), std::string("\\\\?")}) {
    SCOPED_TRACE(root);
    std::basic_string<C> parent = S<C>("p"), leaf = S<C>("l");
    const CZuError r = FXPath::SplitParentPath(S<C>(root), parent, leaf);
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_PATH_NOT_FOUND));
    EXPECT_NE(std::string::npos, r.AsString().find("FXPath::SplitParentPath"));
    EXPECT_EQ(S<C>("p"), parent);
    EXPECT_EQ(S<C>("l"), leaf);
  }
  std::basic_string<C> parent, leaf;
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::SplitParentPath(S<C>("\\\\?\\Volume{0123\\a"), parent, leaf),
                                   ERROR_INVALID_NAME));
}

TYPED_TEST(PathSplit, FullyQualifiedNamesAndComponents) {
  using C = TypeParam;
  std::basic_string<C> root, folder, name;
  ASSERT_FALSE(FXPath::SplitFullyQualifiedName(S<C>("C:\\a\\b\\f.txt"), folder, name).IsError());
  EXPECT_EQ(S<C>("C:\\a\\b"), folder);
  EXPECT_EQ(S<C>("f.txt"), name);
  ASSERT_FALSE(FXPath::SplitFullyQualifiedName(S<C>("C:\\a\\f"), folder, name, FXPath::kSplitFolderWithDelimiter)
                   .IsError());
  EXPECT_EQ(S<C>("C:\\a\\"), folder);
  ASSERT_FALSE(FXPath::SplitFullyQualifiedName(S<C>("\\\\srv\\s\\a\\b\\f"), root, folder, name).IsError());
  EXPECT_EQ(S<C>("\\\\srv\\s\\"), root);
  EXPECT_EQ(S<C>("a\\b"), folder);
  EXPECT_EQ(S<C>("f"), name);
  ASSERT_FALSE(FXPath::SplitFullyQualifiedName(S<C>("C:\\f"), root, folder, name).IsError());
  EXPECT_EQ(S<C>("C:\\"), root);
  EXPECT_EQ(S<C>(""), folder);
  for (const char* relative : {"a\\f", "\\a\\f", "C:f"})
    EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::SplitFullyQualifiedName(S<C>(relative), folder, name),
                                     ERROR_INVALID_PARAMETER))
        << relative;

  std::vector<std::basic_string<C>> parts;
  ASSERT_FALSE(FXPath::SplitPaths(S<C>("C:\\a\\\\b\\c\\"), S<C>(""), parts).IsError());
  EXPECT_EQ((std::vector<std::basic_string<C>>{S<C>("C:\\"), S<C>("a"), S<C>("b"), S<C>("c")}), parts);
  ASSERT_FALSE(FXPath::SplitPaths(S<C>("\\\\?\\C:\\a\\b\\c"), S<C>("c:\\A"), parts, FXPath::kSplitCumulative)
                   .IsError());
  EXPECT_EQ((std::vector<std::basic_string<C>>{S<C>("\\\\?\\C:\\a"), S<C>("\\\\?\\C:\\a\\b"),
                                                S<C>("\\\\?\\C:\\a\\b\\c")}),
            parts);
  ASSERT_FALSE(FXPath::SplitPaths(S<C>("C:\\a"), S<C>("C:\\"), parts, FXPath::kSplitCumulative).IsError());
  EXPECT_EQ((std::vector<std::basic_string<C>>{S<C>("C:\\"), S<C>("C:\\a")}), parts);
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::SplitPaths(S<C>("C:\\ab"), S<C>("C:\\a"), parts), ERROR_INVALID_PARAMETER));
  EXPECT_EQ(2u, parts.size());  // untouched

  EXPECT_EQ(S<C>("f.txt"), FXPath::GetFileNameWithoutPath(S<C>("C:\\a/b\\f.txt")));
  EXPECT_EQ(S<C>("f"), FXPath::GetFileNameWithoutPath(S<C>("f")));
  EXPECT_EQ(S<C>(""), FXPath::GetFileNameWithoutPath(S<C>("C:\\a\\")));
  auto path = S<C>("a/b/c");
  EXPECT_FALSE(FXPath::RemovePathFromFileName(path).IsError());
  EXPECT_EQ(S<C>("c"), path);
}

TYPED_TEST(PathSplit, ReplacingAndRelatingFolders) {
  using C = TypeParam;
  struct TRow {
    const char *path, *from, *to, *replaced;
  } rows[] = {
      {"C:\\data\\a\\b", "c:\\DATA", "D:\\restore", "D:\\restore\\a\\b"},
      {"\\\\?\\C:\\data\\a", "C:\\data\\", "E:\\", "E:\\a"},
      {"C:\\data", "C:\\data", "D:\\x", "D:\\x"},
      {"\\\\srv\\s\\a", "\\\\?\\UNC\\srv\\s", "C:\\s", "C:\\s\\a"},
      {"C:\\data\\a", "C:\\data", "", "a"},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.path);
    auto path = S<C>(row.path);
    ASSERT_FALSE(FXPath::ReplacePath(path, S<C>(row.from), S<C>(row.to)).IsError());
    EXPECT_EQ(S<C>(row.replaced), path);
  }
  auto path = S<C>("C:\\database");
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::ReplacePath(path, S<C>("C:\\data"), S<C>("D:\\")), ERROR_INVALID_PARAMETER));
  EXPECT_EQ(S<C>("C:\\database"), path);

  struct TRelative {
    const char *path, *folder;
    unsigned int flags;
    const char* relative;
  } relatives[] = {
      {"C:\\a\\b\\c", "C:\\a", 0, "b\\c"},
      {"C:\\a\\b\\c", "C:\\a", FXPath::kRelativeDotPrefix, ".\\b\\c"},
      {"C:\\a\\x", "C:\\a\\b\\c", 0, "..\\..\\x"},
      {"C:\\a", "C:\\a\\b", 0, ".."},
      {"C:\\A\\", "\\\\?\\c:\\a", 0, "."},
      {"\\\\srv\\s\\x", "\\\\?\\UNC\\srv\\s\\y", 0, "..\\x"},
  };
  for (const TRelative& row : relatives) {
    SCOPED_TRACE(std::string(row.path) + " from " + row.folder);
    std::basic_string<C> result;
    ASSERT_FALSE(FXPath::MakeRelativePathFromFolder(S<C>(row.path), S<C>(row.folder), result, row.flags).IsError());
    EXPECT_EQ(S<C>(row.relative), result);
  }
  std::basic_string<C> result = S<C>("kept");
  const CZuError r = FXPath::MakeRelativePathFromFolder(S<C>("D:\\x"), S<C>("C:\\y"), result);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_SAME_DEVICE));
  EXPECT_NE(std::string::npos, r.AsString().find("Paths do not have a common volume, From=[C:\\y], To=[D:\\x]"));
  EXPECT_EQ(S<C>("kept"), result);

  struct TAbsolute {
    const char *path, *folder, *absolute;
  } absolutes[] = {
      {"x\\y", "C:\\base", "C:\\base\\x\\y"},
      {".\\x", "C:\\base\\", "C:\\base\\x"},
      {".", "C:\\base", "C:\\base"},
      {"\\x", "C:\\base", "C:\\x"},
      {"\\x", "\\\\srv\\s\\base", "\\\\srv\\s\\x"},
      {"c:x", "C:\\base", "C:\\base\\x"},
      {"D:x", "C:\\base", "D:\\x"},
      {"E:\\x", "C:\\base", "E:\\x"},
  };
  for (const TAbsolute& row : absolutes) {
    SCOPED_TRACE(row.path);
    ASSERT_FALSE(FXPath::MakeAbsolutePath(S<C>(row.path), S<C>(row.folder), result).IsError());
    EXPECT_EQ(S<C>(row.absolute), result);
  }
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::MakeAbsolutePath(S<C>("x"), S<C>("base"), result), ERROR_INVALID_PARAMETER));
}

TYPED_TEST(PathSplit, VolumeRootsAndDeviceBases) {
  using C = TypeParam;
  const std::string guid = "\\\\?\\Volume{01234567-89ab-cdef-0123-456789abcdef}";
  std::basic_string<C> result;
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(S<C>("C:\\a\\b\\"), result).IsError());
  EXPECT_EQ(S<C>("a\\b"), result);
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(S<C>("\\\\?\\UNC\\srv\\s\\a"), result,
                                             FXPath::kVolumeRelativeLeadingDelimiter)
                   .IsError());
  EXPECT_EQ(S<C>("\\a"), result);
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(S<C>(guid + "\\x"), result).IsError());
  EXPECT_EQ(S<C>("x"), result);
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(S<C>("C:\\"), result).IsError());
  EXPECT_EQ(S<C>(""), result);
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::GetVolumeRelativeName(S<C>("a\\b"), result), ERROR_INVALID_PARAMETER));

  ASSERT_FALSE(FXPath::GetDevicePathBase(S<C>("\\\\?\\GLOBALROOT\\Device\\HarddiskVolume4\\a\\b"), result).IsError());
  EXPECT_EQ(S<C>("\\\\?\\GLOBALROOT\\Device\\HarddiskVolume4\\"), result);
  const CZuError noDelimiter = FXPath::GetDevicePathBase(S<C>("\\\\?\\GLOBALROOT\\Device\\HarddiskVolume4"), result);
  EXPECT_TRUE(FXErrorUtil::IsWin32(noDelimiter, ERROR_PATH_NOT_FOUND));
  EXPECT_NE(std::string::npos,
            noDelimiter.AsString().find("Cannot find device object path delimiter; Path could already be root, "
                                        "Path=\\\\?\\GLOBALROOT\\Device\\HarddiskVolume4"));
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::GetDevicePathBase(S<C>("C:\\x"), result), ERROR_INVALID_PARAMETER));
  EXPECT_EQ(S<C>("\\\\?\\GLOBALROOT\\Device\\HarddiskVolume4\\"), result);

  ASSERT_FALSE(FXPath::GetVolumeGuidPathBase(S<C>(guid + "\\a\\b"), result).IsError());
  EXPECT_EQ(S<C>(guid + "\\"), result);
  ASSERT_FALSE(FXPath::GetVolumeGuidPathBase(S<C>(guid), result).IsError());
  EXPECT_EQ(S<C>(guid + "\\"), result);
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::GetVolumeGuidPathBase(S<C>("\\\\?\\Volume{0123"), result), ERROR_INVALID_NAME));
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::GetVolumeGuidPathBase(S<C>("C:\\"), result), ERROR_INVALID_PARAMETER));
}

TEST(PathSplitBadInput, InvalidUtf8AndLoneSurrogatesReachNoSystemCall) {
  // Text rules work on the bytes; forms for the system refuse them.
  const std::string bad = "C:\\a\xC3(\\b";
  std::string parent, leaf, native = "kept";
  EXPECT_FALSE(FXPath::SplitParentPath(bad, parent, leaf).IsError());
  EXPECT_TRUE(FXPath::IsSamePathAs(bad, bad + "\\"));
  for (const std::string& text : {bad, std::string("C:\\\xED\xA0\x80"), std::string("C:\\\xF4\x90\x80\x80"),
                                 std::string("C:\\\xC0\xAF"), std::string("C:\\\xE2\x82")}) {
    const CZuError r = FXPath::MakeNativePath(text, native);
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NO_UNICODE_TRANSLATION)) << r.AsString();
    EXPECT_EQ("kept", native);
  }
  EXPECT_FALSE(FXPath::MakeNativePath(std::string("C:\\\xC3\xA9t\xC3\xA9\\\xF0\x9F\x98\x80"), native).IsError());
  std::wstring wide = L"C:\\a";
  wide.push_back(static_cast<wchar_t>(0xD800));
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::MakeNativePath(wide), ERROR_NO_UNICODE_TRANSLATION));
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPath::DoesPathExist(wide), ERROR_NO_UNICODE_TRANSLATION));
}

}  // namespace
