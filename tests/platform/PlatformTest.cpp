#include <cerrno>
#include <cstdint>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
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

}  // namespace
