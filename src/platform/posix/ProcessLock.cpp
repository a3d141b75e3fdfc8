#include "platform/ProcessLock.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"

namespace FXPlatform {

namespace {

// Identifies the layout below; a file left by another layout is refused
// rather than misread.
constexpr std::uint64_t kMagic = 0x315A754C6F636B31ULL;

struct TSharedBlock {
  std::uint64_t magic;
  pthread_mutex_t mutex;
  unsigned long long words[CProcessLock::kSharedWords];
};

constexpr std::size_t kBlockSize = (sizeof(TSharedBlock) + 4095) / 4096 * 4096;

std::string MappedPath(const std::string& name) {
  std::string rest = name;
  for (const char* prefix : {"Global\\", "Local\\"}) {
    const std::size_t n = std::strlen(prefix);
    if (rest.compare(0, n, prefix) == 0) {
      rest.erase(0, n);
      break;
    }
  }
  for (char& c : rest)
    if (c == '/' || c == '\\') c = '_';
  return "/dev/shm/" + rest;
}

TSharedBlock* Block(void* handle) { return static_cast<TSharedBlock*>(handle); }

// Maps an existing lock file; it was complete before it got its name.
CZuError MapExisting(int fd, const std::string& path, void*& out) {
  const FXCodeLocation here = ZU_HERE("CProcessLock::Create");
  struct stat st;
  if (::fstat(fd, &st) != 0) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", path.c_str());
  if (static_cast<std::size_t>(st.st_size) < kBlockSize)
    return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_DATA, "%s is not a lock of this library", path.c_str());
  void* map = ::mmap(nullptr, kBlockSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (map == MAP_FAILED) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", path.c_str());
  if (Block(map)->magic != kMagic) {
    ::munmap(map, kBlockSize);
    return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_DATA, "%s is not a lock of this library", path.c_str());
  }
  out = map;
  return CZuError::Success();
}

// Builds a complete lock under a private name and links it to `path`: a
// process that opens `path` never sees a half-initialised mutex, and when two
// create at once the link of one of them fails and it opens the winner's.
CZuError CreateNew(const std::string& path, bool& lost, void*& out) {
  const FXCodeLocation here = ZU_HERE("CProcessLock::Create");
  static std::atomic<unsigned> counter{0};
  const std::string temp =
      path + "." + std::to_string(::getpid()) + "." + std::to_string(counter.fetch_add(1)) + ".tmp";
  const int fd = ::open(temp.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", temp.c_str());
  void* map = MAP_FAILED;
  CZuError result = CZuError::Success();
  if (::fchmod(fd, 0666) != 0 || ::ftruncate(fd, static_cast<off_t>(kBlockSize)) != 0 ||
      (map = ::mmap(nullptr, kBlockSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0)) == MAP_FAILED) {
    result = ErrorFromSystem(here, LastSystemError()).Push(here, "%s", temp.c_str());
  } else {
    TSharedBlock* block = Block(map);
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    ::pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    ::pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    const int rc = ::pthread_mutex_init(&block->mutex, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
    if (rc != 0) {
      result = ErrorFromSystem(here, FromErrno(rc)).Push(here, "%s", temp.c_str());
    } else {
      block->magic = kMagic;
      if (::link(temp.c_str(), path.c_str()) != 0) {
        if (errno == EEXIST)
          lost = true;
        else
          result = ErrorFromSystem(here, LastSystemError()).Push(here, "%s", path.c_str());
      }
    }
  }
  ::unlink(temp.c_str());
  ::close(fd);
  if (result.IsError() || lost) {
    if (map != MAP_FAILED) ::munmap(map, kBlockSize);
    return result;
  }
  out = map;
  return result;
}

}  // namespace

CZuError CProcessLock::Create(const std::string& name) {
  const FXCodeLocation here = ZU_HERE("CProcessLock::Create");
  Close();
  if (name.empty()) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "the lock has no name");
  const std::string path = MappedPath(name);
  // Another process may create the lock between our open and our link; then
  // the next open finds it. Only a file that keeps vanishing ends the loop.
  for (int attempt = 0; attempt < 100; ++attempt) {
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (fd >= 0) {
      CZuError r = MapExisting(fd, path, m_handle);
      ::close(fd);
      return r;
    }
    if (errno != ENOENT) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", path.c_str());
    bool lost = false;
    CZuError r = CreateNew(path, lost, m_handle);
    if (r.IsError() || !lost) return r;
  }
  return FXErrorUtil::ErrorWin32(here, ERROR_BUSY, "%s keeps vanishing", path.c_str());
}

bool CProcessLock::IsValid() const { return m_handle != nullptr; }

CZuError CProcessLock::Acquire(unsigned long timeoutMs, bool& abandoned) {
  const FXCodeLocation here = ZU_HERE("CProcessLock::Acquire");
  abandoned = false;
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  TSharedBlock* block = Block(m_handle);
  // Uncontended, trylock is one atomic instruction: no clock read.
  int rc = ::pthread_mutex_trylock(&block->mutex);
  if (rc == EBUSY) {
    struct timespec deadline;
    ::clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += static_cast<time_t>(timeoutMs / 1000);
    deadline.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
      deadline.tv_sec += 1;
      deadline.tv_nsec -= 1000000000L;
    }
    rc = ::pthread_mutex_timedlock(&block->mutex, &deadline);
  }
  if (rc == 0) return CZuError::Success();
  if (rc == EOWNERDEAD) {
    ::pthread_mutex_consistent(&block->mutex);
    std::memset(block->words, 0, sizeof block->words);
    abandoned = true;
    return CZuError::Success();
  }
  if (rc == ETIMEDOUT) return FXErrorUtil::ErrorWin32(here, WAIT_TIMEOUT);
  return ErrorFromSystem(here, FromErrno(rc));
}

void CProcessLock::Release() {
  if (m_handle != nullptr) ::pthread_mutex_unlock(&Block(m_handle)->mutex);
}

void CProcessLock::Close() {
  if (m_handle != nullptr) ::munmap(m_handle, kBlockSize);
  m_handle = nullptr;
}

unsigned long long* CProcessLock::SharedWords() const {
  return m_handle != nullptr ? Block(m_handle)->words : nullptr;
}

}  // namespace FXPlatform
