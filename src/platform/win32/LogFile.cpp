#include "platform/LogFile.h"

#include <windows.h>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

HANDLE AsHandle(void* handle) { return static_cast<HANDLE>(handle); }

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Append access only: every write goes to the end of the file, whatever
// another process appended since. Reading serves the last byte after a
// writer died mid-line; delete sharing lets another process rename the file
// while it is open here.
HANDLE OpenForAppend(const std::wstring& path) {
  return ::CreateFileW(path.c_str(), FILE_APPEND_DATA | FILE_READ_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                       kShareAll, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Volume serial number and file index: the file's identity.
bool Identity(HANDLE handle, unsigned long long (&out)[2]) {
  BY_HANDLE_FILE_INFORMATION info;
  if (!::GetFileInformationByHandle(handle, &info)) return false;
  out[0] = info.dwVolumeSerialNumber;
  out[1] = (static_cast<unsigned long long>(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
  return true;
}

// Whether the file at the path is the one with that identity.
bool IsFileAt(const std::wstring& path, const unsigned long long (&identity)[2]) {
  const HANDLE handle = ::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  unsigned long long atPath[2];
  const bool same = Identity(handle, atPath) && atPath[0] == identity[0] && atPath[1] == identity[1];
  ::CloseHandle(handle);
  return same;
}

}  // namespace

CZuError CLogFile::Open(const std::string& path, CProcessLock&) {
  const FXCodeLocation here = ZU_HERE("CLogFile::Open");
  // Renamed, replaced or deleted by another process? Then the path names
  // another file (or none).
  if (m_handle != nullptr && m_path == path && IsFileAt(m_widePath, m_identity)) return CZuError::Success();
  Close();
  if (m_path != path) {
    m_path = path;
    m_widePath = Widen(path);
  }
  const HANDLE handle = OpenForAppend(m_widePath);
  if (handle == INVALID_HANDLE_VALUE) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", path.c_str());
  if (!Identity(handle, m_identity)) {
    const TSystemError error = LastSystemError();
    ::CloseHandle(handle);
    return ErrorFromSystem(here, error).Push(here, "%s", path.c_str());
  }
  m_handle = handle;
  return CZuError::Success();
}

bool CLogFile::IsOpen() const { return m_handle != nullptr; }

CZuError CLogFile::SeekToEnd(unsigned long long& offset) {
  const FXCodeLocation here = ZU_HERE("CLogFile::SeekToEnd");
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  LARGE_INTEGER zero, position;
  zero.QuadPart = 0;
  if (!::SetFilePointerEx(AsHandle(m_handle), zero, &position, FILE_END))
    return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", m_path.c_str());
  offset = static_cast<unsigned long long>(position.QuadPart);
  return CZuError::Success();
}

CZuError CLogFile::Write(const char* data, std::size_t size) {
  const FXCodeLocation here = ZU_HERE("CLogFile::Write");
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  while (size > 0) {
    const DWORD chunk = size > 0x40000000 ? 0x40000000 : static_cast<DWORD>(size);
    DWORD written = 0;
    if (!::WriteFile(AsHandle(m_handle), data, chunk, &written, nullptr))
      return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", m_path.c_str());
    data += written;
    size -= written;
  }
  return CZuError::Success();
}

CZuError CLogFile::GetSize(unsigned long long& size) {
  const FXCodeLocation here = ZU_HERE("CLogFile::GetSize");
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  LARGE_INTEGER value;
  if (!::GetFileSizeEx(AsHandle(m_handle), &value))
    return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", m_path.c_str());
  size = static_cast<unsigned long long>(value.QuadPart);
  return CZuError::Success();
}

bool CLogFile::EndsWithLineFeed(unsigned long long size) {
  if (m_handle == nullptr) return false;
  if (size == 0) return true;
  OVERLAPPED at = {};
  at.Offset = static_cast<DWORD>((size - 1) & 0xFFFFFFFFu);
  at.OffsetHigh = static_cast<DWORD>((size - 1) >> 32);
  char last = 0;
  DWORD read = 0;
  return ::ReadFile(AsHandle(m_handle), &last, 1, &read, &at) && read == 1 && last == '\n';
}

CZuError CLogFile::GetCreationTime(TLocalTime& out) {
  const FXCodeLocation here = ZU_HERE("CLogFile::GetCreationTime");
  if (m_handle == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE);
  FILETIME created;
  if (!::GetFileTime(AsHandle(m_handle), &created, nullptr, nullptr))
    return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", m_path.c_str());
  const unsigned long long ticks =
      (static_cast<unsigned long long>(created.dwHighDateTime) << 32) | created.dwLowDateTime;
  if (ticks == 0 || !LocalTimeOf(static_cast<long long>(ticks / 10000000ULL) - 11644473600LL, out))
    return FXErrorUtil::ErrorWin32(here, ERROR_NOT_SUPPORTED, "%s", m_path.c_str());
  return CZuError::Success();
}

void CLogFile::Replaced(CProcessLock&) { Close(); }

void CLogFile::Close() {
  if (m_handle != nullptr) ::CloseHandle(AsHandle(m_handle));
  m_handle = nullptr;
}

bool CLogFile::CanAppend(const std::string& path) {
  const HANDLE handle = OpenForAppend(Widen(path));
  if (handle == INVALID_HANDLE_VALUE) return false;
  ::CloseHandle(handle);
  return true;
}

}  // namespace FXPlatform
