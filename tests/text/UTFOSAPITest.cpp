#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <random>
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"
#include "platform/FileSystem.h"
#include "text/StringAlgo.h"
#include "text/UTFOSAPI.h"

namespace {

using FXErrorUtil::IsWin32;

bool Says(const CZuError& r, const std::string& text) { return r.AsString().find(text) != std::string::npos; }

// A scratch folder with a name outside ASCII, and the working directory
// moved into it for the relative-path calls; both undone at the end.
class UTFOSAPI : public ::testing::Test {
 protected:
  void SetUp() override {
    FXErrorUtil::CompileErrorMappingsIntoContainer();
    char cwd[4096];
    ASSERT_FALSE(CZuUTFOSAPI::GetCurrentDirectoryW(sizeof cwd, cwd, nullptr).IsError());
    m_previous = cwd;
    m_root = FXPlatform::TempDirectory() + "zu_osapi_\xC3\x9C\xE6\x9D\xB1_" + std::to_string(std::random_device()());
    ASSERT_FALSE(CZuUTFOSAPI::mkdir(m_root.c_str()).IsError());
    ASSERT_FALSE(CZuUTFOSAPI::SetCurrentDirectoryW(m_root.c_str()).IsError());
  }
  void TearDown() override {
    CZuUTFOSAPI::SetCurrentDirectoryW(m_previous.c_str());
    RemoveTree(m_root);
    EXPECT_TRUE(CZuUTFOSAPI::access(m_root.c_str(), 0).IsError());  // all gone
  }

  static void RemoveTree(const std::string& folder) {
    WIN32_FIND_DATAA data;
    HANDLE find = nullptr;
    const std::string all = folder + Sep() + "*";
    if (!CZuUTFOSAPI::FindFirstFileW(all.c_str(), &data, &find).IsError()) {
      do {
        const std::string name = data.cFileName;
        if (name == "." || name == "..") continue;
        const std::string path = folder + Sep() + name;
        if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
          RemoveTree(path);
        } else {
          CZuUTFOSAPI::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
          CZuUTFOSAPI::DeleteFileW(path.c_str());
        }
      } while (!CZuUTFOSAPI::FindNextFileW(find, &data).IsError());
      CZuUTFOSAPI::FindClose(find);
    }
    EXPECT_FALSE(CZuUTFOSAPI::RemoveDirectoryW(folder.c_str()).IsError()) << folder;
  }

  static std::string Sep() { return std::string(1, FXPlatform::kPathSeparator); }
  std::string At(const std::string& name) const { return m_root + Sep() + name; }

  static void Write(const std::string& path, const std::string& text) {
    FILE* file = nullptr;
    ASSERT_FALSE(CZuUTFOSAPI::fopen(path.c_str(), "wb", &file).IsError());
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
  }
  static std::string Read(const std::string& path) {
    FILE* file = nullptr;
    if (CZuUTFOSAPI::fopen(path.c_str(), "rb", &file).IsError()) return "<missing>";
    char buffer[256];
    const std::size_t n = std::fread(buffer, 1, sizeof buffer, file);
    std::fclose(file);
    return std::string(buffer, n);
  }

  std::string m_previous, m_root;
};

