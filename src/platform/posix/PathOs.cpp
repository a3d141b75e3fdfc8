// The path questions on POSIX, with the file system shown as drive Z:.
#include "platform/PathOs.h"

#include <mntent.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/SystemPath.h"

namespace FXPlatform {
namespace {

constexpr DWORD kCaseSensitiveSearch = 0x1;     // FILE_CASE_SENSITIVE_SEARCH
constexpr DWORD kCasePreservedNames = 0x2;      // FILE_CASE_PRESERVED_NAMES
constexpr DWORD kReadOnlyVolume = 0x80000;      // FILE_READ_ONLY_VOLUME
constexpr long kNfsSuperMagic = 0x6969;         // NFS_SUPER_MAGIC of <linux/magic.h>


// The errno of the call that just failed, with what it was asked.
CZuError SystemFailure(const char* function, const char* call, const std::string& path) {
  const TSystemError error = LastSystemError();
  return ErrorFromSystem(ZU_HERE(function), error).Push(ZU_HERE(function), "%s failed, Path=[%s]", call, path.c_str());
}

// "\\?\Z:\usr\share", "Z:\usr\share" or "Z:" to "/usr/share" or "/". The
// inputs here are native forms, so a path without a drive is refused too.
CZuError ToPosix(const char* function, const std::string& path, std::string& posix) {
  std::string_view p(path);
  if (p.substr(0, 4) == "\\\\?\\") p.remove_prefix(4);
  if (p.size() < 2 || p[1] != ':' || SystemPathOf(path, posix).IsError())
    return FXErrorUtil::ErrorWin32(ZU_HERE(function), ERROR_PATH_NOT_FOUND,
                                   "Only drive Z: exists on this platform, Path=[%s]", path.c_str());
  return CZuError::Success();
}

// "/usr/share" to "Z:\usr\share". The backslash separates names in that
// form, so a POSIX name holding one cannot be shown and is refused.
CZuError FromPosix(const char* function, const std::string& posix, std::string& path) {
  const std::size_t backslash = posix.find('\\');
  if (backslash != std::string::npos) {
    const std::size_t start = posix.rfind('/', backslash) + 1;
    const std::size_t end = posix.find('/', backslash);
    return FXErrorUtil::ErrorWin32(ZU_HERE(function), ERROR_INVALID_NAME,
                                   "File name holds a backslash, Name=[%s], Path=[%s]",
                                   posix.substr(start, end == std::string::npos ? end : end - start).c_str(),
                                   posix.c_str());
  }
  std::string out = "Z:";
  out.append(posix);
  for (char& c : out)
    if (c == '/') c = '\\';
  if (out.size() == 2) out.push_back('\\');
  path.swap(out);
  return CZuError::Success();
}

// The path with links resolved, or that of its nearest existing ancestor
// (as GetVolumePathNameW answers for paths that do not exist yet).
CZuError NearestExisting(const char* function, const std::string& posix, std::string& resolved) {
  std::string at = posix;
  for (;;) {
    if (char* real = ::realpath(at.c_str(), nullptr)) {
      resolved = real;
      std::free(real);
      return CZuError::Success();
    }
    if ((errno != ENOENT && errno != ENOTDIR) || at == "/") return SystemFailure(function, "realpath", at);
    const std::size_t slash = at.find_last_of('/');
    at = slash == 0 ? "/" : at.substr(0, slash);
  }
}

CZuError StatNearest(const char* function, const std::string& path, struct stat& st) {
  std::string posix, resolved;
  CZuError result = ToPosix(function, path, posix);
  if (!result.IsError()) result = NearestExisting(function, posix, resolved);
  if (!result.IsError() && ::stat(resolved.c_str(), &st) != 0) result = SystemFailure(function, "stat", resolved);
  return result;
}

DWORD FoldDevice(dev_t device) {
  const auto d = static_cast<unsigned long long>(device);
  return static_cast<DWORD>(d ^ (d >> 32));
}

// The mount points of the mount table, unescaped.
CZuError MountPoints(const char* function, std::vector<std::string>& points) {
  std::FILE* table = ::setmntent("/proc/self/mounts", "r");
  if (table == nullptr) return SystemFailure(function, "setmntent", "/proc/self/mounts");
  struct mntent entry;
  char buffer[4096];
  while (::getmntent_r(table, &entry, buffer, sizeof buffer) != nullptr) points.emplace_back(entry.mnt_dir);
  ::endmntent(table);
  return CZuError::Success();
}

bool Contains(const std::string& folder, const std::string& path) {
  if (folder == "/") return true;
  return path.compare(0, folder.size(), folder) == 0 && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace

CZuError CurrentFolder(std::string& folder) {
  char* cwd = ::getcwd(nullptr, 0);
  if (cwd == nullptr) return SystemFailure("FXPlatform::CurrentFolder", "getcwd", ".");
  const std::string posix(cwd);
  std::free(cwd);
  return FromPosix("FXPlatform::CurrentFolder", posix, folder);
}

CZuError CurrentFolderOfDrive(char drive, std::string& folder) {
  if (drive == 'Z' || drive == 'z') return CurrentFolder(folder);
  folder = std::string{drive, ':', '\\'};
  return CZuError::Success();
}

CZuError FullPathName(const std::string& path, std::size_t rootLength, std::string& full) {
  std::vector<std::string_view> names;
  const std::string_view p(path);
  for (std::size_t at = rootLength; at < p.size();) {
    std::size_t next = p.find('\\', at);
    if (next == std::string_view::npos) next = p.size();
    const std::string_view name = p.substr(at, next - at);
    if (name == "..") {
      if (!names.empty()) names.pop_back();
    } else if (!name.empty() && name != ".") {
      names.push_back(name);
    }
    at = next + 1;
  }
  std::string out(p.substr(0, rootLength));
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!out.empty() && out.back() != '\\') out.push_back('\\');
    out.append(names[i]);
  }
  if (p.size() > rootLength && p.back() == '\\' && !names.empty()) out.push_back('\\');
  full.swap(out);
  return CZuError::Success();
}

CZuError QueryPathKind(const std::string& path, TPathKind& kind) {
  constexpr const char* kFunction = "FXPlatform::QueryPathKind";
  std::string posix;
  CZuError result = ToPosix(kFunction, path, posix);
  if (result.IsError()) return result;
  struct stat st;
  if (::lstat(posix.c_str(), &st) != 0) return SystemFailure(kFunction, "lstat", posix);
  kind.directory = S_ISDIR(st.st_mode);
  kind.regular = S_ISREG(st.st_mode);
  kind.link = S_ISLNK(st.st_mode);
  kind.blockDevice = S_ISBLK(st.st_mode);
  kind.charDevice = S_ISCHR(st.st_mode);
  return result;
}

CZuError VolumePathName(const std::string& path, std::string& root) {
  constexpr const char* kFunction = "FXPlatform::VolumePathName";
  std::string posix, resolved;
  std::vector<std::string> points;
  CZuError result = ToPosix(kFunction, path, posix);
  if (!result.IsError()) result = NearestExisting(kFunction, posix, resolved);
  if (!result.IsError()) result = MountPoints(kFunction, points);
  if (result.IsError()) return result;
  std::string deepest = "/";
  for (const std::string& point : points)
    if (point.size() > deepest.size() && Contains(point, resolved)) deepest = point;
  std::string out;
  result = FromPosix(kFunction, deepest, out);
  if (result.IsError()) return result;
  if (out.back() != '\\') out.push_back('\\');
  root.swap(out);
  return result;
}

CZuError VolumeGuidName(const std::string& mountPoint, std::string&) {
  return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::VolumeGuidName"), ERROR_NOT_SUPPORTED,
                                 "GetVolumeNameForVolumeMountPointW is not supported on this platform, Path=[%s]",
                                 mountPoint.c_str());
}

