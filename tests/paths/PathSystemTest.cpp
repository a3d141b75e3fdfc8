// The calls that reach the file system, on a real temporary tree. The tree
// is set up with std::filesystem in the platform's own spelling and then
// named in the library's form (drive Z: on POSIX).
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "paths/Path.h"
#include "platform/FileSystem.h"
#include "text/StringConvert.h"

namespace fs = std::filesystem;

namespace {

bool Has(const CZuError& r, const std::string& text) { return r.AsString().find(text) != std::string::npos; }

class PathSystem : public ::testing::Test {
 protected:
  void SetUp() override {
    m_os = fs::u8path(FXPlatform::TempDirectory()) / ("zu_paths_" + std::to_string(std::rand()));
    fs::create_directories(m_os / "a" / "b");
    fs::create_directories(m_os / "other");
    std::ofstream(m_os / "a" / "f.txt") << "x";
    ASSERT_FALSE(FXPath::TQGetFullPathName(m_os.u8string(), m_root).IsError());
  }
  void TearDown() override {
    std::error_code ignored;
    fs::permissions(m_os / "a", fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(m_os, ignored);
  }
  std::string In(const char* relative) const { return FXPath::Join(m_root, relative); }

  fs::path m_os;       // the tree in the platform's spelling
  std::string m_root;  // the same folder in the library's form
};

TEST_F(PathSystem, TheTreeReadsTheSameInBothForms) {
  // On POSIX the temporary folder reads as drive Z:, as under wine.
  if (!kZuIsWindows) {
    EXPECT_EQ("Z:\\", m_root.substr(0, 3));
  }
  EXPECT_EQ(std::string::npos, m_root.find('/'));
  std::string current, dot;
  ASSERT_FALSE(FXPath::GetCurrentFolder(current).IsError());
  ASSERT_FALSE(FXPath::TQGetFullPathName(std::string("."), dot).IsError());
  EXPECT_TRUE(FXPath::IsSamePathAs(current, dot));
  std::wstring driveCurrent;
  ASSERT_FALSE(FXPath::GetCurrentFolder(static_cast<wchar_t>(current[0]), driveCurrent).IsError());
  EXPECT_TRUE(FXPath::IsSamePathAs(std::wstring(current.begin(), current.end()), driveCurrent));

  std::string full;
  ASSERT_FALSE(FXPath::TQGetFullPathName(In("a\\..\\a\\.\\b\\"), full).IsError());
  EXPECT_EQ(In("a\\b\\"), full);
  ASSERT_FALSE(FXPath::TQGetFullPathName("\\\\?\\" + In("a\\..\\other"), full).IsError());
  EXPECT_EQ("\\\\?\\" + In("other"), full);
}

TEST_F(PathSystem, ExistenceAndKinds) {
  EXPECT_FALSE(FXPath::DoesPathExist(In("a\\f.txt")).IsError());
  EXPECT_FALSE(FXPath::DoesPathExist(FXString::ToWstring(In("a\\b"))).IsError());
  const CZuError missing = FXPath::DoesPathExist(In("missing"));
  EXPECT_TRUE(FXErrorUtil::IsWin32(missing, ERROR_FILE_NOT_FOUND) || FXErrorUtil::IsWin32(missing, ERROR_PATH_NOT_FOUND));
  EXPECT_TRUE(Has(missing, "FXPath::DoesPathExist"));
  EXPECT_TRUE(FXPath::DoesUNCPathExistWithRetry(In("missing\\x"), 5).IsError());  // not found: no retry

  bool answer = true;
  EXPECT_FALSE(CZuPath::Exists(In("missing").c_str(), answer).IsError());
  EXPECT_FALSE(answer);
  const CZuPath file(In("a\\f.txt").c_str()), folder(In("a").c_str());
  EXPECT_TRUE(file.Exists());
  EXPECT_TRUE(file.IsFile());
  EXPECT_FALSE(file.IsDirectory());
  EXPECT_TRUE(folder.IsDirectory());
  EXPECT_FALSE(folder.IsFile());
  EXPECT_FALSE(folder.IsLink(answer).IsError());
  EXPECT_FALSE(answer);
  EXPECT_FALSE(file.IsBlockDev(answer).IsError());
  EXPECT_FALSE(answer);
  EXPECT_FALSE(file.IsCharDev(answer).IsError());
  EXPECT_FALSE(answer);
  EXPECT_TRUE(FXErrorUtil::IsWin32(CZuPath::IsDirectory(nullptr, answer), ERROR_INVALID_PARAMETER));
  EXPECT_FALSE(CZuPath::Exists(nullptr));

  EXPECT_TRUE(CZuPath::isValidPath(In("a\\\\b").c_str(), true));
  EXPECT_FALSE(CZuPath::isValidPath(In("a\\..\\a").c_str(), false));
  EXPECT_FALSE(CZuPath::isValidPath(In("nothing").c_str(), true));
  EXPECT_TRUE(CZuPath::isValidPath(In("nothing").c_str(), false));
  EXPECT_FALSE(CZuPath::isValidPath("relative\\path", false));
  EXPECT_FALSE(CZuPath(In("x").c_str()).AbsPath().IsEmpty());

  EXPECT_TRUE(CZuPath::IsSystemPath(kZuIsWindows ? "C:\\Windows\\System32" : "/usr/lib"));
  EXPECT_FALSE(CZuPath(m_root.c_str()).IsSystemPath());
}

TEST_F(PathSystem, VolumesAndMountPoints) {
  std::string volume;
  ASSERT_FALSE(FXPath::TQGetVolumePathName(In("a\\b"), volume).IsError());
  EXPECT_EQ('\\', volume.back());
  EXPECT_TRUE(FXPath::IsAncestorOf(volume, m_root, false)) << volume;
  std::string missingVolume;  // a path that does not exist yet has a volume too
  ASSERT_FALSE(FXPath::TQGetVolumePathName(In("no\\such\\thing"), missingVolume).IsError());
  EXPECT_EQ(volume, missingVolume);

  // The temporary folder's volume root is a mount point unless it is a
  // drive's own root; the folders below it are not.
  const bool driveRoot = volume.size() == 3 && volume[1] == ':';
  EXPECT_EQ(!driveRoot, FXPath::IsPathMountPoint(volume));
  EXPECT_FALSE(FXPath::IsPathMountPoint(m_root));
  EXPECT_EQ(!driveRoot, FXPath::IsPathChildOfMountPointPath(In("a")));

  // Registered, the tree's root is one for every question.
  ASSERT_FALSE(FXPath::RegisterSyntheticMountPoint(m_root).IsError());
  EXPECT_TRUE(FXPath::IsPathMountPoint(m_root));
  std::string mountPoint;
  EXPECT_TRUE(FXPath::IsPathChildOfMountPointPath(In("a\\b"), mountPoint));
  EXPECT_TRUE(FXPath::IsSamePathAs(m_root, mountPoint)) << mountPoint;
  std::string relative;
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(In("a\\b"), relative).IsError());
  EXPECT_EQ("a\\b", relative);
  FXPath::DeregisterSyntheticMountPoint(m_root);
  EXPECT_FALSE(FXPath::IsPathMountPoint(m_root));

