#include "platform/FileSystem.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"

namespace FXPlatform {

std::string TempDirectory() {
  // As GetTempPath reads TMP and TEMP, POSIX reads TMPDIR.
  const char* dir = std::getenv("TMPDIR");
  std::string path = (dir != nullptr && *dir != '\0') ? dir : "/tmp";
  if (path.back() != '/') path += '/';
  return path;
}

bool PathExists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0;
}

bool IsDirectory(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

CZuError CreateOneDirectory(const std::string& path) {
  if (::mkdir(path.c_str(), 0777) == 0) return CZuError::Success();
  const TSystemError error = LastSystemError();
  if (errno == EEXIST) {
    if (IsDirectory(path)) return CZuError::Success();
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::CreateOneDirectory"), ERROR_ALREADY_EXISTS, "%s",
                                   path.c_str());
  }
  return ErrorFromSystem(ZU_HERE("FXPlatform::CreateOneDirectory"), error)
      .Push(ZU_HERE("FXPlatform::CreateOneDirectory"), "%s", path.c_str());
}

CZuError MoveFileNoReplace(const std::string& from, const std::string& to) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::MoveFileNoReplace");
  // renameat2(RENAME_NOREPLACE) is atomic; file systems without it get a
  // hard link plus unlink, which never replaces either.
  int rc = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
  if (rc != 0 && (errno == EINVAL || errno == ENOSYS)) {
    rc = ::link(from.c_str(), to.c_str());
    if (rc == 0) ::unlink(from.c_str());
  }
  if (rc == 0) return CZuError::Success();
  if (errno == EEXIST) return FXErrorUtil::ErrorWin32(here, ERROR_ALREADY_EXISTS, "%s", to.c_str());
  return ErrorFromSystem(here, LastSystemError()).Push(here, "%s -> %s", from.c_str(), to.c_str());
}

CZuError DeleteFileAt(const std::string& path) {
  if (::unlink(path.c_str()) == 0) return CZuError::Success();
  return ErrorFromSystem(ZU_HERE("FXPlatform::DeleteFileAt"), LastSystemError())
      .Push(ZU_HERE("FXPlatform::DeleteFileAt"), "%s", path.c_str());
}

CZuError ListDirectory(const std::string& path, std::vector<std::string>& names) {
  names.clear();
  DIR* dir = ::opendir(path.c_str());
  if (dir == nullptr)
    return ErrorFromSystem(ZU_HERE("FXPlatform::ListDirectory"), LastSystemError())
        .Push(ZU_HERE("FXPlatform::ListDirectory"), "%s", path.c_str());
  while (const dirent* entry = ::readdir(dir)) {
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) names.push_back(entry->d_name);
  }
  ::closedir(dir);
  return CZuError::Success();
}

}  // namespace FXPlatform
