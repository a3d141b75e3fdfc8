// A lock that every process of the machine finds by its name.
//
// Windows: a named mutex (CreateMutex, not initially owned; "Global\" names
// are seen by every session). Its access list lets every user wait on it and
// release it, so agents running under different accounts share it.
//
// Linux: a robust, process-shared pthread mutex in a small shared-memory
// file. A name is mapped as follows: a leading "Global\" or "Local\" is
// dropped (/dev/shm is machine-wide either way), every '/' and '\' of the
// rest becomes '_', and the file is /dev/shm/<rest>; "Global\ZuLogger_Agent"
// is /dev/shm/ZuLogger_Agent. The file is created with mode 0666 whatever the
// umask, so other users' processes can take the lock too. An uncontended
// acquire or release makes no system call.
//
// Both release the lock when its holder dies: the next Acquire succeeds and
// reports the lock as abandoned (WAIT_ABANDONED, EOWNERDEAD).
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {

class ZUUTILS_API CProcessLock {
 public:
  // The number of words SharedWords() gives.
  static constexpr int kSharedWords = 8;

  CProcessLock() = default;
  ~CProcessLock() { Close(); }
  CProcessLock(const CProcessLock&) = delete;
  CProcessLock& operator=(const CProcessLock&) = delete;

  // Creates the lock, or opens it when another process created it first.
  CZuError Create(const std::string& name);
  bool IsValid() const;

  // Waits at most `timeoutMs` milliseconds. Success also when the previous
  // holder died holding the lock; `abandoned` tells. A timeout fails with
  // Win32 WAIT_TIMEOUT (258).
  CZuError Acquire(unsigned long timeoutMs, bool& abandoned);
  void Release();
  void Close();

  // Memory shared by every holder of the lock, to be read and written only
  // while holding it: kSharedWords words, zero when the lock is created and
  // zeroed again when a holder died holding it (it may have left them half
  // written). Null on Windows, whose named mutexes carry no memory.
  unsigned long long* SharedWords() const;

 private:
  void* m_handle = nullptr;  // the mutex handle, or the mapped block
};

}  // namespace FXPlatform
