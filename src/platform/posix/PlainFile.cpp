#include "platform/PlainFile.h"
#include "platform/SystemPath.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace FXPlatform {

namespace {

TSystemError Ok() { return TSystemError(); }

TSystemError NotOpen() {
  TSystemError error = FromErrno(EBADF);
  return error;
}

// The POSIX path, or the error a path of another drive gets.
bool PosixPath(const std::string& path, std::string& posix, TSystemError& error) {
  if (!SystemPathOf(path, posix).IsError()) return true;
  error = FromErrno(ENOENT);
  error.win32 = ERROR_PATH_NOT_FOUND;
  return false;
}

}  // namespace

TSystemError CPlainFile::Open(const std::string& path, EPlainFileOpen how) {
  Close();
  int flags = O_CLOEXEC;
  switch (how) {
    case EPlainFileOpen::kReadExisting: flags |= O_RDONLY; break;
    case EPlainFileOpen::kCreateAlways: flags |= O_WRONLY | O_CREAT | O_TRUNC; break;
    case EPlainFileOpen::kOpenAlways: flags |= O_WRONLY | O_CREAT; break;
  }
  std::string posix;
  TSystemError error;
  if (!PosixPath(path, posix, error)) return error;
  const int fd = ::open(posix.c_str(), flags, 0666);
  if (fd < 0) return LastSystemError();
  m_fd = fd;
  return Ok();
}

bool CPlainFile::IsOpen() const { return m_fd >= 0; }

TSystemError CPlainFile::Read(void* buffer, std::size_t size, std::size_t& read) {
  read = 0;
  if (m_fd < 0) return NotOpen();
  for (;;) {
    const ssize_t n = ::read(m_fd, buffer, size);
    if (n >= 0) {
      read = static_cast<std::size_t>(n);
      return Ok();
    }
    if (errno != EINTR) return LastSystemError();
  }
}

TSystemError CPlainFile::Write(const void* data, std::size_t size) {
  if (m_fd < 0) return NotOpen();
  const char* p = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t n = ::write(m_fd, p, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return LastSystemError();
    }
    p += n;
    size -= static_cast<std::size_t>(n);
  }
  return Ok();
}

TSystemError CPlainFile::Seek(long long offset) {
  if (m_fd < 0) return NotOpen();
  return ::lseek(m_fd, static_cast<off_t>(offset), SEEK_SET) < 0 ? LastSystemError() : Ok();
}

TSystemError CPlainFile::SeekToEnd() {
  if (m_fd < 0) return NotOpen();
  return ::lseek(m_fd, 0, SEEK_END) < 0 ? LastSystemError() : Ok();
}

TSystemError CPlainFile::GetSize(long long& size) const {
  size = 0;
  if (m_fd < 0) return NotOpen();
  struct stat st;
  if (::fstat(m_fd, &st) != 0) return LastSystemError();
  size = static_cast<long long>(st.st_size);
  return Ok();
}

TSystemError CPlainFile::GetPosition(long long& position) const {
  position = 0;
  if (m_fd < 0) return NotOpen();
  const off_t at = ::lseek(m_fd, 0, SEEK_CUR);
  if (at < 0) return LastSystemError();
  position = static_cast<long long>(at);
  return Ok();
}

TSystemError CPlainFile::Sync() {
  if (m_fd < 0) return NotOpen();
  return ::fsync(m_fd) != 0 ? LastSystemError() : Ok();
}

void CPlainFile::Close() {
  if (m_fd >= 0) ::close(m_fd);
  m_fd = -1;
}

TSystemError ReplaceFileAtomically(const std::string& source, const std::string& target) {
  std::string from, to;
  TSystemError error;
  if (!PosixPath(source, from, error) || !PosixPath(target, to, error)) return error;
  return std::rename(from.c_str(), to.c_str()) != 0 ? LastSystemError() : TSystemError();
}

}  // namespace FXPlatform