  bool same = false;
  ASSERT_FALSE(FXPath::ArePathsOnSameVolume(In("a\\f.txt"), volume, same).IsError());
  EXPECT_TRUE(same);
  DWORD serial = 0, serialBelow = 1, flags = 0;
  ASSERT_FALSE(FXPath::TQGetVolumeSerialNumber(m_root, serial).IsError());
  ASSERT_FALSE(FXPath::TQGetVolumeSerialNumber(In("a\\b"), serialBelow).IsError());
  EXPECT_EQ(serial, serialBelow);
  ASSERT_FALSE(FXPath::ApiGetVolumeFileSystemFlags(m_root, flags).IsError());
  EXPECT_NE(0u, flags & 0x2u);  // FILE_CASE_PRESERVED_NAMES

  std::string id;
  const CZuError idResult = FXPath::TQGetVolumeUniqueId(m_root, id);
  if (!idResult.IsError()) {
    EXPECT_TRUE(FXPath::IsVolumeUniqueId(id)) << id;
  } else {
    EXPECT_TRUE(kZuIsWindows) << idResult.AsString();  // some Windows volumes answer no unique id
  }

  std::string guid;
  const CZuError guidResult = FXPath::TQGetVolumeNameForVolumeMountPoint(volume, guid);
  if (kZuIsWindows && !guidResult.IsError()) {
    EXPECT_TRUE(FXPath::IsVolumeGuidPath(guid)) << guid;
  } else if (!kZuIsWindows) {
    EXPECT_TRUE(FXErrorUtil::IsWin32(guidResult, ERROR_NOT_SUPPORTED));
    EXPECT_TRUE(Has(guidResult, "GetVolumeNameForVolumeMountPointW"));
  }

