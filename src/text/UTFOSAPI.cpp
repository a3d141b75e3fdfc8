#include "text/UTFOSAPI.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"
#include "platform/FileSystem.h"
#include "text/StringConvert.h"

// The location of a member, named as users search for it.
#define ZU_OSAPI(member) ZU_HERE("CZuUTFOSAPI::" member)

namespace {

CZuError Invalid(const FXCodeLocation& here) { return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER); }

// Adds the member's location to a failure from the platform layer.
CZuError Passed(CZuError result, const FXCodeLocation& here) {
  if (result.IsError()) result.Push(here);
  return result;
}

bool IsSeparator(char c) { return c == '/' || c == FXPlatform::kPathSeparator; }

// The answer and its terminator into the caller's buffer, or nothing and
// ERROR_INSUFFICIENT_BUFFER with the size needed.
CZuError CopyOut(const std::string& text, char* buffer, std::size_t size, DWORD* length, char** filePart,
                 const FXCodeLocation& here) {
  if (text.size() >= size) {
    if (length != nullptr) *length = static_cast<DWORD>(text.size() + 1);
    return FXErrorUtil::ErrorWin32(here, ERROR_INSUFFICIENT_BUFFER, "%s", text.c_str());
  }
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  if (length != nullptr) *length = static_cast<DWORD>(text.size());
  if (filePart != nullptr) {
    std::size_t start = text.size();
    while (start > 0 && !IsSeparator(text[start - 1])) --start;
    *filePart = start == text.size() ? nullptr : buffer + start;
  }
  return CZuError::Success();
}

// A part of a split path into its optional buffer.
bool CopyPart(std::string_view part, char* buffer, std::size_t size) {
  if (buffer == nullptr || size == 0) return true;
  if (part.size() >= size) return false;
  if (!part.empty()) std::memcpy(buffer, part.data(), part.size());
  buffer[part.size()] = '\0';
  return true;
}

}  // namespace

CZuError CZuUTFOSAPI::access(const char* path, int mode) {
  if (path == nullptr) return Invalid(ZU_OSAPI("access"));
  return Passed(FXPlatform::CrtAccess(path, mode), ZU_OSAPI("access"));
}

CZuError CZuUTFOSAPI::chdir(const char* dirName) {
  if (dirName == nullptr) return Invalid(ZU_OSAPI("chdir"));
  return Passed(FXPlatform::CrtChdir(dirName), ZU_OSAPI("chdir"));
}

CZuError CZuUTFOSAPI::chmod(const char* fileName, int mode) {
  if (fileName == nullptr) return Invalid(ZU_OSAPI("chmod"));
  return Passed(FXPlatform::CrtChmod(fileName, mode), ZU_OSAPI("chmod"));
}

CZuError CZuUTFOSAPI::creat(const char* fileName, int mode, int* fd) {
  if (fileName == nullptr || fd == nullptr) return Invalid(ZU_OSAPI("creat"));
  return Passed(FXPlatform::CrtCreat(fileName, mode, *fd), ZU_OSAPI("creat"));
}

CZuError CZuUTFOSAPI::fopen(const char* fileName, const char* mode, FILE** file) {
  if (fileName == nullptr || mode == nullptr || file == nullptr) return Invalid(ZU_OSAPI("fopen"));
  return Passed(FXPlatform::CrtFopen(fileName, mode, *file), ZU_OSAPI("fopen"));
}

CZuError CZuUTFOSAPI::freopen(const char* fileName, const char* mode, FILE* stream, FILE** file) {
  if (fileName == nullptr || mode == nullptr || stream == nullptr || file == nullptr)
    return Invalid(ZU_OSAPI("freopen"));
  return Passed(FXPlatform::CrtFreopen(fileName, mode, stream, *file), ZU_OSAPI("freopen"));
}

CZuError CZuUTFOSAPI::fsopen(const char* fileName, const char* mode, int shareFlag, FILE** file) {
  if (fileName == nullptr || mode == nullptr || file == nullptr) return Invalid(ZU_OSAPI("fsopen"));
  return Passed(FXPlatform::CrtFsopen(fileName, mode, shareFlag, *file), ZU_OSAPI("fsopen"));
}

