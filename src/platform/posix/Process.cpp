#include "platform/Process.h"

#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "text/StringAlgo.h"
#include "text/StringConvert.h"

extern char** environ;

namespace FXPlatform {

namespace {

// Both ids are system calls, so they are kept once read. A child made by
// fork() starts with its parent's copies: the child's handler counts a new
// generation, and a copy of another generation is read afresh.
std::atomic<unsigned long> g_forkGeneration{0};
std::atomic<long> g_processId{0};

void AfterForkInChild() {
  g_processId.store(0, std::memory_order_relaxed);
  g_forkGeneration.fetch_add(1, std::memory_order_relaxed);
}

[[maybe_unused]] const int g_atForkRegistered = ::pthread_atfork(nullptr, nullptr, &AfterForkInChild);

}  // namespace

unsigned long CurrentProcessId() {
  long id = g_processId.load(std::memory_order_relaxed);
  if (id == 0) {
    id = static_cast<long>(::getpid());
    g_processId.store(id, std::memory_order_relaxed);
  }
  return static_cast<unsigned long>(id);
}

unsigned long CurrentThreadId() {
  thread_local unsigned long id = 0;
  thread_local unsigned long generation = 0;
  const unsigned long current = g_forkGeneration.load(std::memory_order_relaxed);
  if (id == 0 || generation != current) {
    id = static_cast<unsigned long>(::gettid());
    generation = current;
  }
  return id;
}

std::string ExecutablePath() {
  char buffer[4096];
  const ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer);
  return n > 0 ? std::string(buffer, static_cast<std::size_t>(n)) : std::string();
}

std::string HostName() {
  char buffer[256] = {};
  if (::gethostname(buffer, sizeof buffer - 1) != 0) return std::string();
  return buffer;
}

std::string OperatingSystemText() {
  struct utsname name;
  if (::uname(&name) != 0) return "Linux";
  return std::string(name.sysname) + " " + name.release + " " + name.machine;
}

CChildProcess::~CChildProcess() {
  if (m_pid > 0) {
    ::kill(static_cast<pid_t>(m_pid), SIGKILL);
    int status = 0;
    ::waitpid(static_cast<pid_t>(m_pid), &status, 0);
  }
}

CZuError CChildProcess::Start(const std::string& program, const std::vector<std::string>& arguments) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::Start");
  if (m_pid > 0) return FXErrorUtil::ErrorWin32(here, ERROR_ALREADY_ASSIGNED, "%s", program.c_str());
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(program.c_str()));
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t pid = 0;
  const int rc = ::posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv.data(), environ);
  if (rc != 0) return ErrorFromSystem(here, FromErrno(rc)).Push(here, "%s", program.c_str());
  m_pid = pid;
  return CZuError::Success();
}

CZuError CChildProcess::StartCommandLine(const std::wstring& commandLine, void* userToken) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::StartCommandLine");
  const std::string line = FXString::ToString(commandLine);
  if (m_pid > 0) return FXErrorUtil::ErrorWin32(here, ERROR_ALREADY_ASSIGNED, "%s", line.c_str());
  if (userToken != nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_NOT_SUPPORTED, "%s", line.c_str());
  std::vector<std::string> tokens;
  FXString::SplitArguments(line, " ", tokens, FXString::kSplitMergeDelimiters);
  std::vector<char*> argv;
  for (std::string& token : tokens) {
    if (token.empty()) continue;
    if (token.size() >= 2 && token.front() == '"' && token.back() == '"') token = token.substr(1, token.size() - 2);
    argv.push_back(&token[0]);
  }
  if (argv.empty()) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "Empty command line");
  argv.push_back(nullptr);
  pid_t pid = 0;
  const int rc = ::posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ);
  if (rc != 0) return ErrorFromSystem(here, FromErrno(rc)).Push(here, "%s", line.c_str());
  m_pid = pid;
  return CZuError::Success();
}

bool CChildProcess::WaitFor(unsigned long milliseconds, int& exitCode, CZuError& result) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::WaitFor");
  if (milliseconds == 0xFFFFFFFFul || m_pid <= 0) {
    result = Wait(exitCode);
    return true;
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  // A pidfd turns the child's end into something poll can wait for; where
  // the kernel has none, short naps stand in.
  const int pidfd = static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(m_pid), 0));
  bool ended = false;
  for (;;) {
    int status = 0;
    const pid_t rc = ::waitpid(static_cast<pid_t>(m_pid), &status, WNOHANG);
    if (rc > 0) {
      m_pid = -1;
      exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      result = CZuError::Success();
      ended = true;
      break;
    }
    if (rc < 0 && errno != EINTR) {
      result = ErrorFromSystem(here, LastSystemError());
      ended = true;
      break;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    if (pidfd >= 0) {
      pollfd entry = {pidfd, POLLIN, 0};
      ::poll(&entry, 1, static_cast<int>(left.count() < 1000 ? left.count() : 1000));
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(left.count() < 2 ? left.count() : 2));
    }
  }
  if (pidfd >= 0) ::close(pidfd);
  return ended;
}

void CChildProcess::Detach() {
  if (m_pid <= 0) return;
  const pid_t pid = static_cast<pid_t>(m_pid);
  m_pid = -1;
  std::thread([pid] {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
  }).detach();
}

void* CChildProcess::NativeHandle() const {
  return m_pid > 0 ? reinterpret_cast<void*>(static_cast<std::intptr_t>(m_pid)) : nullptr;
}

CZuError CChildProcess::Wait(int& exitCode) {
  const FXCodeLocation here = ZU_HERE("CChildProcess::Wait");
  if (m_pid <= 0) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  int status = 0;
  pid_t rc;
  do {
    rc = ::waitpid(static_cast<pid_t>(m_pid), &status, 0);
  } while (rc < 0 && errno == EINTR);
  if (rc < 0) return ErrorFromSystem(here, LastSystemError());
  m_pid = -1;
  exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return CZuError::Success();
}

CZuError CChildProcess::Kill() {
  const FXCodeLocation here = ZU_HERE("CChildProcess::Kill");
  if (m_pid <= 0) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  if (::kill(static_cast<pid_t>(m_pid), SIGKILL) != 0) return ErrorFromSystem(here, LastSystemError());
  return CZuError::Success();
}

bool CChildProcess::IsStarted() const { return m_pid > 0; }

}  // namespace FXPlatform