CZuError VolumeSerialNumber(const std::string& path, DWORD& serial) {
  struct stat st;
  CZuError result = StatNearest("FXPlatform::VolumeSerialNumber", path, st);
  if (!result.IsError()) serial = FoldDevice(st.st_dev);
  return result;
}

CZuError VolumeUniqueId(const std::string& path, std::string& hexDigits) {
  constexpr const char* kFunction = "FXPlatform::VolumeUniqueId";
  std::string posix, resolved;
  CZuError result = ToPosix(kFunction, path, posix);
  if (!result.IsError()) result = NearestExisting(kFunction, posix, resolved);
  if (result.IsError()) return result;
  struct statvfs vfs;
  if (::statvfs(resolved.c_str(), &vfs) != 0) return SystemFailure(kFunction, "statvfs", resolved);
  char digits[32];
  std::snprintf(digits, sizeof digits, "%016llX", static_cast<unsigned long long>(vfs.f_fsid));
  hexDigits = digits;
  return result;
}

CZuError VolumeFileSystemFlags(const std::string& path, DWORD& flags) {
  constexpr const char* kFunction = "FXPlatform::VolumeFileSystemFlags";
  std::string posix, resolved;
  CZuError result = ToPosix(kFunction, path, posix);
  if (!result.IsError()) result = NearestExisting(kFunction, posix, resolved);
  if (result.IsError()) return result;
  struct statvfs vfs;
  if (::statvfs(resolved.c_str(), &vfs) != 0) return SystemFailure(kFunction, "statvfs", resolved);
  flags = kCaseSensitiveSearch | kCasePreservedNames | ((vfs.f_flag & ST_RDONLY) != 0 ? kReadOnlyVolume : 0);
  return result;
}

