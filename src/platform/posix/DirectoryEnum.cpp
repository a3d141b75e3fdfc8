#include "platform/DirectoryEnum.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <vector>

#include "errors/ErrorUtil.h"
#include "platform/OsFileApi.h"
#include "platform/SystemError.h"
#include "text/UTFCore.h"

namespace FXPlatform {
namespace {

// One getdents64 call fills this much: about 1,000 typical entries, so a
// folder of a few hundred entries is listed with one call.
constexpr std::size_t kBatchBytes = 64 * 1024;

// Where open() would refuse the whole path, folders are opened a piece at a
// time relative to each other.
constexpr std::size_t kOpenPieceBytes = PATH_MAX - 256;

constexpr long long kUnixEpochTicks = 116444736000000000ll;

CTimeStamp ToFileTime(long long seconds, unsigned nanoseconds) {
  return CTimeStamp::FromSystemTime(seconds * 10000000ll + nanoseconds / 100 + kUnixEpochTicks);
}

// Length of the well-formed UTF-8 sequence at text[0], 0 when ill-formed.
std::size_t SequenceLength(const unsigned char* text, std::size_t left) {
  return FXUTFDetail::WellFormedLength(text, text + left);
}

// 0 for a name the path form carries, else the Win32 code saying why not.
DWORD CheckName(const char* name, std::size_t length) {
  const auto* text = reinterpret_cast<const unsigned char*>(name);
  DWORD verdict = 0;
  for (std::size_t at = 0; at < length;) {
    if (text[at] < 0x80) {
      if (text[at] == '\\') verdict = ERROR_INVALID_NAME;
      ++at;
      continue;
    }
    const std::size_t step = SequenceLength(text + at, length - at);
    if (step == 0) return ERROR_NO_UNICODE_TRANSLATION;
    at += step;
  }
  return verdict;
}

// The name with every byte outside a well-formed sequence shown as \xNN.
void ShowName(const char* name, std::size_t length, std::string& shown) {
  const auto* text = reinterpret_cast<const unsigned char*>(name);
  shown.clear();
  for (std::size_t at = 0; at < length;) {
    const std::size_t step = SequenceLength(text + at, length - at);
    if (step == 0) {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", text[at]);
      shown += escaped;
      ++at;
    } else {
      shown.append(name + at, step);
      at += step;
    }
  }
}

// statx where the kernel has it (it knows the birth time), else fstatat.
std::atomic<bool> g_noStatx{false};

struct TEntryStat {
  mode_t mode = 0;
  unsigned long long size = 0;
  CTimeStamp created, accessed, written;
};

bool DescribeEntry(int folder, const char* name, int flags, TEntryStat& out) {
  if (!g_noStatx.load(std::memory_order_relaxed)) {
    struct statx sx;
    const unsigned mask = STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_ATIME | STATX_MTIME | STATX_BTIME;
    if (::statx(folder, name, flags | AT_NO_AUTOMOUNT, mask, &sx) == 0) {
      out.mode = sx.stx_mode;
      out.size = sx.stx_size;
      out.accessed = ToFileTime(sx.stx_atime.tv_sec, sx.stx_atime.tv_nsec);
      out.written = ToFileTime(sx.stx_mtime.tv_sec, sx.stx_mtime.tv_nsec);
      out.created = (sx.stx_mask & STATX_BTIME) ? ToFileTime(sx.stx_btime.tv_sec, sx.stx_btime.tv_nsec) : out.written;
      return true;
    }
    if (errno != ENOSYS) return false;
    g_noStatx.store(true, std::memory_order_relaxed);
  }
  struct stat st;
  if (::fstatat(folder, name, &st, flags) != 0) return false;
  out.mode = st.st_mode;
  out.size = static_cast<unsigned long long>(st.st_size);
  out.accessed = ToFileTime(st.st_atim.tv_sec, static_cast<unsigned>(st.st_atim.tv_nsec));
  out.written = ToFileTime(st.st_mtim.tv_sec, static_cast<unsigned>(st.st_mtim.tv_nsec));
  out.created = out.written;
  return true;
}

// open() of a folder whose path may be longer than the system takes in one
// call: the path is then walked in pieces that end at a separator.
int OpenFolder(const std::string& path) {
  const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  if (path.size() < kOpenPieceBytes) return ::open(path.c_str(), flags);
  int at = path[0] == '/' ? ::open("/", flags) : AT_FDCWD;
  if (at == -1) return -1;
  std::size_t begin = path[0] == '/' ? 1 : 0;
  std::string piece;
  while (begin < path.size()) {
    std::size_t end = path.size();
    if (end - begin >= kOpenPieceBytes) {
      end = path.rfind('/', begin + kOpenPieceBytes);
      if (end == std::string::npos || end <= begin) {
        // One component longer than a piece: the system refuses it anyway.
        if (at != AT_FDCWD) ::close(at);
        errno = ENAMETOOLONG;
        return -1;
      }
    }
    piece.assign(path, begin, end - begin);
    const int next = ::openat(at, piece.c_str(), flags);
    const int saved = errno;
    if (at != AT_FDCWD) ::close(at);
    if (next == -1) {
      errno = saved;
      return -1;
    }
    at = next;
    begin = end + 1;
  }
  return at;
}

}  // namespace

struct CDirectoryEnum::TState {
  int fd = -1;
  bool exhausted = false;
  std::size_t at = 0;
  std::size_t end = 0;
  std::vector<char> batch = std::vector<char>(kBatchBytes);
  std::string path;  // the POSIX path of the folder, for messages
  std::string shown;
};

CDirectoryEnum::CDirectoryEnum() : m_state(new TState) {}

CDirectoryEnum::~CDirectoryEnum() { Close(); }

void CDirectoryEnum::Close() {
  if (m_state->fd != -1) ::close(m_state->fd);
  m_state->fd = -1;
}

CZuError CDirectoryEnum::Open(const std::string& folder) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::CDirectoryEnum::Open");
  Close();
  TState& s = *m_state;
  CZuError result = SystemPathOf(folder, s.path);
  if (result.IsError()) return result.Push(here);
  s.fd = OpenFolder(s.path);
  if (s.fd == -1) return ErrorFromSystem(here, LastSystemError()).Push(here, "Folder=[%s]", folder.c_str());
  s.exhausted = false;
  s.at = s.end = 0;
  ++m_opened;
  return CZuError::Success();
}

