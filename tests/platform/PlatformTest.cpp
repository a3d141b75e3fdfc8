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