CZuError SameVolume(const std::string& a, const std::string& b, bool& same) {
  struct stat stA, stB;
  CZuError result = StatNearest("FXPlatform::SameVolume", a, stA);
  if (!result.IsError()) result = StatNearest("FXPlatform::SameVolume", b, stB);
  if (!result.IsError()) same = stA.st_dev == stB.st_dev;
  return result;
}

CZuError DriveLetterForMountPath(const std::string& path, char& letter) {
  constexpr const char* kFunction = "FXPlatform::DriveLetterForMountPath";
  std::string posix;
  CZuError result = ToPosix(kFunction, path, posix);
  if (result.IsError()) return result;
  struct stat st, root;
  if (::stat(posix.c_str(), &st) != 0) return SystemFailure(kFunction, "stat", posix);
  if (::stat("/", &root) != 0) return SystemFailure(kFunction, "stat", "/");
  if (st.st_dev != root.st_dev) return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_NOT_FOUND);
  letter = 'Z';
  return result;
}

CZuError FileIdentity(const std::string& path, TFileIdentity& identity) {
  constexpr const char* kFunction = "FXPlatform::FileIdentity";
  std::string posix;
  CZuError result = ToPosix(kFunction, path, posix);
  if (result.IsError()) return result;
  struct stat st;
  if (::stat(posix.c_str(), &st) != 0) return SystemFailure(kFunction, "stat", posix);
  identity.volumeSerial = FoldDevice(st.st_dev);
  identity.fileId = static_cast<unsigned long long>(st.st_ino);
  return result;
}

std::vector<std::string> SystemFolders() {
  return {"Z:\\bin",  "Z:\\boot",   "Z:\\dev",  "Z:\\etc",  "Z:\\lib", "Z:\\lib32",
          "Z:\\lib64", "Z:\\libx32", "Z:\\proc", "Z:\\sbin", "Z:\\sys", "Z:\\usr"};
}

CZuError IsNfs(const std::string& path, bool& nfs) {
  constexpr const char* kFunction = "FXPlatform::IsNfs";
  std::string posix;
  CZuError result = ToPosix(kFunction, path, posix);
  if (result.IsError()) return result;
  struct statfs fs;
  if (::statfs(posix.c_str(), &fs) != 0) return SystemFailure(kFunction, "statfs", posix);
  nfs = static_cast<long>(fs.f_type) == kNfsSuperMagic;
  return result;
}

CZuError SetDeletePermission(const std::string& path, bool grant) {
  constexpr const char* kFunction = "FXPlatform::SetDeletePermission";
  std::string posix;
  CZuError result = ToPosix(kFunction, path, posix);
  if (result.IsError()) return result;
  const std::size_t slash = posix.find_last_of('/', posix.size() > 1 ? posix.size() - 2 : 0);
  const std::string parent = slash == 0 || slash == std::string::npos ? "/" : posix.substr(0, slash);
  struct stat st;
  if (::lstat(posix.c_str(), &st) != 0) return SystemFailure(kFunction, "lstat", posix);
  if (::stat(parent.c_str(), &st) != 0) return SystemFailure(kFunction, "stat", parent);
  const mode_t mode = grant ? (st.st_mode | S_IWUSR | S_IXUSR) : (st.st_mode & ~S_IWUSR);
  if (::chmod(parent.c_str(), mode & 07777) != 0) return SystemFailure(kFunction, "chmod", parent);
  return result;
}

}  // namespace FXPlatform
