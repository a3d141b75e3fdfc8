#include "platform/OsFileApi.h"

#include <windows.h>

#include <direct.h>
#include <io.h>
#include <share.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace {

using FXPlatform::ErrorFromSystem;
using FXPlatform::FromErrno;
using FXPlatform::LastSystemError;
using FXPlatform::Narrow;
using FXPlatform::Widen;

// A C runtime failure: errno as the nearest Win32 code with the ErrNo item,
// as on POSIX.
CZuError CrtFailed(const FXCodeLocation& here, const char* path) {
  CZuError result = ErrorFromSystem(here, FromErrno(errno));
  return result.Push(here, "%s", path);
}
CZuError CrtCheck(int rc, const FXCodeLocation& here, const char* path) {
  return rc == 0 ? CZuError::Success() : CrtFailed(here, path);
}

CZuError Failed(const FXCodeLocation& here, const char* path) {
  CZuError result = ErrorFromSystem(here, LastSystemError());
  return result.Push(here, "%s", path);
}
CZuError Check(BOOL ok, const FXCodeLocation& here, const char* path) {
  return ok ? CZuError::Success() : Failed(here, path);
}

// An optional name: null stays null.
struct TOptionalWide {
  explicit TOptionalWide(const char* text) : isSet(text != nullptr), wide(text ? Widen(text) : std::wstring()) {}
  const wchar_t* get() const { return isSet ? wide.c_str() : nullptr; }
  bool isSet;
  std::wstring wide;
};

// Calls that report the size they need when the buffer is short: asked
// with a growing buffer until the answer fits.
template <class Call>
bool FetchPath(Call call, std::string& out) {
  std::vector<wchar_t> buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD n = call(static_cast<DWORD>(buffer.size()), buffer.data());
    if (n == 0) return false;
    if (n < buffer.size()) {
      out = Narrow(std::wstring(buffer.data(), n));
      return true;
    }
    buffer.resize(n + 1);
  }
}

// The wide find record into the narrow one, field by field, the names as
// UTF-8. A name that does not fit is ERROR_FILENAME_EXCED_RANGE; a short
// name that does not fit is left empty.
CZuError CopyFindData(const WIN32_FIND_DATAW& wide, WIN32_FIND_DATAA* narrow) {
  narrow->dwFileAttributes = wide.dwFileAttributes;
  narrow->ftCreationTime = wide.ftCreationTime;
  narrow->ftLastAccessTime = wide.ftLastAccessTime;
  narrow->ftLastWriteTime = wide.ftLastWriteTime;
  narrow->nFileSizeHigh = wide.nFileSizeHigh;
  narrow->nFileSizeLow = wide.nFileSizeLow;
  narrow->dwReserved0 = wide.dwReserved0;
  narrow->dwReserved1 = wide.dwReserved1;
  const std::string name = Narrow(wide.cFileName);
  const std::string shortName = Narrow(wide.cAlternateFileName);
  narrow->cAlternateFileName[0] = '\0';
  if (shortName.size() < sizeof narrow->cAlternateFileName)
    std::memcpy(narrow->cAlternateFileName, shortName.c_str(), shortName.size() + 1);
  narrow->cFileName[0] = '\0';
  if (name.size() >= sizeof narrow->cFileName)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::CopyFindData"), ERROR_FILENAME_EXCED_RANGE, "%s",
                                   name.c_str());
  std::memcpy(narrow->cFileName, name.c_str(), name.size() + 1);
  return CZuError::Success();
}

// The 32-bit time variants, which msvcrt.dll lacks, from the 64-bit call:
// the fields are the same, only narrower.
template <class Record>
int NarrowedStat(const char* path, Record* buffer) {
  struct _stat64 wide;
  const int rc = ::_wstat64(Widen(path).c_str(), &wide);
  if (rc != 0) return rc;
  if (static_cast<decltype(buffer->st_size)>(wide.st_size) != wide.st_size) {
    errno = EOVERFLOW;  // as the C runtime's own 32-bit call reports it
    return -1;
  }
  buffer->st_dev = wide.st_dev;
  buffer->st_ino = wide.st_ino;
  buffer->st_mode = wide.st_mode;
  buffer->st_nlink = wide.st_nlink;
  buffer->st_uid = wide.st_uid;
  buffer->st_gid = wide.st_gid;
  buffer->st_rdev = wide.st_rdev;
  buffer->st_size = static_cast<decltype(buffer->st_size)>(wide.st_size);
  buffer->st_atime = static_cast<decltype(buffer->st_atime)>(wide.st_atime);
  buffer->st_mtime = static_cast<decltype(buffer->st_mtime)>(wide.st_mtime);
  buffer->st_ctime = static_cast<decltype(buffer->st_ctime)>(wide.st_ctime);
  return 0;
}

}  // namespace