  std::string letter;
  if (driveRoot && !FXPath::GetDriveLetterForMountPath(volume, letter).IsError()) {
    EXPECT_TRUE(FXPath::IsSamePathAs(volume, letter)) << letter;
  }
  if (!kZuIsWindows) {
    ASSERT_FALSE(FXPath::GetDriveLetterForMountPath(std::string("/"), letter).IsError());
    EXPECT_EQ("Z:\\", letter);
    const CZuError none = FXPath::GetDriveLetterForMountPath(std::string("/proc"), letter);
    EXPECT_TRUE(FXErrorUtil::IsWin32(none, ERROR_NOT_FOUND));
    EXPECT_TRUE(Has(none, "No drive letter found for"));
  }
}

TEST_F(PathSystem, SymbolicLinkLoops) {
  std::error_code error;
  fs::create_directory_symlink(m_os / "a", m_os / "a" / "b" / "loop", error);
  if (error) GTEST_SKIP() << "no symbolic links here: " << error.message();
  fs::create_directory_symlink(m_os / "other", m_os / "a" / "b" / "away", error);
  ASSERT_FALSE(error);

  bool link = false;
  EXPECT_FALSE(CZuPath::IsLink(In("a\\b\\loop").c_str(), link).IsError());
  EXPECT_TRUE(link);
  const CZuError loop = FXPath::CheckForCyclicSymbolicLink(In("a\\b\\loop"));
  EXPECT_TRUE(FXErrorUtil::IsWin32(loop, ERROR_CANT_RESOLVE_FILENAME)) << loop.AsString();
  EXPECT_TRUE(Has(loop, "Target=[")) << loop.AsString();
  EXPECT_TRUE(Has(loop, "\\a], VolumeSerialNumber=[0x")) << loop.AsString();
  EXPECT_FALSE(FXPath::CheckForCyclicSymbolicLink(In("a\\b\\away")).IsError());
  EXPECT_FALSE(FXPath::CheckForCyclicSymbolicLink(In("a\\f.txt")).IsError());
  const CZuError missing = FXPath::CheckForCyclicSymbolicLink(In("a\\nothing"));
  EXPECT_TRUE(missing.IsError());
  EXPECT_TRUE(Has(missing, "GetFileInformationByHandle failed, Path=[")) << missing.AsString();
}

TEST_F(PathSystem, DeletePermissionsAndNfs) {
  ASSERT_FALSE(CZuPath::RevokeDeletePermissions(In("a\\f.txt").c_str()).IsError());
  if (!kZuIsWindows) {
    EXPECT_EQ(fs::perms::none, fs::status(m_os / "a").permissions() & fs::perms::owner_write);
  }
  ASSERT_FALSE(CZuPath::GrantDeletePermissionsEx(In("a\\f.txt").c_str()).IsError());
  if (!kZuIsWindows) {
    EXPECT_NE(fs::perms::none, fs::status(m_os / "a").permissions() & fs::perms::owner_write);
  }
  EXPECT_TRUE(fs::remove(m_os / "a" / "f.txt"));
  EXPECT_TRUE(Has(CZuPath::GrantDeletePermissionsEx(nullptr), "Path=(null)"));
  EXPECT_TRUE(Has(CZuPath::RevokeDeletePermissions(""), "Path=[]"));
  EXPECT_TRUE(CZuPath::GrantDeletePermissionsEx(In("gone").c_str()).IsError());

  bool nfs = true;
  const CZuError r = CZuPath::isNFS(m_root.c_str(), nfs);
  EXPECT_FALSE(nfs);
  if (kZuIsWindows) {
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_SUPPORTED));
    EXPECT_TRUE(Has(r, "NFS check not supported on this platform"));
  } else {
    EXPECT_FALSE(r.IsError()) << r.AsString();
  }
  EXPECT_TRUE(Has(CZuPath::isNFS(nullptr, nfs), "name parameter passed as null"));
}

TEST_F(PathSystem, PosixNamesWithABackslashAreRefused) {
  if (kZuIsWindows) GTEST_SKIP() << "Windows names cannot hold a backslash";
  const fs::path odd = m_os / "we\\ird";
  fs::create_directories(odd / "inside");
  const fs::path previous = fs::current_path();
  fs::current_path(odd / "inside");
  std::string current = "kept";
  const CZuError r = FXPath::GetCurrentFolder(current);
  fs::current_path(previous);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_NAME));
  EXPECT_TRUE(Has(r, "Name=[we\\ird]")) << r.AsString();
  EXPECT_EQ("kept", current);
}

}  // namespace
