// A file read or written through a handle, in the manner of CreateFile,
// ReadFile and WriteFile: what CTextFile and the INI writer stand on.
//
// Paths are UTF-8. Windows opens them through the wide API; a path of 248
// characters or more (near MAX_PATH) is made absolute and given the "\\?\"
// (or "\\?\UNC\") prefix, so that long paths open too. POSIX maps the drive
// form "Z:\..." (the whole file system, as wine shows it) to "/...";
// every other path is used as it is. Failures carry the Win32 code on both
// platforms (the errno beneath it on POSIX).
#pragma once

#include <cstddef>
#include <string>

#include "ZuUtilsExport.h"
#include "platform/SystemError.h"

namespace FXPlatform {

enum class EPlainFileOpen {
  kReadExisting,  // generic read, shared for reading, open existing
  kCreateAlways,  // generic write, created or truncated
  kOpenAlways     // generic write, opened or created
};

class ZUUTILS_API CPlainFile {
 public:
  CPlainFile() = default;
  ~CPlainFile() { Close(); }
  CPlainFile(const CPlainFile&) = delete;
  CPlainFile& operator=(const CPlainFile&) = delete;

  TSystemError Open(const std::string& path, EPlainFileOpen how);
  bool IsOpen() const;
  // Reads up to `size` bytes; 0 bytes read is the end of the file.
  TSystemError Read(void* buffer, std::size_t size, std::size_t& read);
  TSystemError Write(const void* data, std::size_t size);
  // Moves to the offset from the start, or to the end.
  TSystemError Seek(long long offset);
  TSystemError SeekToEnd();
  TSystemError GetSize(long long& size) const;
  TSystemError GetPosition(long long& position) const;
  // Makes what was written durable (before a rename that publishes it).
  TSystemError Sync();
  void Close();

 private:
  void* m_handle = nullptr;  // the file handle on Windows
  int m_fd = -1;             // the descriptor elsewhere
};

// Replaces `target` by `source` in one step: readers see the old or the new
// file, never a part of either (rename on POSIX, MoveFileEx with
// MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH on Windows).
ZUUTILS_API TSystemError ReplaceFileAtomically(const std::string& source, const std::string& target);

}  // namespace FXPlatform