namespace FXPlatform {

CZuError CrtAccess(const char* path, int mode) {
  return CrtCheck(::_waccess(Widen(path).c_str(), mode), ZU_HERE("FXPlatform::CrtAccess"), path);
}
CZuError CrtChdir(const char* path) {
  return CrtCheck(::_wchdir(Widen(path).c_str()), ZU_HERE("FXPlatform::CrtChdir"), path);
}
CZuError CrtChmod(const char* path, int mode) {
  return CrtCheck(::_wchmod(Widen(path).c_str(), mode), ZU_HERE("FXPlatform::CrtChmod"), path);
}

CZuError CrtCreat(const char* path, int mode, int& fd) {
  fd = ::_wcreat(Widen(path).c_str(), mode);
  return CrtCheck(fd < 0 ? -1 : 0, ZU_HERE("FXPlatform::CrtCreat"), path);
}

CZuError CrtFopen(const char* path, const char* mode, FILE*& file) {
  file = ::_wfopen(Widen(path).c_str(), Widen(mode).c_str());
  return CrtCheck(file == nullptr ? -1 : 0, ZU_HERE("FXPlatform::CrtFopen"), path);
}

CZuError CrtFreopen(const char* path, const char* mode, FILE* stream, FILE*& file) {
  file = ::_wfreopen(Widen(path).c_str(), Widen(mode).c_str(), stream);
  return CrtCheck(file == nullptr ? -1 : 0, ZU_HERE("FXPlatform::CrtFreopen"), path);
}

CZuError CrtFsopen(const char* path, const char* mode, int shareFlag, FILE*& file) {
  file = ::_wfsopen(Widen(path).c_str(), Widen(mode).c_str(), shareFlag);
  return CrtCheck(file == nullptr ? -1 : 0, ZU_HERE("FXPlatform::CrtFsopen"), path);
}

CZuError CrtFullPath(const char* path, std::string& full) {
  wchar_t* absolute = ::_wfullpath(nullptr, Widen(path).c_str(), 0);
  if (absolute == nullptr) return CrtFailed(ZU_HERE("FXPlatform::CrtFullPath"), path);
  full = Narrow(absolute);
  std::free(absolute);
  return CZuError::Success();
}

CZuError CrtMkdir(const char* path, int) {
  return CrtCheck(::_wmkdir(Widen(path).c_str()), ZU_HERE("FXPlatform::CrtMkdir"), path);
}

CZuError CrtMktemp(std::string& nameTemplate) {
  std::wstring wide = Widen(nameTemplate);
  const errno_t rc = ::_wmktemp_s(&wide[0], wide.size() + 1);
  if (rc != 0) {
    errno = rc;
    return CrtFailed(ZU_HERE("FXPlatform::CrtMktemp"), nameTemplate.c_str());
  }
  nameTemplate = Narrow(wide);
  return CZuError::Success();
}

CZuError CrtOpen(const char* path, int openFlag, int mode, int& fd) {
  fd = ::_wopen(Widen(path).c_str(), openFlag, mode);
  return CrtCheck(fd < 0 ? -1 : 0, ZU_HERE("FXPlatform::CrtOpen"), path);
}

CZuError CrtRemove(const char* path) {
  return CrtCheck(::_wremove(Widen(path).c_str()), ZU_HERE("FXPlatform::CrtRemove"), path);
}
CZuError CrtRename(const char* oldName, const char* newName) {
  return CrtCheck(::_wrename(Widen(oldName).c_str(), Widen(newName).c_str()), ZU_HERE("FXPlatform::CrtRename"),
                  oldName);
}
CZuError CrtRmdir(const char* path) {
  return CrtCheck(::_wrmdir(Widen(path).c_str()), ZU_HERE("FXPlatform::CrtRmdir"), path);
}

CZuError CrtSearchEnv(const char* fileName, const char* variable, std::string& found) {
  found.clear();
  std::vector<wchar_t> buffer(32768);
  const errno_t rc = ::_wsearchenv_s(Widen(fileName).c_str(), Widen(variable).c_str(), buffer.data(), buffer.size());
  if (rc != 0 || buffer[0] == L'\0') {
    errno = rc != 0 ? rc : ENOENT;
    return CrtFailed(ZU_HERE("FXPlatform::CrtSearchEnv"), fileName);
  }
  found = Narrow(buffer.data());
  return CZuError::Success();
}

CZuError CrtSopen(const char* path, int openFlag, int shareFlag, int mode, int& fd) {
  const errno_t rc = ::_wsopen_s(&fd, Widen(path).c_str(), openFlag, shareFlag, mode);
  if (rc == 0) return CZuError::Success();
  errno = rc;
  return CrtFailed(ZU_HERE("FXPlatform::CrtSopen"), path);
}

CZuError CrtStat(const char* path, TZuStat* buffer) {
  return CrtCheck(::_wstat(Widen(path).c_str(), buffer), ZU_HERE("FXPlatform::CrtStat"), path);
}
CZuError CrtStat32(const char* path, TZuStat32* buffer) {
  return CrtCheck(NarrowedStat(path, buffer), ZU_HERE("FXPlatform::CrtStat32"), path);
}
CZuError CrtStat32i64(const char* path, TZuStat32i64* buffer) {
  return CrtCheck(NarrowedStat(path, buffer), ZU_HERE("FXPlatform::CrtStat32i64"), path);
}
CZuError CrtStat64(const char* path, TZuStat64* buffer) {
  return CrtCheck(::_wstat64(Widen(path).c_str(), buffer), ZU_HERE("FXPlatform::CrtStat64"), path);
}
CZuError CrtStat64i32(const char* path, TZuStat64i32* buffer) {
  return CrtCheck(::_wstat64i32(Widen(path).c_str(), buffer), ZU_HERE("FXPlatform::CrtStat64i32"), path);
}
CZuError CrtStati64(const char* path, TZuStati64* buffer) {
  return CrtCheck(::_wstati64(Widen(path).c_str(), buffer), ZU_HERE("FXPlatform::CrtStati64"), path);
}

CZuError CrtUnlink(const char* path) {
  return CrtCheck(::_wunlink(Widen(path).c_str()), ZU_HERE("FXPlatform::CrtUnlink"), path);
}

CZuError CopyFileTo(const char* existing, const char* target, bool failIfExists) {
  return Check(::CopyFileW(Widen(existing).c_str(), Widen(target).c_str(), failIfExists),
               ZU_HERE("FXPlatform::CopyFileTo"), existing);
}

CZuError CreateFileAt(const char* path, DWORD desiredAccess, DWORD shareMode, SECURITY_ATTRIBUTES* securityAttributes,
                      DWORD creationDisposition, DWORD flagsAndAttributes, HANDLE templateFile, HANDLE& file) {
  file = ::CreateFileW(Widen(path).c_str(), desiredAccess, shareMode, securityAttributes, creationDisposition,
                       flagsAndAttributes, templateFile);
  return Check(file != INVALID_HANDLE_VALUE, ZU_HERE("FXPlatform::CreateFileAt"), path);
}

CZuError HardLinkAt(const char* link, const char* existing, SECURITY_ATTRIBUTES* securityAttributes) {
  return Check(::CreateHardLinkW(Widen(link).c_str(), Widen(existing).c_str(), securityAttributes),
               ZU_HERE("FXPlatform::HardLinkAt"), link);
}

CZuError FindFirst(const char* pattern, int infoLevel, WIN32_FIND_DATAA* data, int searchOp, void* searchFilter,
                   DWORD additionalFlags, HANDLE& handle) {
  WIN32_FIND_DATAW wide;
  handle = ::FindFirstFileExW(Widen(pattern).c_str(), static_cast<FINDEX_INFO_LEVELS>(infoLevel), &wide,
                              static_cast<FINDEX_SEARCH_OPS>(searchOp), searchFilter, additionalFlags);
  if (handle == INVALID_HANDLE_VALUE) return Failed(ZU_HERE("FXPlatform::FindFirst"), pattern);
  return CopyFindData(wide, data);
}

CZuError FindNext(HANDLE handle, WIN32_FIND_DATAA* data) {
  WIN32_FIND_DATAW wide;
  if (!::FindNextFileW(handle, &wide)) return ErrorFromSystem(ZU_HERE("FXPlatform::FindNext"), LastSystemError());
  return CopyFindData(wide, data);
}

CZuError FindEnd(HANDLE handle) {
  if (::FindClose(handle)) return CZuError::Success();
  return ErrorFromSystem(ZU_HERE("FXPlatform::FindEnd"), LastSystemError());
}

CZuError BinaryTypeOf(const char* path, DWORD& type) {
  type = 0;
  return Check(::GetBinaryTypeW(Widen(path).c_str(), &type), ZU_HERE("FXPlatform::BinaryTypeOf"), path);
}

CZuError CompressedFileSizeOf(const char* path, DWORD& high, DWORD& low) {
  low = ::GetCompressedFileSizeW(Widen(path).c_str(), &high);
  if (low == INVALID_FILE_SIZE) {
    const FXPlatform::TSystemError error = LastSystemError();
    if (error.win32 != NO_ERROR)
      return ErrorFromSystem(ZU_HERE("FXPlatform::CompressedFileSizeOf"), error)
          .Push(ZU_HERE("FXPlatform::CompressedFileSizeOf"), "%s", path);
  }
  return CZuError::Success();
}

CZuError CurrentDirectory(std::string& path) {
  if (FetchPath([](DWORD size, wchar_t* buffer) { return ::GetCurrentDirectoryW(size, buffer); }, path))
    return CZuError::Success();
  return Failed(ZU_HERE("FXPlatform::CurrentDirectory"), ".");
}

CZuError SetCurrentDirectoryTo(const char* path) {
  return Check(::SetCurrentDirectoryW(Widen(path).c_str()), ZU_HERE("FXPlatform::SetCurrentDirectoryTo"), path);
}

CZuError FileAttributesOf(const char* path, DWORD& attributes) {
  attributes = ::GetFileAttributesW(Widen(path).c_str());
  return Check(attributes != INVALID_FILE_ATTRIBUTES, ZU_HERE("FXPlatform::FileAttributesOf"), path);
}

CZuError FileAttributeDataOf(const char* path, int infoLevel, void* information) {
  return Check(::GetFileAttributesExW(Widen(path).c_str(), static_cast<GET_FILEEX_INFO_LEVELS>(infoLevel), information),
               ZU_HERE("FXPlatform::FileAttributeDataOf"), path);
}

CZuError SetFileAttributesOf(const char* path, DWORD attributes) {
  return Check(::SetFileAttributesW(Widen(path).c_str(), attributes), ZU_HERE("FXPlatform::SetFileAttributesOf"),
               path);
}

CZuError FullPathNameOf(const char* path, std::string& full) {
  const std::wstring wide = Widen(path);
  if (FetchPath([&](DWORD size, wchar_t* buffer) { return ::GetFullPathNameW(wide.c_str(), size, buffer, nullptr); },
                full))
    return CZuError::Success();
  return Failed(ZU_HERE("FXPlatform::FullPathNameOf"), path);
}

CZuError LongPathNameOf(const char* path, std::string& longPath) {
  const std::wstring wide = Widen(path);
  if (FetchPath([&](DWORD size, wchar_t* buffer) { return ::GetLongPathNameW(wide.c_str(), buffer, size); },
                longPath))
    return CZuError::Success();
  return Failed(ZU_HERE("FXPlatform::LongPathNameOf"), path);
}

CZuError ShortPathNameOf(const char* path, std::string& shortPath) {
  const std::wstring wide = Widen(path);
  if (FetchPath([&](DWORD size, wchar_t* buffer) { return ::GetShortPathNameW(wide.c_str(), buffer, size); },
                shortPath))
    return CZuError::Success();
  return Failed(ZU_HERE("FXPlatform::ShortPathNameOf"), path);
}

CZuError TempFileNameIn(const char* folder, const char* prefix, unsigned int unique, std::string& name) {
  wchar_t buffer[MAX_PATH + 1];
  if (::GetTempFileNameW(Widen(folder).c_str(), Widen(prefix).c_str(), unique, buffer) == 0)
    return Failed(ZU_HERE("FXPlatform::TempFileNameIn"), folder);
  name = Narrow(buffer);
  return CZuError::Success();
}

CZuError MoveFileWithFlags(const char* existing, const char* target, DWORD flags) {
  return Check(::MoveFileExW(Widen(existing).c_str(), Widen(target).c_str(), flags),
               ZU_HERE("FXPlatform::MoveFileWithFlags"), existing);
}

CZuError MoveFileReportingProgress(const char* existing, const char* target, TZuProgressRoutine progress, void* data,
                                   DWORD flags) {
  return Check(::MoveFileWithProgressW(Widen(existing).c_str(), Widen(target).c_str(), progress, data, flags),
               ZU_HERE("FXPlatform::MoveFileReportingProgress"), existing);
}

CZuError RemoveDirectoryAt(const char* path) {
  return Check(::RemoveDirectoryW(Widen(path).c_str()), ZU_HERE("FXPlatform::RemoveDirectoryAt"), path);
}

CZuError ReplaceFileAt(const char* replaced, const char* replacement, const char* backup, DWORD flags, void* exclude,
                       void* reserved) {
  const TOptionalWide wideBackup(backup);
  return Check(::ReplaceFileW(Widen(replaced).c_str(), Widen(replacement).c_str(), wideBackup.get(), flags, exclude,
                              reserved),
               ZU_HERE("FXPlatform::ReplaceFileAt"), replaced);
}

CZuError SearchPathFor(const char* path, const char* fileName, const char* extension, std::string& found) {
  const TOptionalWide widePath(path), wideExtension(extension);
  const std::wstring wideName = Widen(fileName);
  if (FetchPath(
          [&](DWORD size, wchar_t* buffer) {
            return ::SearchPathW(widePath.get(), wideName.c_str(), wideExtension.get(), size, buffer, nullptr);
          },
          found))
    return CZuError::Success();
  return Failed(ZU_HERE("FXPlatform::SearchPathFor"), fileName);
}

}  // namespace FXPlatform
