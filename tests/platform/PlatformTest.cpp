#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "platform/DynamicLibrary.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "platform/ZuTypes.h"

namespace {

TEST(Platform, BuildTargetAndTypeSizes) {
  // ZU_TEST_EXPECT_WINDOWS comes from the build system: this proves that the
  // Windows preset's tests really ran as Windows programs (under wine).
  EXPECT_EQ(ZU_TEST_EXPECT_WINDOWS != 0, kZuIsWindows);
  EXPECT_EQ(4u, sizeof(DWORD));
  EXPECT_EQ(4u, sizeof(HRESULT));
  EXPECT_LT(HRESULT(E_FAIL), 0);
  EXPECT_EQ(8u, sizeof(long long));
  EXPECT_EQ(sizeof(void*), sizeof(HANDLE));
}

TEST(Platform, ErrnoFailuresCarryTheNearestWin32Code) {
  // The same fault reads the same on both platforms: the Win32 code, and
  // beneath it the C runtime's numbering of the errno.
  const FXCodeLocation here("p.cpp", "CPlatform::Open", 1);
  FXErrorUtil::CompileErrorMappingsIntoContainer();
  const CZuError r = FXPlatform::ErrorFromSystem(here, FXPlatform::FromErrno(ENOENT));
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(r.Is(static_cast<HRESULT>(0xECCC0002)));
  EXPECT_EQ(2, FXErrorUtil::GetErrNo(r));
  EXPECT_EQ(2, FXPlatform::FromErrno(ENOENT).crtErrno);
  EXPECT_EQ(13, FXPlatform::FromErrno(EACCES).crtErrno);
  EXPECT_EQ(DWORD(ERROR_ACCESS_DENIED), FXPlatform::FromErrno(EACCES).win32);
  EXPECT_EQ(DWORD(ERROR_DISK_FULL), FXPlatform::FromErrno(ENOSPC).win32);
  EXPECT_EQ(DWORD(ERROR_SUCCESS), FXPlatform::FromErrno(0).win32);

  // One table on both platforms: each C runtime failure gives the same
  // Win32 code and the same runtime number everywhere.
  struct {
    int native;
    DWORD win32;
    int crt;
  } const cases[] = {
      {ENOTDIR, ERROR_PATH_NOT_FOUND, 20},     {EISDIR, ERROR_ACCESS_DENIED, 21},
      {EROFS, ERROR_WRITE_PROTECT, 30},        {EEXIST, ERROR_FILE_EXISTS, 17},
      {ENOTEMPTY, ERROR_DIR_NOT_EMPTY, 41},    {EXDEV, ERROR_NOT_SAME_DEVICE, 18},
      {EBUSY, ERROR_BUSY, 16},                 {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE, 38},
      {EPIPE, ERROR_BROKEN_PIPE, 32},          {ENFILE, ERROR_TOO_MANY_OPEN_FILES, 23},
      {EILSEQ, ERROR_NO_UNICODE_TRANSLATION, 42}, {EAGAIN, ERROR_LOCK_VIOLATION, 11},
      {ESPIPE, ERROR_NEGATIVE_SEEK, 29},       {EFBIG, ERROR_FILE_TOO_LARGE, 27},
      {EIO, ERROR_GEN_FAILURE, 5},             {E2BIG, ERROR_GEN_FAILURE, 7},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.win32, FXPlatform::FromErrno(c.native).win32) << c.crt;
    EXPECT_EQ(c.crt, FXPlatform::FromErrno(c.native).crtErrno);
  }
}

TEST(Platform, DirectoriesAndNoReplaceMoves) {
  const std::string sep(1, FXPlatform::kPathSeparator);
  const std::string root = FXPlatform::TempDirectory() + "zu_platform_test_" + std::to_string(std::rand());
  const std::string deep = root + sep + "a" + sep + "b";
  ASSERT_FALSE(FXPlatform::CreateDirectories(deep + sep).IsError());
  EXPECT_TRUE(FXPlatform::IsDirectory(deep));
  EXPECT_FALSE(FXPlatform::CreateDirectories(deep).IsError());  // exists already: fine

  const std::string one = root + sep + "one.txt", two = root + sep + "two.txt";
  for (const std::string* path : {&one, &two}) {
    std::FILE* f = std::fopen(path->c_str(), "w");
    ASSERT_NE(nullptr, f);
    std::fclose(f);
  }
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPlatform::CreateDirectories(one), ERROR_ALREADY_EXISTS));
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPlatform::MoveFileNoReplace(one, two), ERROR_ALREADY_EXISTS));
  EXPECT_TRUE(FXPlatform::PathExists(one));  // nothing moved, nothing lost
  const std::string three = root + sep + "three.txt";
  EXPECT_FALSE(FXPlatform::MoveFileNoReplace(one, three).IsError());
  EXPECT_FALSE(FXPlatform::PathExists(one));

  EXPECT_FALSE(FXPlatform::DeleteFileAt(two).IsError());
  EXPECT_FALSE(FXPlatform::DeleteFileAt(three).IsError());
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPlatform::DeleteFileAt(three), ERROR_FILE_NOT_FOUND));
  std::remove((root + sep + "a" + sep + "b").c_str());
  std::remove((root + sep + "a").c_str());
  std::remove(root.c_str());
}

TEST(Platform, DynamicLibraries) {
  FXPlatform::CDynamicLibrary missing;
  const CZuError r = missing.Load(FXPlatform::SharedLibraryFileName("NoSuchLibrary_zu"));
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_MOD_NOT_FOUND)) << r.AsString();
  EXPECT_FALSE(missing.IsLoaded());
  EXPECT_EQ(nullptr, missing.Symbol("anything"));

  FXPlatform::CDynamicLibrary system;
  ASSERT_FALSE(system.Load(kZuIsWindows ? "kernel32.dll" : "libc.so.6").IsError());
  EXPECT_NE(nullptr, system.Symbol(kZuIsWindows ? "GetTickCount" : "strlen"));
  EXPECT_EQ(nullptr, system.Symbol("NoSuchExport_zu"));
  system.Unload();
  EXPECT_FALSE(system.IsLoaded());
}

}  // namespace
