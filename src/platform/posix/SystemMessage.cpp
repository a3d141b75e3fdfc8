#include "platform/SystemMessage.h"

#include <iterator>

namespace {

// The Microsoft C runtime's standard English texts, by its errno numbers.
constexpr const char* kUnknown = "Unknown error";

constexpr const char* kBase[] = {
    "No error",                             // 0
    "Operation not permitted",              // 1 EPERM
    "No such file or directory",            // 2 ENOENT
    "No such process",                      // 3 ESRCH
    "Interrupted function call",            // 4 EINTR
    "Input/output error",                   // 5 EIO
    "No such device or address",            // 6 ENXIO
    "Arg list too long",                    // 7 E2BIG
    "Exec format error",                    // 8 ENOEXEC
    "Bad file descriptor",                  // 9 EBADF
    "No child processes",                   // 10 ECHILD
    "Resource temporarily unavailable",     // 11 EAGAIN
    "Not enough space",                     // 12 ENOMEM
    "Permission denied",                    // 13 EACCES
    "Bad address",                          // 14 EFAULT
    kUnknown,                               // 15
    "Resource device",                      // 16 EBUSY
    "File exists",                          // 17 EEXIST
    "Improper link",                        // 18 EXDEV
    "No such device",                       // 19 ENODEV
    "Not a directory",                      // 20 ENOTDIR
    "Is a directory",                       // 21 EISDIR
    "Invalid argument",                     // 22 EINVAL
    "Too many open files in system",        // 23 ENFILE
    "Too many open files",                  // 24 EMFILE
    "Inappropriate I/O control operation",  // 25 ENOTTY
    kUnknown,                               // 26
    "File too large",                       // 27 EFBIG
    "No space left on device",              // 28 ENOSPC
    "Invalid seek",                         // 29 ESPIPE
    "Read-only file system",                // 30 EROFS
    "Too many links",                       // 31 EMLINK
    "Broken pipe",                          // 32 EPIPE
    "Domain error",                         // 33 EDOM
    "Result too large",                     // 34 ERANGE
    kUnknown,                               // 35
    "Resource deadlock avoided",            // 36 EDEADLK
    kUnknown,                               // 37
    "Filename too long",                    // 38 ENAMETOOLONG
    "No locks available",                   // 39 ENOLCK
    "Function not implemented",             // 40 ENOSYS
    "Directory not empty",                  // 41 ENOTEMPTY
    "Illegal byte sequence",                // 42 EILSEQ
};

constexpr int kFirstSupplement = 100;
constexpr const char* kSupplement[] = {
    "address in use",                  // 100 EADDRINUSE
    "address not available",           // 101 EADDRNOTAVAIL
    "address family not supported",    // 102 EAFNOSUPPORT
    "connection already in progress",  // 103 EALREADY
    "bad message",                     // 104 EBADMSG
    "operation canceled",              // 105 ECANCELED
    "connection aborted",              // 106 ECONNABORTED
    "connection refused",              // 107 ECONNREFUSED
    "connection reset",                // 108 ECONNRESET
    "destination address required",    // 109 EDESTADDRREQ
    "host unreachable",                // 110 EHOSTUNREACH
    "identifier removed",              // 111 EIDRM
    "operation in progress",           // 112 EINPROGRESS
    "already connected",               // 113 EISCONN
    "too many symbolic link levels",   // 114 ELOOP
    "message size",                    // 115 EMSGSIZE
    "network down",                    // 116 ENETDOWN
    "network reset",                   // 117 ENETRESET
    "network unreachable",             // 118 ENETUNREACH
    "no buffer space",                 // 119 ENOBUFS
    "no message available",            // 120 ENODATA
    "no link",                         // 121 ENOLINK
    "no message",                      // 122 ENOMSG
    "no protocol option",              // 123 ENOPROTOOPT
    "no stream resources",             // 124 ENOSR
    "not a stream",                    // 125 ENOSTR
    "not connected",                   // 126 ENOTCONN
    "state not recoverable",           // 127 ENOTRECOVERABLE
    "not a socket",                    // 128 ENOTSOCK
    "not supported",                   // 129 ENOTSUP
    "operation not supported",         // 130 EOPNOTSUPP
    kUnknown,                          // 131 EOTHER
    "value too large",                 // 132 EOVERFLOW
    "owner dead",                      // 133 EOWNERDEAD
    "protocol error",                  // 134 EPROTO
    "protocol not supported",          // 135 EPROTONOSUPPORT
    "wrong protocol type",             // 136 EPROTOTYPE
    "stream timeout",                  // 137 ETIME
    "timed out",                       // 138 ETIMEDOUT
    "text file busy",                  // 139 ETXTBSY
    "operation would block",           // 140 EWOULDBLOCK
};

static_assert(std::size(kBase) == 43, "errno texts 0 to 42");
static_assert(std::size(kSupplement) == 41, "errno texts 100 to 140");

}  // namespace

namespace FXPlatform {

void SystemMessage(DWORD, std::string& text) { text.clear(); }
void SystemMessage(DWORD, std::wstring& text) { text.clear(); }

std::string CRuntimeErrorText(int crtErrno) {
  if (crtErrno >= 0 && crtErrno < static_cast<int>(std::size(kBase))) return kBase[crtErrno];
  const int supplement = crtErrno - kFirstSupplement;
  if (supplement >= 0 && supplement < static_cast<int>(std::size(kSupplement))) return kSupplement[supplement];
  return kUnknown;
}

}  // namespace FXPlatform