TEST_F(UTFOSAPI, FilesWithUtf8NamesRoundTrip) {
  const std::string name = "\xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80.txt";
  Write(At(name), "hello");
  EXPECT_FALSE(CZuUTFOSAPI::access(At(name).c_str(), 0).IsError());
  TZuStat64 st;
  ASSERT_FALSE(CZuUTFOSAPI::stat64(name.c_str(), &st).IsError());  // relative to the scratch folder
  EXPECT_EQ(5, st.st_size);
  TZuStat plain;
  EXPECT_FALSE(CZuUTFOSAPI::stat(name.c_str(), &plain).IsError());

  // open with O_CREAT makes a file its owner may read and write (0600 is
  // also _S_IREAD | _S_IWRITE).
  int fd = -1;
  ASSERT_FALSE(CZuUTFOSAPI::open("created.txt", O_CREAT | O_WRONLY, &fd).IsError());
  ::close(fd);
  ASSERT_FALSE(CZuUTFOSAPI::stat("created.txt", &plain).IsError());
  EXPECT_EQ(0600, plain.st_mode & 0600);
  EXPECT_FALSE(CZuUTFOSAPI::chmod("created.txt", 0600).IsError());
  EXPECT_FALSE(CZuUTFOSAPI::unlink("created.txt").IsError());

  // Copies and moves never overwrite unless told to.
  EXPECT_FALSE(CZuUTFOSAPI::CopyFileW(name.c_str(), "copy.txt", true).IsError());
  EXPECT_EQ("hello", Read(At("copy.txt")));
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::CopyFileW(name.c_str(), "copy.txt", true), ERROR_FILE_EXISTS));
  Write(At("other.txt"), "other");
  const CZuError refused = CZuUTFOSAPI::MoveFileExW("other.txt", "copy.txt", 0);
  EXPECT_TRUE(IsWin32(refused, ERROR_ALREADY_EXISTS)) << refused.AsString();
  EXPECT_TRUE(Says(refused, "CZuUTFOSAPI::MoveFileExW"));
  EXPECT_TRUE(CZuUTFOSAPI::rename("other.txt", "copy.txt").IsError());
  EXPECT_EQ("hello", Read(At("copy.txt")));  // nothing lost
  EXPECT_FALSE(CZuUTFOSAPI::MoveFileExW("other.txt", "copy.txt", MOVEFILE_REPLACE_EXISTING).IsError());
  EXPECT_EQ("other", Read(At("copy.txt")));
  EXPECT_FALSE(CZuUTFOSAPI::MoveFileW("copy.txt", "moved.txt").IsError());
  EXPECT_FALSE(CZuUTFOSAPI::rename("moved.txt", "renamed.txt").IsError());
  EXPECT_FALSE(CZuUTFOSAPI::CreateHardLinkW("link.txt", "renamed.txt", nullptr).IsError());
  EXPECT_EQ("other", Read(At("link.txt")));
  EXPECT_FALSE(CZuUTFOSAPI::MoveFileWithProgressW("link.txt", "linked.txt", nullptr, nullptr, 0).IsError());
  EXPECT_FALSE(CZuUTFOSAPI::remove("linked.txt").IsError());
  EXPECT_FALSE(CZuUTFOSAPI::unlink("renamed.txt").IsError());

  DWORD high = 1, low = 0;
  EXPECT_FALSE(CZuUTFOSAPI::GetCompressedFileSizeW(name.c_str(), &high, &low).IsError());
  EXPECT_EQ(0u, high);
  EXPECT_FALSE(CZuUTFOSAPI::chmod(name.c_str(), 0600).IsError());
  EXPECT_FALSE(CZuUTFOSAPI::DeleteFileW(name.c_str()).IsError());
  EXPECT_TRUE(CZuUTFOSAPI::access(name.c_str(), 0).IsError());
}

TEST_F(UTFOSAPI, FailuresReadTheSameOnBothPlatforms) {
  FILE* file = nullptr;
  const CZuError missing = CZuUTFOSAPI::fopen("missing.txt", "rb", &file);
  EXPECT_EQ(nullptr, file);
  EXPECT_TRUE(IsWin32(missing, ERROR_FILE_NOT_FOUND)) << missing.AsString();
  EXPECT_TRUE(FXErrorUtil::IsErrNo(missing, 2));
  EXPECT_TRUE(Says(missing, "CZuUTFOSAPI::fopen"));
  EXPECT_TRUE(Says(missing, "missing.txt"));
  int fd = -1;
  const CZuError open2 = CZuUTFOSAPI::open2("missing.txt", O_RDONLY, 0, &fd);
  EXPECT_TRUE(IsWin32(open2, ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(Says(open2, "CZuUTFOSAPI::open2")) << open2.AsString();
  EXPECT_TRUE(Says(CZuUTFOSAPI::open("missing.txt", O_RDONLY, &fd), "CZuUTFOSAPI::open("));
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::DeleteFileW("missing.txt"), ERROR_FILE_NOT_FOUND));
  DWORD attributes = 0;
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::GetFileAttributesTQ("missing.txt", &attributes), ERROR_FILE_NOT_FOUND));

  ASSERT_FALSE(CZuUTFOSAPI::mkdir("full").IsError());
  Write(At("full") + Sep() + "x", "x");
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::RemoveDirectoryW("full"), ERROR_DIR_NOT_EMPTY));
  const CZuError rmdir = CZuUTFOSAPI::rmdir("full");
  EXPECT_TRUE(IsWin32(rmdir, ERROR_DIR_NOT_EMPTY)) << rmdir.AsString();

  // Null pointers are refused before anything is called.
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::access(nullptr, 0), ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::fopen("x", "r", nullptr), ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::FindFirstFileW("*", nullptr, nullptr), ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::GetFullPathNameTQ(nullptr, 0, nullptr, nullptr, nullptr), ERROR_INVALID_PARAMETER));

  // The members POSIX has no equivalent for say so.
  if (!kZuIsWindows) {
    HANDLE handle = nullptr;
    EXPECT_TRUE(IsWin32(CZuUTFOSAPI::CreateFileW("x", 0, 0, nullptr, 0, 0, nullptr, &handle), ERROR_NOT_SUPPORTED));
    EXPECT_EQ(INVALID_HANDLE_VALUE, handle);
    DWORD type = 0;
    const CZuError binary = CZuUTFOSAPI::GetBinaryTypeW("x", &type);
    EXPECT_TRUE(IsWin32(binary, ERROR_NOT_SUPPORTED));
    EXPECT_TRUE(Says(binary, "GetBinaryTypeW"));
    EXPECT_TRUE(IsWin32(CZuUTFOSAPI::ReplaceFileW("a", "b", nullptr, 0, nullptr, nullptr), ERROR_NOT_SUPPORTED));
    char buffer[64];
    EXPECT_TRUE(
        IsWin32(CZuUTFOSAPI::SearchPathW(nullptr, "x", nullptr, sizeof buffer, buffer, nullptr, nullptr), ERROR_NOT_SUPPORTED));
  }
}

