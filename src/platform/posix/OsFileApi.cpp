#include "platform/OsFileApi.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <vector>

#include "errors/ErrorUtil.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"

namespace {

using FXPlatform::ErrorFromSystem;
using FXPlatform::LastSystemError;

// The errno of the failed call as a result naming the path.
CZuError Failed(const FXCodeLocation& here, const char* path) {
  CZuError result = ErrorFromSystem(here, LastSystemError());
  return result.Push(here, "%s", path);
}

CZuError NotSupported(const FXCodeLocation& here, const char* windowsFunction) {
  return FXErrorUtil::ErrorWin32(here, ERROR_NOT_SUPPORTED, "%s", windowsFunction);
}

CZuError Check(int rc, const FXCodeLocation& here, const char* path) {
  return rc == 0 ? CZuError::Success() : Failed(here, path);
}

// 100-nanosecond units since 1601-01-01, the Windows epoch.
FILETIME ToFileTime(const struct timespec& t) {
  const unsigned long long ticks = static_cast<unsigned long long>(t.tv_sec) * 10000000ull +
                                   static_cast<unsigned long long>(t.tv_nsec) / 100 + 116444736000000000ull;
  FILETIME ft;
  ft.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFFu);
  ft.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  return ft;
}

// Windows attributes of a file, from lstat (and stat for a link's target).
DWORD AttributesOf(const char* path, const struct stat& st) {
  DWORD attributes = 0;
  if (S_ISLNK(st.st_mode)) {
    attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    struct stat target;
    if (::stat(path, &target) == 0 && S_ISDIR(target.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
  } else if (S_ISDIR(st.st_mode)) {
    attributes |= FILE_ATTRIBUTE_DIRECTORY;
  } else if ((st.st_mode & S_IWUSR) == 0) {
    attributes |= FILE_ATTRIBUTE_READONLY;
  }
  return attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
}

// stat has no birth time: the creation time is the last write time.
template <class Record>
void FillTimesAndSize(Record& record, const struct stat& st, DWORD attributes) {
  record.dwFileAttributes = attributes;
  record.ftCreationTime = ToFileTime(st.st_mtim);
  record.ftLastAccessTime = ToFileTime(st.st_atim);
  record.ftLastWriteTime = ToFileTime(st.st_mtim);
  const unsigned long long size =
      (attributes & FILE_ATTRIBUTE_DIRECTORY) ? 0 : static_cast<unsigned long long>(st.st_size);
  record.nFileSizeHigh = static_cast<DWORD>(size >> 32);
  record.nFileSizeLow = static_cast<DWORD>(size & 0xFFFFFFFFu);
}

// The absolute form of a path, made lexically: "." and "//" vanish, ".."
// takes away the component before it (never the root), a trailing '/' is
// kept.
bool LexicalFullPath(const char* path, std::string& full) {
  std::string input;
  if (path[0] != '/') {
    std::string cwd;
    if (FXPlatform::CurrentDirectory(cwd).IsError()) return false;
    input = cwd + "/";
  }
  input += path;
  std::vector<std::string> parts;
  std::size_t at = 0;
  while (at <= input.size()) {
    std::size_t slash = input.find('/', at);
    if (slash == std::string::npos) slash = input.size();
    const std::string part = input.substr(at, slash - at);
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    at = slash + 1;
  }
  full.clear();
  for (const std::string& part : parts) full += "/" + part;
  const char last = input.back();
  if (full.empty() || last == '/') full += "/";
  return true;
}

// Windows wildcards: '*' any run, '?' one character (a whole UTF-8
// sequence). Case-sensitive, as POSIX names are.
bool Matches(const char* pattern, const char* name) {
  const char* starPattern = nullptr;
  const char* starName = nullptr;
  auto next = [](const char* s) {
    ++s;
    while ((static_cast<unsigned char>(*s) & 0xC0u) == 0x80u) ++s;
    return s;
  };
  while (*name != '\0') {
    if (*pattern == '*') {
      starPattern = pattern++;
      starName = name;
    } else if (*pattern == '?') {
      ++pattern;
      name = next(name);
    } else if (*pattern != '\0' && *pattern == *name) {
      ++pattern;
      ++name;
    } else if (starPattern != nullptr) {
      pattern = starPattern + 1;
      name = starName = next(starName);
    } else {
      return false;
    }
  }
  while (*pattern == '*') ++pattern;
  return *pattern == '\0';
}

struct TFind {
  DIR* dir = nullptr;
  std::string folder;   // ends with '/'
  std::string pattern;  // the last component
};

// The next entry that matches, into the record; false at the end.
bool NextMatch(TFind& find, WIN32_FIND_DATAA* data, CZuError& result) {
  const bool all = find.pattern == "*" || find.pattern == "*.*";
  while (const struct dirent* entry = ::readdir(find.dir)) {
    if (!all && !Matches(find.pattern.c_str(), entry->d_name)) continue;
    const std::string path = find.folder + entry->d_name;
    struct stat st;
    if (::lstat(path.c_str(), &st) != 0) continue;  // gone since it was listed
    std::memset(data, 0, sizeof *data);
    FillTimesAndSize(*data, st, AttributesOf(path.c_str(), st));
    if (S_ISLNK(st.st_mode)) data->dwReserved0 = IO_REPARSE_TAG_SYMLINK;
    const std::size_t length = std::strlen(entry->d_name);
    if (length >= sizeof data->cFileName) {
      result = FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::FindNext"), ERROR_FILENAME_EXCED_RANGE, "%s",
                                       path.c_str());
    } else {
      std::memcpy(data->cFileName, entry->d_name, length + 1);
      result = CZuError::Success();
    }
    return true;
  }
  return false;
}

TFind* FindOf(HANDLE handle) {
  return handle == nullptr || handle == INVALID_HANDLE_VALUE ? nullptr : static_cast<TFind*>(handle);
}

// Copies a regular file's contents, permissions and times. The target is
// created with O_EXCL when it must not exist; a target that is the source
// itself is refused before anything is truncated.
CZuError CopyContents(const char* existing, const char* target, bool failIfExists, bool sync) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::CopyFileTo");
  const int in = ::open(existing, O_RDONLY | O_CLOEXEC);
  if (in < 0) return Failed(here, existing);
  struct stat source;
  if (::fstat(in, &source) != 0) {
    CZuError r = Failed(here, existing);
    ::close(in);
    return r;
  }
  if (!S_ISREG(source.st_mode)) {
    ::close(in);
    return FXErrorUtil::ErrorWin32(here, ERROR_ACCESS_DENIED, "%s", existing);
  }
  struct stat current;
  if (::stat(target, &current) == 0 && current.st_dev == source.st_dev && current.st_ino == source.st_ino) {
    ::close(in);
    return FXErrorUtil::ErrorWin32(here, ERROR_SHARING_VIOLATION, "%s", target);
  }
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (failIfExists ? O_EXCL : O_TRUNC);
  const int out = ::open(target, flags, source.st_mode & 07777);
  if (out < 0) {
    CZuError r = Failed(here, target);
    ::close(in);
    return r;
  }
  std::vector<char> buffer(1 << 16);
  CZuError result = CZuError::Success();
  for (;;) {
    const ssize_t n = ::read(in, buffer.data(), buffer.size());
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      result = Failed(here, existing);
      break;
    }
    for (ssize_t done = 0; done < n;) {
      const ssize_t w = ::write(out, buffer.data() + done, static_cast<std::size_t>(n - done));
      if (w < 0 && errno == EINTR) continue;
      if (w < 0) {
        result = Failed(here, target);
        break;
      }
      done += w;
    }
    if (result.IsError()) break;
  }
  if (!result.IsError()) {
    const struct timespec times[2] = {source.st_atim, source.st_mtim};
    ::fchmod(out, source.st_mode & 07777);
    ::futimens(out, times);
    if (sync && ::fsync(out) != 0) result = Failed(here, target);
  }
  ::close(in);
  if (::close(out) != 0 && !result.IsError()) result = Failed(here, target);
  return result;
}

}  // namespace