CZuError CZuUTFOSAPI::fullpath(char* absPath, const char* relPath, std::size_t maxLength) {
  if (absPath == nullptr) return Invalid(ZU_OSAPI("fullpath"));
  std::string full;
  CZuError result = FXPlatform::CrtFullPath(relPath == nullptr ? "." : relPath, full);
  if (result.IsError()) return Passed(result, ZU_OSAPI("fullpath"));
  return CopyOut(full, absPath, maxLength, nullptr, nullptr, ZU_OSAPI("fullpath"));
}

CZuError CZuUTFOSAPI::makepath(char* path, std::size_t size, const char* drive, const char* dir, const char* fname,
                               const char* ext) {
  if (path == nullptr) return Invalid(ZU_OSAPI("makepath"));
  std::string text;
  if (drive != nullptr && *drive != '\0') text.append(1, *drive).append(1, ':');
  if (dir != nullptr && *dir != '\0') {
    text += dir;
    if (!IsSeparator(text.back()) && text.back() != '\\') text += FXPlatform::kPathSeparator;
  }
  if (fname != nullptr) text += fname;
  if (ext != nullptr && *ext != '\0') {
    if (*ext != '.') text += '.';
    text += ext;
  }
  return CopyOut(text, path, size, nullptr, nullptr, ZU_OSAPI("makepath"));
}

CZuError CZuUTFOSAPI::splitpath(const char* path, char* drive, std::size_t driveSize, char* dir, std::size_t dirSize,
                                char* fname, std::size_t fnameSize, char* ext, std::size_t extSize) {
  if (path == nullptr) return Invalid(ZU_OSAPI("splitpath"));
  std::string_view rest(path);
  std::string_view drivePart;
  if (rest.size() >= 2 && rest[1] == ':') {
    drivePart = rest.substr(0, 2);
    rest.remove_prefix(2);
  }
  const std::size_t slash = rest.find_last_of("\\/");
  const std::string_view dirPart = slash == std::string_view::npos ? std::string_view() : rest.substr(0, slash + 1);
  rest.remove_prefix(dirPart.size());
  const std::size_t dot = rest.rfind('.');
  const std::string_view namePart = rest.substr(0, dot);
  const std::string_view extPart = dot == std::string_view::npos ? std::string_view() : rest.substr(dot);
  if (CopyPart(drivePart, drive, driveSize) && CopyPart(dirPart, dir, dirSize) &&
      CopyPart(namePart, fname, fnameSize) && CopyPart(extPart, ext, extSize))
    return CZuError::Success();
  // As _splitpath_s: nothing half-written.
  const std::pair<char*, std::size_t> parts[] = {{drive, driveSize}, {dir, dirSize}, {fname, fnameSize}, {ext, extSize}};
  for (const auto& [buffer, size] : parts)
    if (buffer != nullptr && size > 0) *buffer = '\0';
  return FXErrorUtil::ErrorWin32(ZU_OSAPI("splitpath"), ERROR_INSUFFICIENT_BUFFER, "%s", path);
}

CZuError CZuUTFOSAPI::mkdir(const char* dirName) { return mkdir(dirName, 0777); }

CZuError CZuUTFOSAPI::mkdir(const char* dirName, int mode) {
  if (dirName == nullptr) return Invalid(ZU_OSAPI("mkdir"));
  return Passed(FXPlatform::CrtMkdir(dirName, mode), ZU_OSAPI("mkdir"));
}

CZuError CZuUTFOSAPI::mktemp(char* nameTemplate) {
  if (nameTemplate == nullptr) return Invalid(ZU_OSAPI("mktemp"));
  std::string name(nameTemplate);
  const std::size_t room = name.size() + 1;
  CZuError result = FXPlatform::CrtMktemp(name);
  if (result.IsError()) return Passed(result, ZU_OSAPI("mktemp"));
  return CopyOut(name, nameTemplate, room, nullptr, nullptr, ZU_OSAPI("mktemp"));
}

// A file that open creates is one its owner may read and write:
// _S_IREAD | _S_IWRITE on Windows, 0666 less the umask on POSIX.
constexpr int kCreateMode = kZuIsWindows ? 0x0180 : 0666;