TEST_F(UTFOSAPI, FindWithWildcards) {
  for (const char* name : {"a.txt", "b.txt", "c.log", "\xE6\x9D\xB1.txt"}) Write(At(name), name);
  ASSERT_FALSE(CZuUTFOSAPI::mkdir("sub.txt").IsError());
  WIN32_FIND_DATAA data;
  HANDLE find = nullptr;
  const std::string pattern = At("*.txt");
  ASSERT_FALSE(CZuUTFOSAPI::FindFirstFileExW(pattern.c_str(), FindExInfoStandard, &data, FindExSearchNameMatch, nullptr,
                                             0, &find)
                   .IsError());
  std::set<std::string> names;
  bool sawDirectory = false;
  do {
    names.insert(data.cFileName);
    if (std::string(data.cFileName) == "sub.txt") sawDirectory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (std::string(data.cFileName) == "a.txt") {
      EXPECT_EQ(5u, data.nFileSizeLow);
    }
  } while (!CZuUTFOSAPI::FindNextFileW(find, &data).IsError());
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::FindNextFileW(find, &data), ERROR_NO_MORE_FILES));
  EXPECT_FALSE(CZuUTFOSAPI::FindClose(find).IsError());
  EXPECT_EQ((std::set<std::string>{"a.txt", "b.txt", "sub.txt", "\xE6\x9D\xB1.txt"}), names);
  EXPECT_TRUE(sawDirectory);

  ASSERT_FALSE(CZuUTFOSAPI::FindFirstFileW("?.log", &data, &find).IsError());
  EXPECT_STREQ("c.log", data.cFileName);
  EXPECT_FALSE(CZuUTFOSAPI::FindClose(find).IsError());
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::FindFirstFileW("*.none", &data, &find), ERROR_FILE_NOT_FOUND));
  const std::string elsewhere = At("nowhere") + Sep() + "*";
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::FindFirstFileW(elsewhere.c_str(), &data, &find), ERROR_PATH_NOT_FOUND));
}