namespace FXPlatform {

CZuError CrtAccess(const char* path, int mode) { return Check(::access(path, mode), ZU_HERE("FXPlatform::CrtAccess"), path); }
CZuError CrtChdir(const char* path) { return Check(::chdir(path), ZU_HERE("FXPlatform::CrtChdir"), path); }
CZuError CrtChmod(const char* path, int mode) {
  return Check(::chmod(path, static_cast<mode_t>(mode)), ZU_HERE("FXPlatform::CrtChmod"), path);
}

CZuError CrtCreat(const char* path, int mode, int& fd) {
  fd = ::creat(path, static_cast<mode_t>(mode));
  return Check(fd < 0 ? -1 : 0, ZU_HERE("FXPlatform::CrtCreat"), path);
}

CZuError CrtFopen(const char* path, const char* mode, FILE*& file) {
  file = std::fopen(path, mode);
  return Check(file == nullptr ? -1 : 0, ZU_HERE("FXPlatform::CrtFopen"), path);
}

CZuError CrtFreopen(const char* path, const char* mode, FILE* stream, FILE*& file) {
  file = std::freopen(path, mode, stream);
  return Check(file == nullptr ? -1 : 0, ZU_HERE("FXPlatform::CrtFreopen"), path);
}

CZuError CrtFsopen(const char* path, const char* mode, int, FILE*& file) {
  file = std::fopen(path, mode);
  return Check(file == nullptr ? -1 : 0, ZU_HERE("FXPlatform::CrtFsopen"), path);
}

CZuError CrtFullPath(const char* path, std::string& full) {
  if (LexicalFullPath(path, full)) return CZuError::Success();
  return Failed(ZU_HERE("FXPlatform::CrtFullPath"), path);
}

CZuError CrtMkdir(const char* path, int mode) {
  return Check(::mkdir(path, static_cast<mode_t>(mode)), ZU_HERE("FXPlatform::CrtMkdir"), path);
}

CZuError CrtMktemp(std::string& nameTemplate) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::CrtMktemp");
  const std::size_t n = nameTemplate.size();
  if (n < 6 || nameTemplate.compare(n - 6, 6, "XXXXXX") != 0) {
    errno = EINVAL;
    return Failed(here, nameTemplate.c_str());
  }
  char digits[8];
  std::snprintf(digits, sizeof digits, "%05d", static_cast<int>(::getpid() % 100000));
  std::string candidate = nameTemplate.substr(0, n - 6) + "a" + digits;
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    candidate[n - 6] = letter;
    struct stat st;
    if (::lstat(candidate.c_str(), &st) != 0 && errno == ENOENT) {
      nameTemplate = candidate;
      return CZuError::Success();
    }
  }
  errno = EEXIST;
  return Failed(here, nameTemplate.c_str());
}

