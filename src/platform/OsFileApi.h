// The file calls behind CZuUTFOSAPI (text/UTFOSAPI.h): UTF-8 names in and
// out, the system's own calls underneath, and the Windows records those
// calls fill on both platforms.
//
// Windows calls the wide C runtime and Win32 functions. POSIX maps each call
// to its nearest equivalent, or reports ERROR_NOT_SUPPORTED where there is
// none (see each function). Failures of the C runtime calls carry errno
// (an ErrNo item on Windows; on POSIX the nearest Win32 code with the ErrNo
// item beneath), those of the Win32 calls the Win32 code (on POSIX the errno
// mapped to it, with the ErrNo item beneath): Is() gives the same answer on
// both platforms.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include <sys/stat.h>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"

#ifdef _WIN32

// The records are those of <windows.h>, named here so that this header
// does not pull it in; callers that read their fields include it.
typedef struct _WIN32_FIND_DATAA WIN32_FIND_DATAA;
typedef struct _WIN32_FILE_ATTRIBUTE_DATA WIN32_FILE_ATTRIBUTE_DATA;
typedef struct _SECURITY_ATTRIBUTES SECURITY_ATTRIBUTES;
typedef union _LARGE_INTEGER LARGE_INTEGER;

// The C runtime's stat records, one per variant of the call.
typedef struct _stat TZuStat;
typedef struct _stat32 TZuStat32;
typedef struct _stat32i64 TZuStat32i64;
typedef struct _stat64 TZuStat64;
typedef struct _stat64i32 TZuStat64i32;
typedef struct _stati64 TZuStati64;

#else  // POSIX

// The same records with the same layout; LARGE_INTEGER without its
// anonymous member, which standard C++ does not have.
typedef union _LARGE_INTEGER {
  struct {
    DWORD LowPart;
    std::int32_t HighPart;
  } u;
  long long QuadPart;
} LARGE_INTEGER;

struct _SECURITY_ATTRIBUTES;  // never read on POSIX
typedef struct _SECURITY_ATTRIBUTES SECURITY_ATTRIBUTES;

#define MAX_PATH 260

typedef struct _WIN32_FIND_DATAA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD dwReserved0;  // the reparse tag when FILE_ATTRIBUTE_REPARSE_POINT is set
  DWORD dwReserved1;
  char cFileName[MAX_PATH];
  char cAlternateFileName[14];
} WIN32_FIND_DATAA;

typedef struct _WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
} WIN32_FILE_ATTRIBUTE_DATA;

#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_HIDDEN 0x00000002
#define FILE_ATTRIBUTE_SYSTEM 0x00000004
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020
#define FILE_ATTRIBUTE_NORMAL 0x00000080
#define FILE_ATTRIBUTE_REPARSE_POINT 0x00000400
#define INVALID_FILE_ATTRIBUTES ((DWORD)-1)
#define IO_REPARSE_TAG_SYMLINK 0xA000000CL

#define MOVEFILE_REPLACE_EXISTING 0x00000001
#define MOVEFILE_COPY_ALLOWED 0x00000002
#define MOVEFILE_DELAY_UNTIL_REBOOT 0x00000004
#define MOVEFILE_WRITE_THROUGH 0x00000008

// Values of the FINDEX_INFO_LEVELS, FINDEX_SEARCH_OPS and
// GET_FILEEX_INFO_LEVELS enumerations.
#define FindExInfoStandard 0
#define FindExInfoBasic 1
#define FindExSearchNameMatch 0
#define FindExSearchLimitToDirectories 1
#define GetFileExInfoStandard 0

// Only the standard variant exists: every stat call fills struct stat.
typedef struct stat TZuStat;
typedef struct stat TZuStat32;
typedef struct stat TZuStat32i64;
typedef struct stat TZuStat64;
typedef struct stat TZuStat64i32;
typedef struct stat TZuStati64;

#endif  // _WIN32

