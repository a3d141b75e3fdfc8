// Enumeration of one folder's entries, one record per entry with the fields
// of WIN32_FIND_DATAW, on every platform.
//
// Folders are named in the library's path form: backslashes, and on POSIX
// the whole file system seen as drive Z: (as wine shows it), so
// "Z:\usr\share" and "\\?\Z:\usr\share" are /usr/share. A path that already
// begins with '/' is taken as a POSIX path; a relative one is relative to the
// current folder. Other drives and UNC paths do not exist on POSIX
// (ERROR_PATH_NOT_FOUND).
//
// Windows: FindFirstFileExW(FindExInfoBasic, FIND_FIRST_EX_LARGE_FETCH) on the
// native long form ("\\?\" or "\\?\UNC\" is put in front where missing), so
// folders deeper than MAX_PATH work. FindExInfoBasic leaves the short name
// empty.
//
// POSIX: the folder is opened once; its entries are read in large batches
// (getdents64) and each is described by statx relative to the folder's
// descriptor, so no path is rebuilt per entry. The record is filled as the
// Windows file system would:
//   - a symbolic link is a reparse point (FILE_ATTRIBUTE_REPARSE_POINT, tag
//     IO_REPARSE_TAG_SYMLINK in dwReserved0), with FILE_ATTRIBUTE_DIRECTORY
//     when it leads to a folder (as a Windows directory link carries it); it
//     is never followed otherwise;
//   - a folder has FILE_ATTRIBUTE_DIRECTORY and size 0;
//   - FILE_ATTRIBUTE_READONLY when the owner may not write; FILE_ATTRIBUTE_HIDDEN
//     for names beginning with a dot; FILE_ATTRIBUTE_NORMAL when nothing else;
//   - the creation time is the birth time where the file system keeps one,
//     else the last write time;
//   - no short names.
// A name that is not valid UTF-8 (ERROR_NO_UNICODE_TRANSLATION) or that holds
// a backslash, which the path form cannot carry (ERROR_INVALID_NAME), is a
// failed entry: the caller gets the error and the enumeration goes on. Such
// names are never renamed or dropped silently. An entry deleted between
// listing and describing it is passed over, as if listed a moment later.
//
// Errors carry the nearest Win32 code (on POSIX with the errno item beneath,
// see SystemError.h); the end of the list is ERROR_NO_MORE_FILES.
#pragma once

#include <memory>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/SystemPath.h"
#include "platform/ZuTypes.h"
#include "time/TimeStamp.h"

// WIN32_FIND_DATAW's fields under their own names, with the times as the
// library's time stamps (the same 100-nanosecond units since 1601), the size
// as one 64-bit number and the names in UTF-8. The strings keep their
// capacity when a record is reused, so refilling one record entry after
// entry does not allocate.
struct TFindData {
  DWORD dwFileAttributes = 0;
  CTimeStamp ftCreationTime;
  CTimeStamp ftLastAccessTime;
  CTimeStamp ftLastWriteTime;
  unsigned long long nFileSize = 0;
  DWORD dwReserved0 = 0;  // the reparse tag when FILE_ATTRIBUTE_REPARSE_POINT is set
  std::string cFileName;
  std::string cAlternateFileName;
};

namespace FXPlatform {

// What one step of an enumeration produced.
enum class EFindStep {
  kEntry,        // the record holds the next entry
  kFailedEntry,  // an entry that cannot be described; the error says why and
                 // cFileName shows the name (invalid bytes as \xNN)
  kEnd,          // no more entries (the error is ERROR_NO_MORE_FILES)
  kFailed,       // the enumeration itself failed; nothing more comes
};

// Where a folder's entries come from: the operating system's enumeration
// below, or another source standing in for it (a snapshot, a test's script).
class IFolderSource {
 public:
  virtual ~IFolderSource() = default;
  // Starts on a folder, ending the enumeration before.
  virtual CZuError Open(const std::string& folder) = 0;
  // "." and ".." are not handed out.
  virtual EFindStep Next(TFindData& data, CZuError& error) = 0;
};

class ZUUTILS_API CDirectoryEnum : public IFolderSource {
 public:
  CDirectoryEnum();
  ~CDirectoryEnum() override;
  CDirectoryEnum(const CDirectoryEnum&) = delete;
  CDirectoryEnum& operator=(const CDirectoryEnum&) = delete;

  // The buffers stay with the object, so one enumerator per thread serves
  // any number of folders.
  CZuError Open(const std::string& folder) override;
  EFindStep Next(TFindData& data, CZuError& error) override;
  void Close();

  // Folders opened since construction (successful Open calls).
  unsigned long long OpenCount() const { return m_opened; }

 private:
  struct TState;
  std::unique_ptr<TState> m_state;
  unsigned long long m_opened = 0;
};

}  // namespace FXPlatform