CZuError CrtOpen(const char* path, int openFlag, int mode, int& fd) {
  fd = ::open(path, openFlag, static_cast<mode_t>(mode));
  return Check(fd < 0 ? -1 : 0, ZU_HERE("FXPlatform::CrtOpen"), path);
}

// Files only, as _wremove: a directory fails.
CZuError CrtRemove(const char* path) { return Check(::unlink(path), ZU_HERE("FXPlatform::CrtRemove"), path); }

CZuError CrtRename(const char* oldName, const char* newName) { return MoveFileNoReplace(oldName, newName); }

CZuError CrtRmdir(const char* path) { return Check(::rmdir(path), ZU_HERE("FXPlatform::CrtRmdir"), path); }

CZuError CrtSearchEnv(const char* fileName, const char* variable, std::string& found) {
  found.clear();
  struct stat st;
  if (::stat(fileName, &st) == 0) return CrtFullPath(fileName, found);
  const char* list = std::getenv(variable);
  for (std::string rest = list == nullptr ? "" : list; !rest.empty();) {
    const std::size_t colon = rest.find(':');
    std::string folder = rest.substr(0, colon);
    rest = colon == std::string::npos ? "" : rest.substr(colon + 1);
    if (folder.empty()) continue;
    if (folder.back() != '/') folder += '/';
    const std::string candidate = folder + fileName;
    if (::stat(candidate.c_str(), &st) == 0) return CrtFullPath(candidate.c_str(), found);
  }
  errno = ENOENT;
  return Failed(ZU_HERE("FXPlatform::CrtSearchEnv"), fileName);
}

CZuError CrtSopen(const char* path, int openFlag, int, int mode, int& fd) {
  fd = ::open(path, openFlag, static_cast<mode_t>(mode));
  return Check(fd < 0 ? -1 : 0, ZU_HERE("FXPlatform::CrtSopen"), path);
}

CZuError CrtStat(const char* path, TZuStat* buffer) { return Check(::stat(path, buffer), ZU_HERE("FXPlatform::CrtStat"), path); }
CZuError CrtStat32(const char* path, TZuStat32* buffer) { return CrtStat(path, buffer); }
CZuError CrtStat32i64(const char* path, TZuStat32i64* buffer) { return CrtStat(path, buffer); }
CZuError CrtStat64(const char* path, TZuStat64* buffer) { return CrtStat(path, buffer); }
CZuError CrtStat64i32(const char* path, TZuStat64i32* buffer) { return CrtStat(path, buffer); }
CZuError CrtStati64(const char* path, TZuStati64* buffer) { return CrtStat(path, buffer); }

CZuError CrtUnlink(const char* path) { return Check(::unlink(path), ZU_HERE("FXPlatform::CrtUnlink"), path); }