// The progress callback of MoveFileWithProgressW (LPPROGRESS_ROUTINE).
typedef DWORD (*TZuProgressRoutine)(LARGE_INTEGER totalFileSize, LARGE_INTEGER totalBytesTransferred,
                                    LARGE_INTEGER streamSize, LARGE_INTEGER streamBytesTransferred,
                                    DWORD streamNumber, DWORD callbackReason, HANDLE sourceFile,
                                    HANDLE destinationFile, void* data);

namespace FXPlatform {

// C runtime calls. The flags and modes are the platform's own (<fcntl.h>,
// <sys/stat.h>, <share.h>); POSIX has no sharing modes and ignores them.
ZUUTILS_API CZuError CrtAccess(const char* path, int mode);
ZUUTILS_API CZuError CrtChdir(const char* path);
ZUUTILS_API CZuError CrtChmod(const char* path, int mode);
ZUUTILS_API CZuError CrtCreat(const char* path, int mode, int& fd);
ZUUTILS_API CZuError CrtFopen(const char* path, const char* mode, FILE*& file);
ZUUTILS_API CZuError CrtFreopen(const char* path, const char* mode, FILE* stream, FILE*& file);
ZUUTILS_API CZuError CrtFsopen(const char* path, const char* mode, int shareFlag, FILE*& file);
// The absolute form of the path, made lexically ("." and ".." resolved,
// links not followed), as _fullpath and GetFullPathName do.
ZUUTILS_API CZuError CrtFullPath(const char* path, std::string& full);
// Windows has no mode for a new directory and ignores it.
ZUUTILS_API CZuError CrtMkdir(const char* path, int mode);
// Replaces the six trailing X of the template by a letter and five digits
// of the process id, trying 'a' to 'z' until the name is free.
ZUUTILS_API CZuError CrtMktemp(std::string& nameTemplate);
ZUUTILS_API CZuError CrtOpen(const char* path, int openFlag, int mode, int& fd);
ZUUTILS_API CZuError CrtRemove(const char* path);
// Never replaces an existing target (as _wrename does not), on POSIX too.
ZUUTILS_API CZuError CrtRename(const char* oldName, const char* newName);
ZUUTILS_API CZuError CrtRmdir(const char* path);
// The file in the current directory, else in the first folder of the
// variable's list (';'-separated on Windows, ':' on POSIX) that holds it;
// ENOENT with an empty result when none does.
ZUUTILS_API CZuError CrtSearchEnv(const char* fileName, const char* variable, std::string& found);
ZUUTILS_API CZuError CrtSopen(const char* path, int openFlag, int shareFlag, int mode, int& fd);
ZUUTILS_API CZuError CrtStat(const char* path, TZuStat* buffer);
ZUUTILS_API CZuError CrtStat32(const char* path, TZuStat32* buffer);
ZUUTILS_API CZuError CrtStat32i64(const char* path, TZuStat32i64* buffer);
ZUUTILS_API CZuError CrtStat64(const char* path, TZuStat64* buffer);
ZUUTILS_API CZuError CrtStat64i32(const char* path, TZuStat64i32* buffer);
ZUUTILS_API CZuError CrtStati64(const char* path, TZuStati64* buffer);
ZUUTILS_API CZuError CrtUnlink(const char* path);

// Win32 calls; names that come back are UTF-8.

// Copies contents and permissions; failIfExists refuses an existing target
// (ERROR_FILE_EXISTS).
ZUUTILS_API CZuError CopyFileTo(const char* existing, const char* target, bool failIfExists);
// POSIX: ERROR_NOT_SUPPORTED (the library has no handle-based file API
// there that could use or close the handle).
ZUUTILS_API CZuError CreateFileAt(const char* path, DWORD desiredAccess, DWORD shareMode,
                                  SECURITY_ATTRIBUTES* securityAttributes, DWORD creationDisposition,
                                  DWORD flagsAndAttributes, HANDLE templateFile, HANDLE& file);
// POSIX ignores the security attributes.
ZUUTILS_API CZuError HardLinkAt(const char* link, const char* existing, SECURITY_ATTRIBUTES* securityAttributes);

// Directory search with the wildcards * and ? in the last component, "."
// and ".." included as Windows lists them. POSIX matches case-sensitively
// (as its file names are), "*.*" matches every name as on Windows, and the
// additional flags and search filter are ignored; the find record is filled
// from lstat: a symbolic link is a reparse point with the symlink tag,
// marked as a directory when it leads to one. A name whose UTF-8 form does
// not fit cFileName fails with ERROR_FILENAME_EXCED_RANGE; the search goes
// on with the next call. No match is ERROR_FILE_NOT_FOUND, the end of the
// list ERROR_NO_MORE_FILES. The handle is released by FindEnd.
ZUUTILS_API CZuError FindFirst(const char* pattern, int infoLevel, WIN32_FIND_DATAA* data, int searchOp,
                               void* searchFilter, DWORD additionalFlags, HANDLE& handle);
ZUUTILS_API CZuError FindNext(HANDLE handle, WIN32_FIND_DATAA* data);
ZUUTILS_API CZuError FindEnd(HANDLE handle);

// POSIX: ERROR_NOT_SUPPORTED (there are no Windows executables to tell).
ZUUTILS_API CZuError BinaryTypeOf(const char* path, DWORD& type);
// The bytes the file takes on disk; POSIX reads the allocated blocks.
ZUUTILS_API CZuError CompressedFileSizeOf(const char* path, DWORD& high, DWORD& low);
ZUUTILS_API CZuError CurrentDirectory(std::string& path);
ZUUTILS_API CZuError SetCurrentDirectoryTo(const char* path);
// POSIX derives the attributes from lstat: directory, reparse point for a
// link, read-only without write permission for the owner, else normal.
ZUUTILS_API CZuError FileAttributesOf(const char* path, DWORD& attributes);
// Only GetFileExInfoStandard, into a WIN32_FILE_ATTRIBUTE_DATA.
ZUUTILS_API CZuError FileAttributeDataOf(const char* path, int infoLevel, void* information);
// POSIX keeps only FILE_ATTRIBUTE_READONLY: it removes the write
// permissions, and its absence restores the owner's.
ZUUTILS_API CZuError SetFileAttributesOf(const char* path, DWORD attributes);
ZUUTILS_API CZuError FullPathNameOf(const char* path, std::string& full);
// POSIX has no short names: both give the path itself when it exists.
ZUUTILS_API CZuError LongPathNameOf(const char* path, std::string& longPath);
ZUUTILS_API CZuError ShortPathNameOf(const char* path, std::string& shortPath);
// "<folder><separator><first three characters of prefix><hex>.tmp"; a
// unique number 0 picks a free one and creates the empty file, any other
// number only forms the name.
ZUUTILS_API CZuError TempFileNameIn(const char* folder, const char* prefix, unsigned int unique,
                                    std::string& name);
// POSIX: MOVEFILE_REPLACE_EXISTING allows replacing a file, without it an
// existing target fails; MOVEFILE_COPY_ALLOWED copies and deletes across
// file systems; MOVEFILE_WRITE_THROUGH syncs; MOVEFILE_DELAY_UNTIL_REBOOT is
// ERROR_NOT_SUPPORTED.
ZUUTILS_API CZuError MoveFileWithFlags(const char* existing, const char* target, DWORD flags);
// POSIX: as MoveFileWithFlags without a progress routine; with one,
// ERROR_NOT_SUPPORTED (it could not be called as Windows calls it).
ZUUTILS_API CZuError MoveFileReportingProgress(const char* existing, const char* target,
                                               TZuProgressRoutine progress, void* data, DWORD flags);
ZUUTILS_API CZuError RemoveDirectoryAt(const char* path);
// POSIX: ERROR_NOT_SUPPORTED (no equivalent that keeps the replaced file's
// identity and attributes).
ZUUTILS_API CZuError ReplaceFileAt(const char* replaced, const char* replacement, const char* backup, DWORD flags,
                                   void* exclude, void* reserved);
// POSIX: ERROR_NOT_SUPPORTED (the Windows search order has no equivalent).
ZUUTILS_API CZuError SearchPathFor(const char* path, const char* fileName, const char* extension,
                                   std::string& found);

}  // namespace FXPlatform
