// CZuUTFOSAPI: UTF-8 front ends to the C runtime's and the system's file
// calls.
//
// Every name goes to the system as UTF-16 on Windows (the wide call of the
// same name is made, the other arguments unchanged) and as UTF-8 on POSIX;
// handles, descriptors, attributes and sizes come back through the output
// pointers, names and paths as UTF-8 in the caller's buffer. How each call
// maps to POSIX, and which ones report ERROR_NOT_SUPPORTED (50) there, is
// written next to its backend in platform/OsFileApi.h.
//
// Results: a failure carries the Win32 code (for the C runtime calls the
// errno mapped to it) with the errno as an ErrNo item beneath where there is
// one, then this class's location, so that Is() answers the same on both
// platforms. A missing required pointer is ERROR_INVALID_PARAMETER (87). A
// caller's buffer that cannot hold the UTF-8 answer and its terminator is
// ERROR_INSUFFICIENT_BUFFER (122); nothing is written to it then, and where
// the call has a length pointer it receives the size needed, terminator
// included. On success the length pointer receives the length without the
// terminator, and a file-part pointer the start of the last component in the
// buffer (null when the path ends with a separator).
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/OsFileApi.h"

class ZUUTILS_API CZuUTFOSAPI {
 public:
  // The C runtime. Flags and modes are the platform's own constants.
  static CZuError access(const char* path, int mode);
  static CZuError chdir(const char* dirName);
  static CZuError chmod(const char* fileName, int mode);
  static CZuError creat(const char* fileName, int mode, int* fd);
  static CZuError fopen(const char* fileName, const char* mode, FILE** file);
  static CZuError freopen(const char* fileName, const char* mode, FILE* stream, FILE** file);
  static CZuError fsopen(const char* fileName, const char* mode, int shareFlag, FILE** file);
  // A null relPath stands for the current directory.
  static CZuError fullpath(char* absPath, const char* relPath, std::size_t maxLength);
  // makepath and splitpath are text operations that the library does itself
  // on both platforms, with the rules of _makepath_s and _splitpath_s: a
  // drive is a letter and ':', the folder runs to the last '\' or '/', the
  // extension from the last '.' of the name. makepath ends a folder that
  // lacks one with the platform's separator. Null or zero-sized parts of
  // splitpath are skipped.
  static CZuError makepath(char* path, std::size_t size, const char* drive, const char* dir, const char* fname,
                           const char* ext);
  static CZuError splitpath(const char* path, char* drive, std::size_t driveSize, char* dir, std::size_t dirSize,
                            char* fname, std::size_t fnameSize, char* ext, std::size_t extSize);
  static CZuError mkdir(const char* dirName);  // mode 0777 on POSIX
  static CZuError mkdir(const char* dirName, int mode);
  // The template's six trailing X are replaced in place.
  static CZuError mktemp(char* nameTemplate);
  // A file that open creates (O_CREAT) may be read and written by its owner:
  // mode 0666 (less the umask) on POSIX, _S_IREAD | _S_IWRITE on Windows.
  static CZuError open(const char* fileName, int openFlag, int* fd);
  static CZuError open2(const char* fileName, int openFlag, int mode, int* fd);
  static CZuError remove(const char* path);
  static CZuError rename(const char* oldName, const char* newName);
  static CZuError rmdir(const char* dirName);
  static CZuError searchenv(const char* fileName, const char* varName, char* pathName, std::size_t size);
  static CZuError sopen(const char* fileName, int openFlag, int shareFlag, int mode, int* fd);
  static CZuError stat(const char* path, TZuStat* buffer);
  static CZuError stat32(const char* path, TZuStat32* buffer);
  static CZuError stat32i64(const char* path, TZuStat32i64* buffer);
  static CZuError stat64(const char* path, TZuStat64* buffer);
  static CZuError stat64i32(const char* path, TZuStat64i32* buffer);
  static CZuError stati64(const char* path, TZuStati64* buffer);
  static CZuError unlink(const char* fileName);