CZuError CopyFileTo(const char* existing, const char* target, bool failIfExists) {
  return CopyContents(existing, target, failIfExists, false);
}

CZuError CreateFileAt(const char*, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE, HANDLE& file) {
  file = INVALID_HANDLE_VALUE;
  return NotSupported(ZU_HERE("FXPlatform::CreateFileAt"), "CreateFileW");
}

CZuError HardLinkAt(const char* link, const char* existing, SECURITY_ATTRIBUTES*) {
  return Check(::link(existing, link), ZU_HERE("FXPlatform::HardLinkAt"), link);
}

CZuError FindFirst(const char* pattern, int, WIN32_FIND_DATAA* data, int, void*, DWORD, HANDLE& handle) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::FindFirst");
  handle = INVALID_HANDLE_VALUE;
  const std::string text(pattern);
  const std::size_t slash = text.rfind('/');
  auto find = std::make_unique<TFind>();
  find->folder = slash == std::string::npos ? std::string() : text.substr(0, slash + 1);
  find->pattern = slash == std::string::npos ? text : text.substr(slash + 1);
  find->dir = ::opendir(find->folder.empty() ? "." : find->folder.c_str());
  if (find->dir == nullptr) {
    TSystemError error = LastSystemError();
    if (error.win32 == ERROR_FILE_NOT_FOUND) error.win32 = ERROR_PATH_NOT_FOUND;  // the folder is missing
    return ErrorFromSystem(here, error).Push(here, "%s", pattern);
  }
  CZuError result = CZuError::Success();
  if (find->pattern.empty() || !NextMatch(*find, data, result)) {
    ::closedir(find->dir);
    return FXErrorUtil::ErrorWin32(here, ERROR_FILE_NOT_FOUND, "%s", pattern);
  }
  handle = find.release();
  return result;
}

CZuError FindNext(HANDLE handle, WIN32_FIND_DATAA* data) {
  TFind* find = FindOf(handle);
  if (find == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::FindNext"), ERROR_INVALID_HANDLE);
  CZuError result = CZuError::Success();
  if (!NextMatch(*find, data, result)) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::FindNext"), ERROR_NO_MORE_FILES);
  return result;
}

CZuError FindEnd(HANDLE handle) {
  TFind* find = FindOf(handle);
  if (find == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::FindEnd"), ERROR_INVALID_HANDLE);
  ::closedir(find->dir);
  delete find;
  return CZuError::Success();
}

CZuError BinaryTypeOf(const char*, DWORD& type) {
  type = 0;
  return NotSupported(ZU_HERE("FXPlatform::BinaryTypeOf"), "GetBinaryTypeW");
}

CZuError CompressedFileSizeOf(const char* path, DWORD& high, DWORD& low) {
  struct stat st;
  if (::stat(path, &st) != 0) return Failed(ZU_HERE("FXPlatform::CompressedFileSizeOf"), path);
  const unsigned long long size = static_cast<unsigned long long>(st.st_blocks) * 512u;
  high = static_cast<DWORD>(size >> 32);
  low = static_cast<DWORD>(size & 0xFFFFFFFFu);
  return CZuError::Success();
}

CZuError CurrentDirectory(std::string& path) {
  std::vector<char> buffer(256);
  while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
    if (errno != ERANGE) {
      path.clear();
      return Failed(ZU_HERE("FXPlatform::CurrentDirectory"), ".");
    }
    buffer.resize(buffer.size() * 2);
  }
  path = buffer.data();
  return CZuError::Success();
}

CZuError SetCurrentDirectoryTo(const char* path) {
  return Check(::chdir(path), ZU_HERE("FXPlatform::SetCurrentDirectoryTo"), path);
}

CZuError FileAttributesOf(const char* path, DWORD& attributes) {
  struct stat st;
  attributes = INVALID_FILE_ATTRIBUTES;
  if (::lstat(path, &st) != 0) return Failed(ZU_HERE("FXPlatform::FileAttributesOf"), path);
  attributes = AttributesOf(path, st);
  return CZuError::Success();
}

CZuError FileAttributeDataOf(const char* path, int infoLevel, void* information) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::FileAttributeDataOf");
  if (infoLevel != GetFileExInfoStandard || information == nullptr)
    return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER);
  struct stat st;
  if (::lstat(path, &st) != 0) return Failed(here, path);
  auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(information);
  FillTimesAndSize(*data, st, AttributesOf(path, st));
  return CZuError::Success();
}