TEST_F(UTFOSAPI, AttributesAndNames) {
  Write(At("file.txt"), "12345678");
  DWORD attributes = 0;
  ASSERT_FALSE(CZuUTFOSAPI::GetFileAttributesTQ(m_root.c_str(), &attributes).IsError());
  EXPECT_NE(0u, attributes & FILE_ATTRIBUTE_DIRECTORY);
  ASSERT_FALSE(CZuUTFOSAPI::SetFileAttributesW("file.txt", FILE_ATTRIBUTE_READONLY).IsError());
  ASSERT_FALSE(CZuUTFOSAPI::GetFileAttributesTQ("file.txt", &attributes).IsError());
  EXPECT_NE(0u, attributes & FILE_ATTRIBUTE_READONLY);
  ASSERT_FALSE(CZuUTFOSAPI::SetFileAttributesW("file.txt", FILE_ATTRIBUTE_NORMAL).IsError());
  WIN32_FILE_ATTRIBUTE_DATA info;
  ASSERT_FALSE(CZuUTFOSAPI::GetFileAttributesExW("file.txt", GetFileExInfoStandard, &info).IsError());
  EXPECT_EQ(0u, info.dwFileAttributes & FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(8u, info.nFileSizeLow);

  // Full names come back in the caller's buffer, or the size it needs.
  char buffer[1024];
  char* filePart = nullptr;
  DWORD length = 0;
  ASSERT_FALSE(CZuUTFOSAPI::GetFullPathNameTQ("file.txt", sizeof buffer, buffer, &filePart, &length).IsError());
  char expected[1024];
  ASSERT_FALSE(CZuUTFOSAPI::GetCurrentDirectoryW(sizeof expected, expected, nullptr).IsError());
  EXPECT_EQ(std::string(expected) + Sep() + "file.txt", buffer);
  EXPECT_EQ(std::strlen(buffer), length);
  EXPECT_STREQ("file.txt", filePart);
  char small[4] = "abc";
  const CZuError tooSmall = CZuUTFOSAPI::GetFullPathNameTQ("file.txt", sizeof small, small, nullptr, &length);
  EXPECT_TRUE(IsWin32(tooSmall, ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(std::strlen(buffer) + 1, length);
  EXPECT_STREQ("abc", small);  // untouched
  ASSERT_FALSE(CZuUTFOSAPI::fullpath(buffer, "sub" "/../file.txt", sizeof buffer).IsError());
  EXPECT_EQ(std::string(expected) + Sep() + "file.txt", buffer);
  ASSERT_FALSE(CZuUTFOSAPI::GetLongPathNameW(At("file.txt").c_str(), buffer, sizeof buffer, &length).IsError());
  EXPECT_EQ(At("file.txt"), buffer);
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::GetShortPathNameW("missing", buffer, sizeof buffer, nullptr), ERROR_FILE_NOT_FOUND));

  ASSERT_FALSE(CZuUTFOSAPI::searchenv("file.txt", "PATH", buffer, sizeof buffer).IsError());
  EXPECT_EQ(At("file.txt"), buffer);
  EXPECT_TRUE(CZuUTFOSAPI::searchenv("no-such-file.zu", "PATH", buffer, sizeof buffer).IsError());
  EXPECT_STREQ("", buffer);

  // Temporary names: a unique number only forms the name, 0 makes the file.
  ASSERT_FALSE(CZuUTFOSAPI::GetTempFileNameTQ(m_root.c_str(), "zuprefix", 0x1A2B, buffer, sizeof buffer).IsError());
  std::string temp = buffer, expectedTemp = At("zup1A2B.tmp");
  FXString::ToLower(temp);  // the case of the hex digits varies between Windows versions
  FXString::ToLower(expectedTemp);
  EXPECT_EQ(expectedTemp, temp);
  ASSERT_FALSE(CZuUTFOSAPI::GetTempFileNameTQ(m_root.c_str(), "zu", 0, buffer, sizeof buffer).IsError());
  EXPECT_FALSE(CZuUTFOSAPI::access(buffer, 0).IsError());
  char name[] = "tmpXXXXXX";
  ASSERT_FALSE(CZuUTFOSAPI::mktemp(name).IsError());
  EXPECT_EQ(9u, std::strlen(name));
  EXPECT_EQ(std::string::npos, std::string(name).find("XXX"));
}

TEST(UTFOSAPIText, SplitAndMakePaths) {
  char drive[8], dir[64], fname[64], ext[16];
  ASSERT_FALSE(CZuUTFOSAPI::splitpath("C:\\dir/sub\\file.tar.gz", drive, sizeof drive, dir, sizeof dir, fname,
                                      sizeof fname, ext, sizeof ext)
                   .IsError());
  EXPECT_STREQ("C:", drive);
  EXPECT_STREQ("\\dir/sub\\", dir);
  EXPECT_STREQ("file.tar", fname);
  EXPECT_STREQ(".gz", ext);
  ASSERT_FALSE(CZuUTFOSAPI::splitpath("/usr/lib/libzu", nullptr, 0, dir, sizeof dir, fname, sizeof fname, ext,
                                      sizeof ext)
                   .IsError());
  EXPECT_STREQ("/usr/lib/", dir);
  EXPECT_STREQ("libzu", fname);
  EXPECT_STREQ("", ext);
  char tiny[2];
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::splitpath("C:\\dir\\f.x", drive, sizeof drive, tiny, sizeof tiny, fname,
                                             sizeof fname, ext, sizeof ext),
                      ERROR_INSUFFICIENT_BUFFER));
  EXPECT_STREQ("", drive);  // nothing half-written

  char path[64];
  ASSERT_FALSE(CZuUTFOSAPI::makepath(path, sizeof path, "D", "\\data", "report", "txt").IsError());
  EXPECT_EQ(std::string("D:\\data") + FXPlatform::kPathSeparator + "report.txt", path);
  ASSERT_FALSE(CZuUTFOSAPI::makepath(path, sizeof path, nullptr, "dir/", "name", ".ext").IsError());
  EXPECT_STREQ("dir/name.ext", path);
  EXPECT_TRUE(IsWin32(CZuUTFOSAPI::makepath(path, 4, "", "", "toolong", ""), ERROR_INSUFFICIENT_BUFFER));

  std::string narrow = "stale";
  EXPECT_FALSE(CZuUTFOSAPI::LocalEncodingToUTF8(L"\u00E9", narrow).IsError());
  EXPECT_EQ("\xC3\xA9", narrow);
  std::wstring wide = L"stale";
  EXPECT_FALSE(CZuUTFOSAPI::UTF8ToLocalEncoding(nullptr, wide).IsError());
  EXPECT_EQ(L"", wide);
}

}  // namespace
