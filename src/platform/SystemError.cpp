#include "platform/SystemError.h"

#include "errors/ErrorUtil.h"

namespace FXPlatform {

// Keyed by the Microsoft C runtime's numbers (named in the comments), which
// the Windows runtime reports itself and the POSIX backend converts to.
DWORD Win32FromCrtErrno(int crtErrno) {
  switch (crtErrno) {
    case 0: return ERROR_SUCCESS;
    case 2: return ERROR_FILE_NOT_FOUND;  // ENOENT
    case 20: return ERROR_PATH_NOT_FOUND;  // ENOTDIR
    case 1:                                // EPERM
    case 13:                               // EACCES
    case 21: return ERROR_ACCESS_DENIED;   // EISDIR
    case 30: return ERROR_WRITE_PROTECT;   // EROFS
    case 17: return ERROR_FILE_EXISTS;     // EEXIST
    case 12: return ERROR_NOT_ENOUGH_MEMORY;  // ENOMEM
    case 28: return ERROR_DISK_FULL;          // ENOSPC
    case 9: return ERROR_INVALID_HANDLE;      // EBADF
    case 22: return ERROR_INVALID_PARAMETER;  // EINVAL
    case 23:                                  // ENFILE
    case 24: return ERROR_TOO_MANY_OPEN_FILES;  // EMFILE
    case 16: return ERROR_BUSY;                 // EBUSY
    case 139: return ERROR_SHARING_VIOLATION;   // ETXTBSY
    case 11: return ERROR_LOCK_VIOLATION;       // EAGAIN
    case 41: return ERROR_DIR_NOT_EMPTY;        // ENOTEMPTY
    case 38: return ERROR_FILENAME_EXCED_RANGE;  // ENAMETOOLONG
    case 32: return ERROR_BROKEN_PIPE;           // EPIPE
    case 18: return ERROR_NOT_SAME_DEVICE;       // EXDEV
    case 138: return WAIT_TIMEOUT;               // ETIMEDOUT
    case 4:                                      // EINTR
    case 105: return ERROR_OPERATION_ABORTED;    // ECANCELED
    case 40:                                     // ENOSYS
    case 129: return ERROR_NOT_SUPPORTED;        // ENOTSUP
    case 114: return ERROR_CANT_RESOLVE_FILENAME;  // ELOOP
    case 6:                                        // ENXIO
    case 19: return ERROR_DEV_NOT_EXIST;           // ENODEV
    case 42: return ERROR_NO_UNICODE_TRANSLATION;  // EILSEQ
    case 29: return ERROR_NEGATIVE_SEEK;           // ESPIPE
    case 14: return ERROR_NOACCESS;                // EFAULT
    case 27: return ERROR_FILE_TOO_LARGE;          // EFBIG
    default: return ERROR_GEN_FAILURE;             // EIO and the rest
  }
}

CZuError ErrorFromSystem(const FXCodeLocation& location, const TSystemError& error) {
  CZuError result = FXErrorUtil::ErrorWin32(location, error.win32);
  if (error.crtErrno >= 0) FXErrorUtil::PushErrNo(result, location, error.crtErrno);
  return result;
}

}  // namespace FXPlatform
