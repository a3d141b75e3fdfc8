// A log file that several processes append to, each under the same
// CProcessLock. Every call but CanAppend is made while holding that lock.
//
// Windows: the file is opened for appending only (FILE_APPEND_DATA), so that
// every write lands at the end whatever another process wrote meanwhile,
// with read, write and delete sharing, so that a process can rename it (roll
// it over) while others keep it open. A process that keeps the file open
// learns that it was renamed or replaced by comparing the identity of its
// handle (volume serial number and file index) with the file's at the path.
//
// Linux: the file is opened for appending (O_APPEND), and the lock's shared
// words hold the file's current size and a count of roll-overs. A process
// that keeps the file open therefore appends a line with a single write:
// seek and size come from the shared words, and a changed count tells it
// that another process renamed the file. A file deleted or replaced behind
// the writers' backs (logrotate, an administrator) is noticed before each
// write by comparing the device and inode at the path with the open file's.
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
  // Whether the file of `size` bytes ends with a line feed (or is empty);
  // false also when its last byte cannot be read.
  bool EndsWithLineFeed(unsigned long long size);
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
  // Which file is open: device and inode, or volume serial number and file
  // index.
  unsigned long long m_identity[2] = {};
};

}  // namespace FXPlatform