CZuError SetFileAttributesOf(const char* path, DWORD attributes) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::SetFileAttributesOf");
  struct stat st;
  if (::stat(path, &st) != 0) return Failed(here, path);
  const mode_t mode = (attributes & FILE_ATTRIBUTE_READONLY) ? (st.st_mode & ~static_cast<mode_t>(0222))
                                                             : (st.st_mode | S_IWUSR);
  return Check(::chmod(path, mode & 07777), here, path);
}

CZuError FullPathNameOf(const char* path, std::string& full) {
  if (LexicalFullPath(path, full)) return CZuError::Success();
  return Failed(ZU_HERE("FXPlatform::FullPathNameOf"), path);
}

CZuError LongPathNameOf(const char* path, std::string& longPath) {
  struct stat st;
  if (::lstat(path, &st) != 0) return Failed(ZU_HERE("FXPlatform::LongPathNameOf"), path);
  longPath = path;
  return CZuError::Success();
}

CZuError ShortPathNameOf(const char* path, std::string& shortPath) {
  struct stat st;
  if (::lstat(path, &st) != 0) return Failed(ZU_HERE("FXPlatform::ShortPathNameOf"), path);
  shortPath = path;
  return CZuError::Success();
}

CZuError TempFileNameIn(const char* folder, const char* prefix, unsigned int unique, std::string& name) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::TempFileNameIn");
  std::string base(folder);
  if (!base.empty() && base.back() != '/') base += '/';
  // The first three characters, whole UTF-8 sequences.
  std::size_t cut = 0;
  for (int count = 0; prefix[cut] != '\0' && count < 3; ++count)
    do ++cut;
    while ((static_cast<unsigned char>(prefix[cut]) & 0xC0u) == 0x80u);
  base.append(prefix, cut);
  char hex[16];
  if (unique != 0) {
    std::snprintf(hex, sizeof hex, "%X.tmp", unique & 0xFFFFu);
    name = base + hex;
    return CZuError::Success();
  }
  const unsigned int start = static_cast<unsigned int>(std::time(nullptr) ^ ::getpid()) & 0xFFFFu;
  for (unsigned int i = 0; i < 0x10000; ++i) {
    const unsigned int number = (start + i) & 0xFFFFu;
    if (number == 0) continue;
    std::snprintf(hex, sizeof hex, "%X.tmp", number);
    const std::string candidate = base + hex;
    const int fd = ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0) {
      ::close(fd);
      name = candidate;
      return CZuError::Success();
    }
    if (errno != EEXIST) return Failed(here, candidate.c_str());
  }
  return FXErrorUtil::ErrorWin32(here, ERROR_FILE_EXISTS, "%s", folder);
}

CZuError MoveFileWithFlags(const char* existing, const char* target, DWORD flags) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::MoveFileWithFlags");
  if (flags & MOVEFILE_DELAY_UNTIL_REBOOT) return NotSupported(here, "MoveFileExW(MOVEFILE_DELAY_UNTIL_REBOOT)");
  const bool replace = (flags & MOVEFILE_REPLACE_EXISTING) != 0;
  CZuError result = replace ? Check(::rename(existing, target), here, existing) : MoveFileNoReplace(existing, target);
  if (!result.IsError() || !(flags & MOVEFILE_COPY_ALLOWED) || FXErrorUtil::GetWin32(result) != ERROR_NOT_SAME_DEVICE)
    return result;
  // Across file systems: a copy, then the original goes.
  result = CopyContents(existing, target, !replace, (flags & MOVEFILE_WRITE_THROUGH) != 0);
  if (result.IsError()) return result;
  return Check(::unlink(existing), here, existing);
}

CZuError MoveFileReportingProgress(const char* existing, const char* target, TZuProgressRoutine progress, void*,
                                   DWORD flags) {
  if (progress != nullptr)
    return NotSupported(ZU_HERE("FXPlatform::MoveFileReportingProgress"), "MoveFileWithProgressW with a routine");
  return MoveFileWithFlags(existing, target, flags);
}

CZuError RemoveDirectoryAt(const char* path) {
  return Check(::rmdir(path), ZU_HERE("FXPlatform::RemoveDirectoryAt"), path);
}

CZuError ReplaceFileAt(const char*, const char*, const char*, DWORD, void*, void*) {
  return NotSupported(ZU_HERE("FXPlatform::ReplaceFileAt"), "ReplaceFileW");
}

CZuError SearchPathFor(const char*, const char*, const char*, std::string& found) {
  found.clear();
  return NotSupported(ZU_HERE("FXPlatform::SearchPathFor"), "SearchPathW");
}

}  // namespace FXPlatform