CZuError CZuUTFOSAPI::open(const char* fileName, int openFlag, int* fd) {
  if (fileName == nullptr || fd == nullptr) return Invalid(ZU_OSAPI("open"));
  return Passed(FXPlatform::CrtOpen(fileName, openFlag, kCreateMode, *fd), ZU_OSAPI("open"));
}

CZuError CZuUTFOSAPI::open2(const char* fileName, int openFlag, int mode, int* fd) {
  if (fileName == nullptr || fd == nullptr) return Invalid(ZU_OSAPI("open2"));
  return Passed(FXPlatform::CrtOpen(fileName, openFlag, mode, *fd), ZU_OSAPI("open2"));
}

CZuError CZuUTFOSAPI::remove(const char* path) {
  if (path == nullptr) return Invalid(ZU_OSAPI("remove"));
  return Passed(FXPlatform::CrtRemove(path), ZU_OSAPI("remove"));
}

CZuError CZuUTFOSAPI::rename(const char* oldName, const char* newName) {
  if (oldName == nullptr || newName == nullptr) return Invalid(ZU_OSAPI("rename"));
  return Passed(FXPlatform::CrtRename(oldName, newName), ZU_OSAPI("rename"));
}

CZuError CZuUTFOSAPI::rmdir(const char* dirName) {
  if (dirName == nullptr) return Invalid(ZU_OSAPI("rmdir"));
  return Passed(FXPlatform::CrtRmdir(dirName), ZU_OSAPI("rmdir"));
}

CZuError CZuUTFOSAPI::searchenv(const char* fileName, const char* varName, char* pathName, std::size_t size) {
  if (fileName == nullptr || varName == nullptr || pathName == nullptr) return Invalid(ZU_OSAPI("searchenv"));
  if (size > 0) *pathName = '\0';
  std::string found;
  CZuError result = FXPlatform::CrtSearchEnv(fileName, varName, found);
  if (result.IsError()) return Passed(result, ZU_OSAPI("searchenv"));
  return CopyOut(found, pathName, size, nullptr, nullptr, ZU_OSAPI("searchenv"));
}

CZuError CZuUTFOSAPI::sopen(const char* fileName, int openFlag, int shareFlag, int mode, int* fd) {
  if (fileName == nullptr || fd == nullptr) return Invalid(ZU_OSAPI("sopen"));
  return Passed(FXPlatform::CrtSopen(fileName, openFlag, shareFlag, mode, *fd), ZU_OSAPI("sopen"));
}

CZuError CZuUTFOSAPI::stat(const char* path, TZuStat* buffer) {
  if (path == nullptr || buffer == nullptr) return Invalid(ZU_OSAPI("stat"));
  return Passed(FXPlatform::CrtStat(path, buffer), ZU_OSAPI("stat"));
}
CZuError CZuUTFOSAPI::stat32(const char* path, TZuStat32* buffer) {
  if (path == nullptr || buffer == nullptr) return Invalid(ZU_OSAPI("stat32"));
  return Passed(FXPlatform::CrtStat32(path, buffer), ZU_OSAPI("stat32"));
}
CZuError CZuUTFOSAPI::stat32i64(const char* path, TZuStat32i64* buffer) {
  if (path == nullptr || buffer == nullptr) return Invalid(ZU_OSAPI("stat32i64"));
  return Passed(FXPlatform::CrtStat32i64(path, buffer), ZU_OSAPI("stat32i64"));
}
CZuError CZuUTFOSAPI::stat64(const char* path, TZuStat64* buffer) {
  if (path == nullptr || buffer == nullptr) return Invalid(ZU_OSAPI("stat64"));
  return Passed(FXPlatform::CrtStat64(path, buffer), ZU_OSAPI("stat64"));
}
CZuError CZuUTFOSAPI::stat64i32(const char* path, TZuStat64i32* buffer) {
  if (path == nullptr || buffer == nullptr) return Invalid(ZU_OSAPI("stat64i32"));
  return Passed(FXPlatform::CrtStat64i32(path, buffer), ZU_OSAPI("stat64i32"));
}
CZuError CZuUTFOSAPI::stati64(const char* path, TZuStati64* buffer) {
  if (path == nullptr || buffer == nullptr) return Invalid(ZU_OSAPI("stati64"));
  return Passed(FXPlatform::CrtStati64(path, buffer), ZU_OSAPI("stati64"));
}

