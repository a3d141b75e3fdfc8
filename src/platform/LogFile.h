// A log file that several processes append to, each under the same
// CProcessLock. Every call but CanAppend is made while holding that lock.
//
// Windows: the file is opened with read, write and delete sharing, so that a
// process can rename it (roll it over) while others keep it open. A process
// that keeps the file open learns that it was renamed by comparing the size
// of its handle with the size of the file at the path.
//
// Linux: the file is opened for appending (O_APPEND), and the lock's shared
// words hold the file's current size and a count of roll-overs. A process
// that keeps the file open therefore appends a line with a single write:
// seek and size come from the shared words, and a changed count tells it
// that another process renamed the file. (A file deleted behind the
// writers' backs is noticed when it is next opened; a process that keeps it
// open goes on writing the deleted file until it closes it.)
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/Clock.h"
#include "platform/ProcessLock.h"

namespace FXPlatform {

class ZUUTILS_API CLogFile {
 public:
  CLogFile() = default;
  ~CLogFile() { Close(); }
  CLogFile(const CLogFile&) = delete;
  CLogFile& operator=(const CLogFile&) = delete;

  // Opens `path` for appending, creating it when missing, unless the file
  // open here is still the one at `path`.
  CZuError Open(const std::string& path, CProcessLock& lock);
  bool IsOpen() const;
  // Moves to the end; `offset` is the file's size before the next write.
  CZuError SeekToEnd(unsigned long long& offset);
  CZuError Write(const char* data, std::size_t size);
  CZuError GetSize(unsigned long long& size);
  // Fails where the file system keeps no creation time.
  CZuError GetCreationTime(TLocalTime& out);
  // After this process renamed the file away: closes it and tells the other
  // holders of the lock that the path now names a new file.
  void Replaced(CProcessLock& lock);
  void Close();

  // Whether this process may append to `path` (which is created when
  // missing, empty, as the logger would create it).
  static bool CanAppend(const std::string& path);

 private:
  void* m_handle = nullptr;  // the file handle on Windows
  int m_fd = -1;             // the descriptor elsewhere
  std::string m_path;
  std::wstring m_widePath;                 // the path for the wide API (Windows)
  unsigned long long* m_shared = nullptr;  // the lock's shared words (Linux)
  unsigned long long m_key = 0;            // which path the shared words describe
  unsigned long long m_generation = 0;     // the roll-over count seen at opening
};

}  // namespace FXPlatform