  // The Windows calls. The enumeration arguments (FINDEX_INFO_LEVELS,
  // FINDEX_SEARCH_OPS, GET_FILEEX_INFO_LEVELS) are passed as int.
  static CZuError CopyFileW(const char* existingFileName, const char* newFileName, bool failIfExists);
  static CZuError CreateFileW(const char* fileName, DWORD desiredAccess, DWORD shareMode,
                              SECURITY_ATTRIBUTES* securityAttributes, DWORD creationDisposition,
                              DWORD flagsAndAttributes, HANDLE templateFile, HANDLE* file);
  static CZuError CreateHardLinkW(const char* fileName, const char* existingFileName,
                                  SECURITY_ATTRIBUTES* securityAttributes);
  static CZuError DeleteFileW(const char* fileName);
  // *findHandle is set whenever the search was opened, also when only the
  // first name did not fit the record (ERROR_FILENAME_EXCED_RANGE): end
  // every opened search with FindClose.
  static CZuError FindFirstFileExW(const char* fileName, int infoLevelId, WIN32_FIND_DATAA* findFileData,
                                   int searchOp, void* searchFilter, DWORD additionalFlags, HANDLE* findHandle);
  static CZuError FindFirstFileW(const char* fileName, WIN32_FIND_DATAA* findFileData, HANDLE* findHandle);
  static CZuError FindNextFileW(HANDLE findHandle, WIN32_FIND_DATAA* findFileData);
  // Ends a search; POSIX needs it to release what the handle holds.
  static CZuError FindClose(HANDLE findHandle);
  static CZuError GetBinaryTypeW(const char* applicationName, DWORD* binaryType);
  static CZuError GetCompressedFileSizeW(const char* fileName, DWORD* fileSizeHigh, DWORD* fileSizeLow);
  static CZuError GetCurrentDirectoryW(DWORD bufferLength, char* buffer, DWORD* length);
  static CZuError GetFileAttributesExW(const char* fileName, int infoLevelId, void* fileInformation);
  static CZuError GetFileAttributesTQ(const char* fileName, DWORD* attributes);
  static CZuError GetFullPathNameTQ(const char* fileName, DWORD bufferLength, char* buffer, char** filePart,
                                    DWORD* length);
  static CZuError GetLongPathNameW(const char* shortPath, char* longPath, DWORD bufferLength, DWORD* length);
  static CZuError GetShortPathNameW(const char* longPath, char* shortPath, DWORD bufferLength, DWORD* length);
  static CZuError GetTempFileNameTQ(const char* pathName, const char* prefixString, unsigned int unique,
                                    char* tempFileName, std::size_t size);
  static CZuError MoveFileExW(const char* existingFileName, const char* newFileName, DWORD flags);
  // MoveFileW copies across volumes, as MoveFileExW with MOVEFILE_COPY_ALLOWED.
  static CZuError MoveFileW(const char* existingFileName, const char* newFileName);
  static CZuError MoveFileWithProgressW(const char* existingFileName, const char* newFileName,
                                        TZuProgressRoutine progressRoutine, void* data, DWORD flags);
  static CZuError RemoveDirectoryW(const char* pathName);
  static CZuError ReplaceFileW(const char* replacedFileName, const char* replacementFileName,
                               const char* backupFileName, DWORD replaceFlags, void* exclude, void* reserved);
  static CZuError SearchPathW(const char* path, const char* fileName, const char* extension, DWORD bufferLength,
                              char* buffer, char** filePart, DWORD* length);
  static CZuError SetCurrentDirectoryW(const char* pathName);
  static CZuError SetFileAttributesW(const char* fileName, DWORD fileAttributes);

  // The local encoding is UTF-16 (UTF-32 where wchar_t is 32 bits). Always
  // success: invalid input converts as FXString::ToString / ToWstring do,
  // and a null input gives an empty output.
  static CZuError LocalEncodingToUTF8(const wchar_t* in, std::string& out);
  static CZuError UTF8ToLocalEncoding(const char* in, std::wstring& out);
};
