#include "platform/LogFile.h"

#include <windows.h>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

HANDLE AsHandle(void* handle) { return static_cast<HANDLE>(handle); }

// Delete sharing lets another process rename the file while it is open here.
HANDLE OpenForAppend(const std::wstring& path) {
  return ::CreateFileW(path.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

CZuError CLogFile::Open(const std::string& path, CProcessLock&) {
  const FXCodeLocation here = ZU_HERE("CLogFile::Open");
  if (m_handle != nullptr && m_path == path) {
    // Renamed by another process? Then the path names another file, and
    // that file has a size of its own: a renamed file has reached the size
    // limit, the new one has not.
    WIN32_FILE_ATTRIBUTE_DATA data;
    LARGE_INTEGER mine;
    if (::GetFileAttributesExW(m_widePath.c_str(), GetFileExInfoStandard, &data) &&
        ::GetFileSizeEx(AsHandle(m_handle), &mine) &&
        ((static_cast<unsigned long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow) ==
            static_cast<unsigned long long>(mine.QuadPart))
      return CZuError::Success();
  }
  Close();
  if (m_path != path) {
    m_path = path;
    m_widePath = Widen(path);
  }
  const HANDLE handle = OpenForAppend(m_widePath);
  if (handle == INVALID_HANDLE_VALUE) return ErrorFromSystem(here, LastSystemError()).Push(here, "%s", path.c_str());
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
