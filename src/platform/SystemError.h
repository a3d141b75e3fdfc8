// The last operating-system failure of the calling thread, in the library's
// vocabulary: a Win32 error code on every platform, plus on POSIX the errno
// in the Microsoft C runtime's numbering (see errors/ErrorUtil.h).
#pragma once

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {

struct TSystemError {
  DWORD win32 = 0;     // GetLastError(), or the nearest Win32 code for errno
  int crtErrno = -1;   // -1 on Windows, where the system speaks Win32 itself
};

// Reads GetLastError() or errno right away; call it before anything else
// can overwrite them.
ZUUTILS_API TSystemError LastSystemError();

// The nearest Win32 code and the Microsoft C runtime's number for an errno
// (on Windows the runtime's errno already is that number). Both platforms
// share one table, so a C runtime failure reads the same everywhere.
ZUUTILS_API TSystemError FromErrno(int nativeErrno);

// That table, keyed by the Microsoft C runtime's errno numbers; codes it
// does not list become ERROR_GEN_FAILURE (31).
DWORD Win32FromCrtErrno(int crtErrno);

// A failing result with the Win32 code. Its root cause is the Win32 item, so
// users read the same line on every platform; on POSIX an ErrNo item on top
// keeps the original errno for the log.
ZUUTILS_API CZuError ErrorFromSystem(const FXCodeLocation& location, const TSystemError& error);

}  // namespace FXPlatform
