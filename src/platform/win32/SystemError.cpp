#include "platform/SystemError.h"

#include <windows.h>

namespace FXPlatform {

TSystemError LastSystemError() {
  TSystemError error;
  error.win32 = ::GetLastError();
  return error;
}

TSystemError FromErrno(int nativeErrno) {
  // The runtime here numbers errno as the table does; _doserrno is not
  // reliable after every call, so the Win32 side comes from the errno.
  TSystemError error;
  error.crtErrno = nativeErrno;
  error.win32 = Win32FromCrtErrno(nativeErrno);
  return error;
}

}  // namespace FXPlatform