CZuError CZuUTFOSAPI::unlink(const char* fileName) {
  if (fileName == nullptr) return Invalid(ZU_OSAPI("unlink"));
  return Passed(FXPlatform::CrtUnlink(fileName), ZU_OSAPI("unlink"));
}

CZuError CZuUTFOSAPI::CopyFileW(const char* existingFileName, const char* newFileName, bool failIfExists) {
  if (existingFileName == nullptr || newFileName == nullptr) return Invalid(ZU_OSAPI("CopyFileW"));
  return Passed(FXPlatform::CopyFileTo(existingFileName, newFileName, failIfExists), ZU_OSAPI("CopyFileW"));
}

CZuError CZuUTFOSAPI::CreateFileW(const char* fileName, DWORD desiredAccess, DWORD shareMode,
                                  SECURITY_ATTRIBUTES* securityAttributes, DWORD creationDisposition,
                                  DWORD flagsAndAttributes, HANDLE templateFile, HANDLE* file) {
  if (fileName == nullptr || file == nullptr) return Invalid(ZU_OSAPI("CreateFileW"));
  return Passed(FXPlatform::CreateFileAt(fileName, desiredAccess, shareMode, securityAttributes, creationDisposition,
                                         flagsAndAttributes, templateFile, *file),
                ZU_OSAPI("CreateFileW"));
}

CZuError CZuUTFOSAPI::CreateHardLinkW(const char* fileName, const char* existingFileName,
                                      SECURITY_ATTRIBUTES* securityAttributes) {
  if (fileName == nullptr || existingFileName == nullptr) return Invalid(ZU_OSAPI("CreateHardLinkW"));
  return Passed(FXPlatform::HardLinkAt(fileName, existingFileName, securityAttributes), ZU_OSAPI("CreateHardLinkW"));
}

CZuError CZuUTFOSAPI::DeleteFileW(const char* fileName) {
  if (fileName == nullptr) return Invalid(ZU_OSAPI("DeleteFileW"));
  return Passed(FXPlatform::DeleteFileAt(fileName), ZU_OSAPI("DeleteFileW"));
}

CZuError CZuUTFOSAPI::FindFirstFileExW(const char* fileName, int infoLevelId, WIN32_FIND_DATAA* findFileData,
                                       int searchOp, void* searchFilter, DWORD additionalFlags, HANDLE* findHandle) {
  if (fileName == nullptr || findFileData == nullptr || findHandle == nullptr)
    return Invalid(ZU_OSAPI("FindFirstFileExW"));
  return Passed(FXPlatform::FindFirst(fileName, infoLevelId, findFileData, searchOp, searchFilter, additionalFlags,
                                      *findHandle),
                ZU_OSAPI("FindFirstFileExW"));
}

CZuError CZuUTFOSAPI::FindFirstFileW(const char* fileName, WIN32_FIND_DATAA* findFileData, HANDLE* findHandle) {
  if (fileName == nullptr || findFileData == nullptr || findHandle == nullptr)
    return Invalid(ZU_OSAPI("FindFirstFileW"));
  return Passed(FXPlatform::FindFirst(fileName, FindExInfoStandard, findFileData, FindExSearchNameMatch, nullptr, 0,
                                      *findHandle),
                ZU_OSAPI("FindFirstFileW"));
}

CZuError CZuUTFOSAPI::FindNextFileW(HANDLE findHandle, WIN32_FIND_DATAA* findFileData) {
  if (findFileData == nullptr) return Invalid(ZU_OSAPI("FindNextFileW"));
  return Passed(FXPlatform::FindNext(findHandle, findFileData), ZU_OSAPI("FindNextFileW"));
}

CZuError CZuUTFOSAPI::FindClose(HANDLE findHandle) {
  return Passed(FXPlatform::FindEnd(findHandle), ZU_OSAPI("FindClose"));
}

CZuError CZuUTFOSAPI::GetBinaryTypeW(const char* applicationName, DWORD* binaryType) {
  if (applicationName == nullptr || binaryType == nullptr) return Invalid(ZU_OSAPI("GetBinaryTypeW"));
  return Passed(FXPlatform::BinaryTypeOf(applicationName, *binaryType), ZU_OSAPI("GetBinaryTypeW"));
}

