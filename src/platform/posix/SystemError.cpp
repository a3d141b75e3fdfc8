#include "platform/SystemError.h"

#include <cerrno>

namespace {

// errno numbers of the Microsoft C runtime, which the ErrNo domain uses on
// every platform so that log lines read the same everywhere.
int CrtErrno(int e) {
  switch (e) {
    case EPERM: return 1;
    case ENOENT: return 2;
    case ESRCH: return 3;
    case EINTR: return 4;
    case EIO: return 5;
    case ENXIO: return 6;
    case E2BIG: return 7;
    case ENOEXEC: return 8;
    case EBADF: return 9;
    case ECHILD: return 10;
    case EAGAIN: return 11;
    case ENOMEM: return 12;
    case EACCES: return 13;
    case EFAULT: return 14;
    case EBUSY: return 16;
    case EEXIST: return 17;
    case EXDEV: return 18;
    case ENODEV: return 19;
    case ENOTDIR: return 20;
    case EISDIR: return 21;
    case EINVAL: return 22;
    case ENFILE: return 23;
    case EMFILE: return 24;
    case ENOTTY: return 25;
    case EFBIG: return 27;
    case ENOSPC: return 28;
    case ESPIPE: return 29;
    case EROFS: return 30;
    case EMLINK: return 31;
    case EPIPE: return 32;
    case EDOM: return 33;
    case ERANGE: return 34;
    case EDEADLK: return 36;
    case ENAMETOOLONG: return 38;
    case ENOLCK: return 39;
    case ENOSYS: return 40;
    case ENOTEMPTY: return 41;
    case EILSEQ: return 42;
    case EADDRINUSE: return 100;
    case EADDRNOTAVAIL: return 101;
    case EAFNOSUPPORT: return 102;
    case EALREADY: return 103;
    case EBADMSG: return 104;
    case ECANCELED: return 105;
    case ECONNABORTED: return 106;
    case ECONNREFUSED: return 107;
    case ECONNRESET: return 108;
    case EDESTADDRREQ: return 109;
    case EHOSTUNREACH: return 110;
    case EIDRM: return 111;
    case EINPROGRESS: return 112;
    case EISCONN: return 113;
    case ELOOP: return 114;
    case EMSGSIZE: return 115;
    case ENETDOWN: return 116;
    case ENETRESET: return 117;
    case ENETUNREACH: return 118;
    case ENOBUFS: return 119;
    case ENODATA: return 120;
    case ENOLINK: return 121;
    case ENOMSG: return 122;
    case ENOPROTOOPT: return 123;
    case ENOSR: return 124;
    case ENOSTR: return 125;
    case ENOTCONN: return 126;
    case ENOTRECOVERABLE: return 127;
    case ENOTSOCK: return 128;
    case ENOTSUP: return 129;  // also EOPNOTSUPP on Linux
    case EOVERFLOW: return 132;
    case EOWNERDEAD: return 133;
    case EPROTO: return 134;
    case EPROTONOSUPPORT: return 135;
    case EPROTOTYPE: return 136;
    case ETIME: return 137;
    case ETIMEDOUT: return 138;
    case ETXTBSY: return 139;
    default: return 131;  // EOTHER
  }
}

}  // namespace

namespace FXPlatform {

TSystemError FromErrno(int nativeErrno) {
  TSystemError error;
  error.crtErrno = nativeErrno == 0 ? 0 : CrtErrno(nativeErrno);
  // A full quota has no number of its own there: it is a full disk.
  error.win32 = nativeErrno == EDQUOT ? ERROR_DISK_FULL : Win32FromCrtErrno(error.crtErrno);
  return error;
}

TSystemError LastSystemError() { return FromErrno(errno); }

}  // namespace FXPlatform
