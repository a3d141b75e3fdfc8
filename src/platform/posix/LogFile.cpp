#include "platform/LogFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"

namespace FXPlatform {

namespace {

// The lock's shared words, as this file uses them.
enum { kWordKey = 0, kWordGeneration = 1, kWordSize = 2 };

// Which path the words describe: several directories may log under one
// module name and so share one lock. Never 0, the value of fresh words.
unsigned long long PathKey(const std::string& path) {
  unsigned long long hash = 14695981039346656037ULL;  // FNV-1a
  for (const char c : path) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
  return hash | 1;
}

// Readable too, for the last byte after a writer died mid-line.
int OpenForAppend(const std::string& path) {
  return ::open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
}

}  // namespace

CZuError CLogFile::Open(const std::string& path, CProcessLock& lock) {
  const FXCodeLocation here = ZU_HERE("CLogFile::Open");
  unsigned long long* words = lock.SharedWords();
  if (words == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE, "%s", path.c_str());
  const unsigned long long key = PathKey(path);
  if (m_fd >= 0 && m_key == key && words[kWordKey] == key && words[kWordGeneration] == m_generation) {
    // Still the file at the path? A deleted or replaced one would swallow
    // the lines and count its bytes into the new file's shared size.
    struct stat atPath;
    if (::stat(path.c_str(), &atPath) == 0 && static_cast<unsigned long long>(atPath.st_dev) == m_identity[0] &&
        static_cast<unsigned long long>(atPath.st_ino) == m_identity[1])
      return CZuError::Success();
  }
  Close();
  if (m_path != path) m_path = path;
  const int fd = OpenForAppend(path);
  if (fd < 0) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", path.c_str());
  struct stat st;
  if (::fstat(fd, &st) != 0) {
    const TSystemError error = LastSystemError();
    ::close(fd);
    return ErrorFromSystem(here, error).Push(here, "%s", path.c_str());
  }
  words[kWordKey] = key;
  words[kWordSize] = static_cast<unsigned long long>(st.st_size);
  m_fd = fd;
  m_shared = words;
  m_key = key;
  m_identity[0] = static_cast<unsigned long long>(st.st_dev);
  m_identity[1] = static_cast<unsigned long long>(st.st_ino);
  m_generation = words[kWordGeneration];
  return CZuError::Success();
}

bool CLogFile::IsOpen() const { return m_fd >= 0; }

CZuError CLogFile::SeekToEnd(unsigned long long& offset) {
  // O_APPEND writes at the end by itself.
  if (m_fd < 0) return FXErrorUtil::ErrorWin32(ZU_HERE("CLogFile::SeekToEnd"), ERROR_INVALID_HANDLE);
  offset = m_shared[kWordSize];
  return CZuError::Success();
}

CZuError CLogFile::Write(const char* data, std::size_t size) {
  const FXCodeLocation here = ZU_HERE("CLogFile::Write");
  if (m_fd < 0) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  while (size > 0) {
    const ssize_t n = ::write(m_fd, data, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", m_path.c_str());
    }
    m_shared[kWordSize] += static_cast<unsigned long long>(n);
    data += n;
    size -= static_cast<std::size_t>(n);
  }
  return CZuError::Success();
}

CZuError CLogFile::GetSize(unsigned long long& size) {
  if (m_fd < 0) return FXErrorUtil::ErrorWin32(ZU_HERE("CLogFile::GetSize"), ERROR_INVALID_HANDLE);
  size = m_shared[kWordSize];
  return CZuError::Success();
}

bool CLogFile::EndsWithLineFeed(unsigned long long size) {
  if (m_fd < 0) return false;
  if (size == 0) return true;
  char last = 0;
  return ::pread(m_fd, &last, 1, static_cast<off_t>(size - 1)) == 1 && last == '\n';
}

CZuError CLogFile::GetCreationTime(TLocalTime& out) {
  const FXCodeLocation here = ZU_HERE("CLogFile::GetCreationTime");
  if (m_fd < 0) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  struct statx st;
  if (::statx(m_fd, "", AT_EMPTY_PATH, STATX_BTIME, &st) != 0)
    return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", m_path.c_str());
  if ((st.stx_mask & STATX_BTIME) == 0 || !LocalTimeOf(st.stx_btime.tv_sec, out))
    return FXErrorUtil::ErrorWin32(here, ERROR_NOT_SUPPORTED, "%s", m_path.c_str());
  return CZuError::Success();
}

void CLogFile::Replaced(CProcessLock& lock) {
  Close();
  if (unsigned long long* words = lock.SharedWords()) {
    words[kWordGeneration] += 1;
    words[kWordKey] = 0;
  }
}

void CLogFile::Close() {
  if (m_fd >= 0) ::close(m_fd);
  m_fd = -1;
  m_shared = nullptr;
}

bool CLogFile::CanAppend(const std::string& path) {
  const int fd = OpenForAppend(path);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

}  // namespace FXPlatform