CZuError CZuUTFOSAPI::GetCompressedFileSizeW(const char* fileName, DWORD* fileSizeHigh, DWORD* fileSizeLow) {
  if (fileName == nullptr || fileSizeLow == nullptr) return Invalid(ZU_OSAPI("GetCompressedFileSizeW"));
  DWORD high = 0;
  CZuError result = FXPlatform::CompressedFileSizeOf(fileName, high, *fileSizeLow);
  if (fileSizeHigh != nullptr) *fileSizeHigh = high;
  return Passed(result, ZU_OSAPI("GetCompressedFileSizeW"));
}

CZuError CZuUTFOSAPI::GetCurrentDirectoryW(DWORD bufferLength, char* buffer, DWORD* length) {
  if (buffer == nullptr && bufferLength > 0) return Invalid(ZU_OSAPI("GetCurrentDirectoryW"));
  std::string path;
  CZuError result = FXPlatform::CurrentDirectory(path);
  if (result.IsError()) return Passed(result, ZU_OSAPI("GetCurrentDirectoryW"));
  return CopyOut(path, buffer, bufferLength, length, nullptr, ZU_OSAPI("GetCurrentDirectoryW"));
}

CZuError CZuUTFOSAPI::GetFileAttributesExW(const char* fileName, int infoLevelId, void* fileInformation) {
  if (fileName == nullptr || fileInformation == nullptr) return Invalid(ZU_OSAPI("GetFileAttributesExW"));
  return Passed(FXPlatform::FileAttributeDataOf(fileName, infoLevelId, fileInformation),
                ZU_OSAPI("GetFileAttributesExW"));
}

CZuError CZuUTFOSAPI::GetFileAttributesTQ(const char* fileName, DWORD* attributes) {
  if (fileName == nullptr || attributes == nullptr) return Invalid(ZU_OSAPI("GetFileAttributesTQ"));
  return Passed(FXPlatform::FileAttributesOf(fileName, *attributes), ZU_OSAPI("GetFileAttributesTQ"));
}

CZuError CZuUTFOSAPI::GetFullPathNameTQ(const char* fileName, DWORD bufferLength, char* buffer, char** filePart,
                                        DWORD* length) {
  if (fileName == nullptr || (buffer == nullptr && bufferLength > 0)) return Invalid(ZU_OSAPI("GetFullPathNameTQ"));
  std::string full;
  CZuError result = FXPlatform::FullPathNameOf(fileName, full);
  if (result.IsError()) return Passed(result, ZU_OSAPI("GetFullPathNameTQ"));
  return CopyOut(full, buffer, bufferLength, length, filePart, ZU_OSAPI("GetFullPathNameTQ"));
}

CZuError CZuUTFOSAPI::GetLongPathNameW(const char* shortPath, char* longPath, DWORD bufferLength, DWORD* length) {
  if (shortPath == nullptr || (longPath == nullptr && bufferLength > 0)) return Invalid(ZU_OSAPI("GetLongPathNameW"));
  std::string path;
  CZuError result = FXPlatform::LongPathNameOf(shortPath, path);
  if (result.IsError()) return Passed(result, ZU_OSAPI("GetLongPathNameW"));
  return CopyOut(path, longPath, bufferLength, length, nullptr, ZU_OSAPI("GetLongPathNameW"));
}

CZuError CZuUTFOSAPI::GetShortPathNameW(const char* longPath, char* shortPath, DWORD bufferLength, DWORD* length) {
  if (longPath == nullptr || (shortPath == nullptr && bufferLength > 0)) return Invalid(ZU_OSAPI("GetShortPathNameW"));
  std::string path;
  CZuError result = FXPlatform::ShortPathNameOf(longPath, path);
  if (result.IsError()) return Passed(result, ZU_OSAPI("GetShortPathNameW"));
  return CopyOut(path, shortPath, bufferLength, length, nullptr, ZU_OSAPI("GetShortPathNameW"));
}

CZuError CZuUTFOSAPI::GetTempFileNameTQ(const char* pathName, const char* prefixString, unsigned int unique,
                                        char* tempFileName, std::size_t size) {
  if (pathName == nullptr || prefixString == nullptr || tempFileName == nullptr)
    return Invalid(ZU_OSAPI("GetTempFileNameTQ"));
  std::string name;
  CZuError result = FXPlatform::TempFileNameIn(pathName, prefixString, unique, name);
  if (result.IsError()) return Passed(result, ZU_OSAPI("GetTempFileNameTQ"));
  return CopyOut(name, tempFileName, size, nullptr, nullptr, ZU_OSAPI("GetTempFileNameTQ"));
}

