#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"
#include "platform/DirectoryEnum.h"
#include "platform/OsFileApi.h"
#include "support/GeneratedTree.h"

namespace {
namespace fs = std::filesystem;
using FXPlatform::CDirectoryEnum;
using FXPlatform::EFindStep;

struct TSeen {
  DWORD attributes;
  unsigned long long size;
};

// Every entry below the folder by relative path, through the enumerator
// alone (one object reused for every folder).
std::map<std::string, TSeen> Walk(const std::string& root, std::vector<CZuError>* failures = nullptr) {
  std::map<std::string, TSeen> seen;
  std::vector<std::string> pending{""};
  CDirectoryEnum folder;
  TFindData data;
  while (!pending.empty()) {
    const std::string relative = pending.back();
    pending.pop_back();
    const CZuError opened = folder.Open(relative.empty() ? root : root + "\\" + relative);
    EXPECT_FALSE(opened.IsError()) << opened.AsString();
    CZuError error = CZuError::Success();
    for (EFindStep step; (step = folder.Next(data, error)) != EFindStep::kEnd;) {
      if (step != EFindStep::kEntry) {
        if (failures != nullptr) failures->push_back(error);
        if (step == EFindStep::kFailed) break;
        continue;
      }
      const std::string path = relative.empty() ? data.cFileName : relative + "\\" + data.cFileName;
      EXPECT_EQ(0u, seen.count(path)) << "handed out twice: " << path;
      seen[path] = {data.dwFileAttributes, data.nFileSize};
      if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !(data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
        pending.push_back(path);
    }
    EXPECT_TRUE(FXErrorUtil::IsWin32(error, ERROR_NO_MORE_FILES)) << error.AsString();
  }
  return seen;
}

TEST(DirectoryEnum, ListsAGeneratedTreeExactly) {
  const std::string root = ZuTest::ScratchFolder("enum_tree");
  const ZuTest::TGeneratedTree tree = ZuTest::GenerateTree(root, {600, 4, 6, 40, 7});
  const auto seen = Walk(FXPlatform::LibraryPathOf(root));
  ASSERT_EQ(tree.files.size() + tree.folders.size(), seen.size());
  for (const std::string& folder : tree.folders) {
    ASSERT_EQ(1u, seen.count(folder)) << folder;
    EXPECT_EQ(DWORD(FILE_ATTRIBUTE_DIRECTORY), seen.at(folder).attributes & ~DWORD(FILE_ATTRIBUTE_ARCHIVE));
    EXPECT_EQ(0u, seen.at(folder).size);
  }
  for (std::size_t i = 0; i < tree.files.size(); ++i) {
    ASSERT_EQ(1u, seen.count(tree.files[i])) << tree.files[i];
    EXPECT_EQ(0u, seen.at(tree.files[i]).attributes & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(tree.fileSizes[i], seen.at(tree.files[i]).size) << tree.files[i];
  }
  ZuTest::RemoveTree(root);
}

TEST(DirectoryEnum, RecordFieldsAndAttributes) {
  const std::string root = ZuTest::ScratchFolder("enum_record");
  const fs::path base = fs::u8path(root);
  std::ofstream(base / ".hidden") << "h";
  std::ofstream(base / "readonly.txt") << "12345";
  fs::permissions(base / "readonly.txt", fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
  std::ofstream(base / fs::u8path("\xC3\xA9t\xC3\xA9 \xE6\x9D\xB1.txt")) << "";
  fs::create_directory(base / "sub");
  const bool links = !kZuIsWindows;  // wine's symbolic links are not the system's
  if (links) {
    fs::create_directory_symlink("sub", base / "link-dir");
    fs::create_symlink("readonly.txt", base / "link-file");
    fs::create_symlink("nowhere", base / "link-dangling");
  }

  CDirectoryEnum folder;
  ASSERT_FALSE(folder.Open(FXPlatform::LibraryPathOf(root)).IsError());
  std::map<std::string, TFindData> byName;
  TFindData data;
  CZuError error = CZuError::Success();
  while (folder.Next(data, error) == EFindStep::kEntry) byName[data.cFileName] = data;
  EXPECT_TRUE(FXErrorUtil::IsWin32(error, ERROR_NO_MORE_FILES));

  const DWORD kMask = ~DWORD(FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(DWORD(FILE_ATTRIBUTE_HIDDEN), byName.at(".hidden").dwFileAttributes & kMask);
  EXPECT_EQ(DWORD(FILE_ATTRIBUTE_READONLY), byName.at("readonly.txt").dwFileAttributes & kMask);
  EXPECT_EQ(5u, byName.at("readonly.txt").nFileSize);
  EXPECT_EQ(1u, byName.count("\xC3\xA9t\xC3\xA9 \xE6\x9D\xB1.txt"));
  EXPECT_EQ(DWORD(FILE_ATTRIBUTE_DIRECTORY), byName.at("sub").dwFileAttributes & kMask);
  // Write times are recent file times (100 ns units since 1601).
  const long long written = byName.at("readonly.txt").ftLastWriteTime.AsSystemTime();
  EXPECT_GT(written, 133000000000000000ll);
  EXPECT_GE(byName.at("readonly.txt").ftLastAccessTime.AsSystemTime(), written - 10000000ll);
  EXPECT_NE(0, byName.at("readonly.txt").ftCreationTime.AsSystemTime());
  if (links) {
    EXPECT_EQ(DWORD(FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY), byName.at("link-dir").dwFileAttributes);
    EXPECT_EQ(DWORD(FILE_ATTRIBUTE_REPARSE_POINT), byName.at("link-file").dwFileAttributes);
    EXPECT_EQ(DWORD(FILE_ATTRIBUTE_REPARSE_POINT), byName.at("link-dangling").dwFileAttributes);
    EXPECT_EQ(DWORD(IO_REPARSE_TAG_SYMLINK), byName.at("link-dir").dwReserved0);
    EXPECT_EQ(0u, byName.at("sub").dwReserved0);
  }
  fs::permissions(base / "readonly.txt", fs::perms::owner_write, fs::perm_options::add);
  ZuTest::RemoveTree(root);
}

TEST(DirectoryEnum, NamesThePathFormCannotCarryAreFailedEntries) {
  if (kZuIsWindows) GTEST_SKIP() << "such names exist only on POSIX file systems";
  const std::string root = ZuTest::ScratchFolder("enum_badnames");
  const fs::path base = fs::u8path(root);
  std::ofstream(base / "back\\slash") << "";
  std::ofstream(base / "bad\xFFutf8") << "";
  std::ofstream(base / "good") << "";
  CDirectoryEnum folder;
  ASSERT_FALSE(folder.Open(FXPlatform::LibraryPathOf(root)).IsError());
  std::map<std::string, DWORD> failed;
  std::vector<std::string> good;
  TFindData data;
  CZuError error = CZuError::Success();
  for (EFindStep step; (step = folder.Next(data, error)) != EFindStep::kEnd;) {
    ASSERT_NE(EFindStep::kFailed, step);
    if (step == EFindStep::kFailedEntry)
      failed[data.cFileName] = FXErrorUtil::GetWin32(error);
    else
      good.push_back(data.cFileName);
  }
  EXPECT_EQ(std::vector<std::string>{"good"}, good);
  const std::map<std::string, DWORD> expected{{"back\\slash", ERROR_INVALID_NAME},
                                              {"bad\\xFFutf8", ERROR_NO_UNICODE_TRANSLATION}};
  EXPECT_EQ(expected, failed);
  ZuTest::RemoveTree(root);
}

TEST(DirectoryEnum, OpenFailuresAndPathForms) {
  const std::string root = ZuTest::ScratchFolder("enum_open");
  CDirectoryEnum folder;
  const CZuError missing = folder.Open(FXPlatform::LibraryPathOf(root) + "\\missing");
  EXPECT_TRUE(FXErrorUtil::IsWin32(missing, ERROR_PATH_NOT_FOUND) || FXErrorUtil::IsWin32(missing, ERROR_FILE_NOT_FOUND))
      << missing.AsString();
  std::ofstream(fs::u8path(root) / "file") << "";
  EXPECT_TRUE(folder.Open(FXPlatform::LibraryPathOf(root) + "\\file").IsError());
  EXPECT_EQ(0u, folder.OpenCount());
  // An empty folder opens and ends at once; Next after the end stays ended.
  fs::create_directory(fs::u8path(root) / "empty");
  ASSERT_FALSE(folder.Open(FXPlatform::LibraryPathOf(root) + "\\empty").IsError());
  TFindData data;
  CZuError error = CZuError::Success();
  EXPECT_EQ(EFindStep::kEnd, folder.Next(data, error));
  EXPECT_EQ(EFindStep::kEnd, folder.Next(data, error));
  EXPECT_EQ(1u, folder.OpenCount());

  if (!kZuIsWindows) {
    const struct {
      const char* path;
      const char* system;  // null: fails with ERROR_PATH_NOT_FOUND
    } cases[] = {
        {"Z:\\usr\\share", "/usr/share"}, {"\\\\?\\Z:\\usr\\share", "/usr/share"}, {"z:\\", "/"},
        {"Z:", "/"},  {"/tmp/a\\b", "/tmp/a/b"}, {"rel\\x", "rel/x"},
        {"C:\\Windows", nullptr}, {"\\\\server\\share", nullptr}, {"\\\\?\\UNC\\s\\x", nullptr}, {"Z:rel", nullptr},
    };
    for (const auto& c : cases) {
      std::string system = "unchanged";
      const CZuError r = FXPlatform::SystemPathOf(c.path, system);
      if (c.system == nullptr) {
        EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_PATH_NOT_FOUND)) << c.path;
      } else {
        EXPECT_FALSE(r.IsError()) << c.path;
        EXPECT_EQ(c.system, system) << c.path;
      }
    }
    EXPECT_EQ("Z:\\usr\\share", FXPlatform::LibraryPathOf("/usr/share"));
  }
  ZuTest::RemoveTree(root);
}

}  // namespace
