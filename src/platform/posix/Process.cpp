#include "platform/Process.h"

#include <cerrno>
#include <csignal>
#include <pthread.h>
#include <spawn.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"

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
