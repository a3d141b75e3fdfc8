// The Windows base types and error constants the library's interface uses.
//
// On Windows they are the system's own: the structures are declared exactly
// as <windows.h> declares them (so both headers can be included in any
// order) and the error constants come from <winerror.h>, which keeps the
// bulk of <windows.h> out of every translation unit that includes us.
//
// Elsewhere they are minimal definitions with the same sizes and layouts.
// DWORD is 32 bits and HRESULT a signed 32-bit code on every platform; note
// that `long` is 64 bits on Linux, which is why no interface of the library
// uses `long` for a result code.
#pragma once

#include <cstdint>

#ifdef _WIN32

// For code and tests that must know the platform without an #ifdef.
constexpr bool kZuIsWindows = true;

#include <winerror.h>

// Codes the Windows SDK has and mingw-w64's headers lack.
#ifndef ERROR_ILLEGAL_CHARACTER
#define ERROR_ILLEGAL_CHARACTER 582L
#endif
#ifndef ERROR_FAILED_DRIVER_ENTRY
#define ERROR_FAILED_DRIVER_ENTRY 647L
#endif
#ifndef ERROR_ERRORS_ENCOUNTERED
#define ERROR_ERRORS_ENCOUNTERED 774L
#endif

typedef unsigned long DWORD;
typedef long HRESULT;
typedef void* HANDLE;
typedef struct _FILETIME FILETIME;
typedef struct _GUID GUID;
typedef struct _LUID LUID;

#else  // POSIX

constexpr bool kZuIsWindows = false;

typedef std::uint32_t DWORD;
typedef std::int32_t HRESULT;
typedef void* HANDLE;

typedef struct _FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
} FILETIME;

typedef struct _GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
} GUID;

typedef struct _LUID {
  DWORD LowPart;
  std::int32_t HighPart;
} LUID;

#define INVALID_HANDLE_VALUE ((HANDLE)(std::intptr_t)-1)

#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)

#define S_OK ((HRESULT)0x00000000L)
#define S_FALSE ((HRESULT)0x00000001L)
#define E_NOTIMPL ((HRESULT)0x80004001L)
#define E_NOINTERFACE ((HRESULT)0x80004002L)
#define E_POINTER ((HRESULT)0x80004003L)
#define E_ABORT ((HRESULT)0x80004004L)
#define E_FAIL ((HRESULT)0x80004005L)
#define E_UNEXPECTED ((HRESULT)0x8000FFFFL)
#define E_ACCESSDENIED ((HRESULT)0x80070005L)
#define E_HANDLE ((HRESULT)0x80070006L)
#define E_OUTOFMEMORY ((HRESULT)0x8007000EL)
#define E_INVALIDARG ((HRESULT)0x80070057L)

#define ERROR_SUCCESS 0L
#define NO_ERROR 0L
#define ERROR_INVALID_FUNCTION 1L
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_PATH_NOT_FOUND 3L
#define ERROR_TOO_MANY_OPEN_FILES 4L
#define ERROR_ACCESS_DENIED 5L
#define ERROR_INVALID_HANDLE 6L
#define ERROR_NOT_ENOUGH_MEMORY 8L
#define ERROR_INVALID_DATA 13L
#define ERROR_OUTOFMEMORY 14L
#define ERROR_NOT_SAME_DEVICE 17L
#define ERROR_NO_MORE_FILES 18L
#define ERROR_WRITE_PROTECT 19L
#define ERROR_NOT_READY 21L
#define ERROR_NOT_DOS_DISK 26L
#define ERROR_WRITE_FAULT 29L
#define ERROR_READ_FAULT 30L
#define ERROR_GEN_FAILURE 31L
#define ERROR_SHARING_VIOLATION 32L
#define ERROR_LOCK_VIOLATION 33L
#define ERROR_HANDLE_EOF 38L
#define ERROR_HANDLE_DISK_FULL 39L
#define ERROR_NOT_SUPPORTED 50L
#define ERROR_DEV_NOT_EXIST 55L
#define ERROR_NETNAME_DELETED 64L
#define ERROR_FILE_EXISTS 80L
#define ERROR_CANNOT_MAKE 82L
#define ERROR_ALREADY_ASSIGNED 85L
#define ERROR_INVALID_PARAMETER 87L
#define ERROR_BROKEN_PIPE 109L
#define ERROR_OPEN_FAILED 110L
#define ERROR_BUFFER_OVERFLOW 111L
#define ERROR_DISK_FULL 112L
#define ERROR_INSUFFICIENT_BUFFER 122L
#define ERROR_INVALID_NAME 123L
#define ERROR_MOD_NOT_FOUND 126L
#define ERROR_PROC_NOT_FOUND 127L
#define ERROR_NEGATIVE_SEEK 131L
#define ERROR_DIR_NOT_EMPTY 145L
#define ERROR_BAD_ARGUMENTS 160L
#define ERROR_BUSY 170L
#define ERROR_ALREADY_EXISTS 183L
#define ERROR_FILENAME_EXCED_RANGE 206L
#define ERROR_FILE_TOO_LARGE 223L
#define ERROR_NO_DATA 232L
#define WAIT_TIMEOUT 258L
#define ERROR_NO_MORE_ITEMS 259L
#define ERROR_DIRECTORY 267L
#define ERROR_NOT_OWNER 288L
#define ERROR_TOO_MANY_POSTS 298L
#define ERROR_ILLEGAL_CHARACTER 582L
#define ERROR_FAILED_DRIVER_ENTRY 647L
#define ERROR_ERRORS_ENCOUNTERED 774L
#define ERROR_NO_UNICODE_TRANSLATION 1113L
#define ERROR_OPERATION_ABORTED 995L
#define ERROR_IO_INCOMPLETE 996L
#define ERROR_IO_PENDING 997L
#define ERROR_NOACCESS 998L
#define ERROR_EXCEPTION_IN_SERVICE 1064L
#define ERROR_NOT_FOUND 1168L
#define ERROR_NETWORK_UNREACHABLE 1231L
#define ERROR_CONTINUE 1246L
#define ERROR_ALREADY_INITIALIZED 1247L
#define ERROR_RECOVERY_FAILURE 1279L
#define ERROR_UNIDENTIFIED_ERROR 1287L
#define ERROR_LOGON_FAILURE 1326L
#define ERROR_INTERNAL_ERROR 1359L
#define ERROR_TIMEOUT 1460L
#define ERROR_INCORRECT_SIZE 1462L
#define ERROR_UNKNOWN_PROPERTY 1608L
#define ERROR_FUNCTION_FAILED 1627L
#define ERROR_UNSUPPORTED_TYPE 1630L
#define ERROR_INVALID_DATATYPE 1804L
#define ERROR_NOT_CONNECTED 2250L
#define ERROR_EMPTY 4306L
#define ERROR_OBJECT_NOT_FOUND 4312L
#define ERROR_REQUEST_REFUSED 4320L
#define ERROR_RESOURCE_NOT_AVAILABLE 5006L
#define ERROR_CANT_RESOLVE_FILENAME 1921L
#define ERROR_CANT_ACCESS_FILE 1920L

#endif  // _WIN32
