// The running process, its machine, and child processes.
#pragma once

#include <string>
#include <vector>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

namespace FXPlatform {

// Both are right in a child made by fork() too.
ZUUTILS_API unsigned long CurrentProcessId();
// GetCurrentThreadId() on Windows, the kernel's thread id (gettid) on Linux:
// the number that tools such as ps and top show, not a pthread_t.
ZUUTILS_API unsigned long CurrentThreadId();

// The full path of the running program.
ZUUTILS_API std::string ExecutablePath();
// The machine's network name; empty when it cannot be read.
ZUUTILS_API std::string HostName();
// The operating system's name and version, such as "Windows 10.0.19045" or
// "Linux 6.1.0-18-amd64 x86_64".
ZUUTILS_API std::string OperatingSystemText();

// A program started by this one. The destructor kills a child that is still
// running and collects it, so no child outlives its object unnoticed.
class ZUUTILS_API CChildProcess {
 public:
  CChildProcess() = default;
  ~CChildProcess();
  CChildProcess(const CChildProcess&) = delete;
  CChildProcess& operator=(const CChildProcess&) = delete;

  // Starts `program` (a path, not searched for) with the arguments, which
  // reach the child exactly as given (quoted for Windows as its C runtime
  // splits command lines). The child inherits the environment.
  CZuError Start(const std::string& program, const std::vector<std::string>& arguments);
  // Starts a whole command line, program first, as CreateProcessW takes it
  // (the program is searched as Windows searches it, on POSIX along PATH).
  // On POSIX the line is split at blanks by FXString::SplitArguments, so a
  // double-quoted token keeps its blanks, and its enclosing quotes are
  // removed; there are no escapes. A user token (Windows: a primary token
  // for CreateProcessAsUserW) may be null; POSIX has none to take and fails
  // a non-null one with ERROR_NOT_SUPPORTED.
  CZuError StartCommandLine(const std::wstring& commandLine, void* userToken);
  // Waits for the child to end. A child killed by a signal reports 128 plus
  // the signal number, as shells do.
  CZuError Wait(int& exitCode);
  // As Wait for at most `milliseconds` (INFINITE: no limit); false, with the
  // child still running, when the time passed first.
  bool WaitFor(unsigned long milliseconds, int& exitCode, CZuError& result);
  // Lets the child run on unobserved: the object forgets it (POSIX collects
  // it in the background, so that it leaves no zombie).
  void Detach();
  // The process handle on Windows, the process id cast to a pointer on
  // POSIX; null when no child is held.
  void* NativeHandle() const;
  // Kills the child at once (TerminateProcess, SIGKILL); Wait collects it.
  CZuError Kill();
  bool IsStarted() const;

 private:
  void* m_handle = nullptr;  // the process handle on Windows
  long long m_pid = -1;      // the process id elsewhere
};

}  // namespace FXPlatform