EFindStep CDirectoryEnum::Next(TFindData& data, CZuError& error) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::CDirectoryEnum::Next");
  TState& s = *m_state;
  for (;;) {
    if (s.at >= s.end) {
      if (s.exhausted || s.fd == -1) {
        error = FXErrorUtil::ErrorWin32(here, ERROR_NO_MORE_FILES);
        return EFindStep::kEnd;
      }
      const ssize_t n = ::getdents64(s.fd, s.batch.data(), s.batch.size());
      if (n < 0) {
        error = ErrorFromSystem(here, LastSystemError()).Push(here, "Folder=[%s]", s.path.c_str());
        s.exhausted = true;
        return EFindStep::kFailed;
      }
      if (n == 0) {
        s.exhausted = true;
        continue;
      }
      s.at = 0;
      s.end = static_cast<std::size_t>(n);
    }
    // struct linux_dirent64: d_ino (8), d_off (8), d_reclen (2), d_type (1), d_name.
    const char* record = s.batch.data() + s.at;
    unsigned short recordLength;
    std::memcpy(&recordLength, record + 16, sizeof recordLength);
    s.at += recordLength;
    const char* name = record + 19;
    if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) continue;
    const std::size_t length = std::strlen(name);

    const DWORD badName = CheckName(name, length);
    if (badName != 0) {
      ShowName(name, length, data.cFileName);
      data.cAlternateFileName.clear();
      error = FXErrorUtil::ErrorWin32(here, badName,
                                      badName == ERROR_INVALID_NAME
                                          ? "The name holds a backslash, which a path cannot carry, Name=[%s], Folder=[%s]"
                                          : "The name is not valid UTF-8, Name=[%s], Folder=[%s]",
                                      data.cFileName.c_str(), s.path.c_str());
      return EFindStep::kFailedEntry;
    }

    TEntryStat st;
    if (!DescribeEntry(s.fd, name, AT_SYMLINK_NOFOLLOW, st)) {
      if (errno == ENOENT) continue;  // deleted since it was listed
      const TSystemError failure = LastSystemError();
      data.cFileName.assign(name, length);
      data.cAlternateFileName.clear();
      error = ErrorFromSystem(here, failure).Push(here, "Name=[%s], Folder=[%s]", name, s.path.c_str());
      return EFindStep::kFailedEntry;
    }

    DWORD attributes = 0;
    data.dwReserved0 = 0;
    if (S_ISLNK(st.mode)) {
      attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
      data.dwReserved0 = IO_REPARSE_TAG_SYMLINK;
      struct stat target;
      if (::fstatat(s.fd, name, &target, 0) == 0 && S_ISDIR(target.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
    } else if (S_ISDIR(st.mode)) {
      attributes |= FILE_ATTRIBUTE_DIRECTORY;
    }
    // Folders too, as wine shows them: one tree reads the same in both builds.
    if ((st.mode & S_IWUSR) == 0) attributes |= FILE_ATTRIBUTE_READONLY;
    if (name[0] == '.') attributes |= FILE_ATTRIBUTE_HIDDEN;
    data.dwFileAttributes = attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
    data.ftCreationTime = st.created;
    data.ftLastAccessTime = st.accessed;
    data.ftLastWriteTime = st.written;
    data.nFileSize = (attributes & FILE_ATTRIBUTE_DIRECTORY) ? 0 : st.size;
    data.cFileName.assign(name, length);
    data.cAlternateFileName.clear();
    return EFindStep::kEntry;
  }
}

}  // namespace FXPlatform
