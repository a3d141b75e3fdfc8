#include "platform/SystemError.h"

#include <windows.h>


namespace FXPlatform {

TSystemError LastSystemError() {
  TSystemError error;
  error.win32 = ::GetLastError();
  return error;
}

TSystemError FromErrno(int nativeErrno) {
  // The C runtime here already uses its own numbering; _doserrno is not
  // reliable after every call, so the Win32 side is derived from the errno.
  TSystemError error;
  error.crtErrno = nativeErrno;
  switch (nativeErrno) {
    case 0: error.win32 = ERROR_SUCCESS; break;
    case ENOENT: error.win32 = ERROR_FILE_NOT_FOUND; break;
    case EACCES: error.win32 = ERROR_ACCESS_DENIED; break;
    case EEXIST: error.win32 = ERROR_FILE_EXISTS; break;
    case ENOMEM: error.win32 = ERROR_NOT_ENOUGH_MEMORY; break;
    case ENOSPC: error.win32 = ERROR_DISK_FULL; break;
    case EBADF: error.win32 = ERROR_INVALID_HANDLE; break;
    case EINVAL: error.win32 = ERROR_INVALID_PARAMETER; break;
    case EMFILE: error.win32 = ERROR_TOO_MANY_OPEN_FILES; break;
    default: error.win32 = ERROR_GEN_FAILURE; break;
  }
  return error;
}

}  // namespace FXPlatform