CZuError CZuUTFOSAPI::MoveFileExW(const char* existingFileName, const char* newFileName, DWORD flags) {
  if (existingFileName == nullptr || newFileName == nullptr) return Invalid(ZU_OSAPI("MoveFileExW"));
  return Passed(FXPlatform::MoveFileWithFlags(existingFileName, newFileName, flags), ZU_OSAPI("MoveFileExW"));
}

CZuError CZuUTFOSAPI::MoveFileW(const char* existingFileName, const char* newFileName) {
  if (existingFileName == nullptr || newFileName == nullptr) return Invalid(ZU_OSAPI("MoveFileW"));
  return Passed(FXPlatform::MoveFileWithFlags(existingFileName, newFileName, MOVEFILE_COPY_ALLOWED),
                ZU_OSAPI("MoveFileW"));
}

CZuError CZuUTFOSAPI::MoveFileWithProgressW(const char* existingFileName, const char* newFileName,
                                            TZuProgressRoutine progressRoutine, void* data, DWORD flags) {
  if (existingFileName == nullptr || newFileName == nullptr) return Invalid(ZU_OSAPI("MoveFileWithProgressW"));
  return Passed(FXPlatform::MoveFileReportingProgress(existingFileName, newFileName, progressRoutine, data, flags),
                ZU_OSAPI("MoveFileWithProgressW"));
}

CZuError CZuUTFOSAPI::RemoveDirectoryW(const char* pathName) {
  if (pathName == nullptr) return Invalid(ZU_OSAPI("RemoveDirectoryW"));
  return Passed(FXPlatform::RemoveDirectoryAt(pathName), ZU_OSAPI("RemoveDirectoryW"));
}

CZuError CZuUTFOSAPI::ReplaceFileW(const char* replacedFileName, const char* replacementFileName,
                                   const char* backupFileName, DWORD replaceFlags, void* exclude, void* reserved) {
  if (replacedFileName == nullptr || replacementFileName == nullptr) return Invalid(ZU_OSAPI("ReplaceFileW"));
  return Passed(FXPlatform::ReplaceFileAt(replacedFileName, replacementFileName, backupFileName, replaceFlags, exclude,
                                          reserved),
                ZU_OSAPI("ReplaceFileW"));
}

CZuError CZuUTFOSAPI::SearchPathW(const char* path, const char* fileName, const char* extension, DWORD bufferLength,
                                  char* buffer, char** filePart, DWORD* length) {
  if (fileName == nullptr || (buffer == nullptr && bufferLength > 0)) return Invalid(ZU_OSAPI("SearchPathW"));
  std::string found;
  CZuError result = FXPlatform::SearchPathFor(path, fileName, extension, found);
  if (result.IsError()) return Passed(result, ZU_OSAPI("SearchPathW"));
  return CopyOut(found, buffer, bufferLength, length, filePart, ZU_OSAPI("SearchPathW"));
}

CZuError CZuUTFOSAPI::SetCurrentDirectoryW(const char* pathName) {
  if (pathName == nullptr) return Invalid(ZU_OSAPI("SetCurrentDirectoryW"));
  return Passed(FXPlatform::SetCurrentDirectoryTo(pathName), ZU_OSAPI("SetCurrentDirectoryW"));
}

CZuError CZuUTFOSAPI::SetFileAttributesW(const char* fileName, DWORD fileAttributes) {
  if (fileName == nullptr) return Invalid(ZU_OSAPI("SetFileAttributesW"));
  return Passed(FXPlatform::SetFileAttributesOf(fileName, fileAttributes), ZU_OSAPI("SetFileAttributesW"));
}

CZuError CZuUTFOSAPI::LocalEncodingToUTF8(const wchar_t* in, std::string& out) {
  out = FXString::ToString(in);
  return CZuError::Success();
}

CZuError CZuUTFOSAPI::UTF8ToLocalEncoding(const char* in, std::wstring& out) {
  out = FXString::ToWstring(in);
  return CZuError::Success();
}
