#include "platform/PlainFile.h"
#include "platform/SystemPath.h"

#include <windows.h>

#include "platform/win32/WinString.h"

namespace FXPlatform {

namespace {

TSystemError Ok() { return TSystemError(); }

TSystemError NotOpen() {
  TSystemError error;
  error.win32 = ERROR_INVALID_HANDLE;
  return error;
}

HANDLE AsHandle(void* handle) { return static_cast<HANDLE>(handle); }

// The wide path, in the native long form where the plain form would be cut
// at MAX_PATH.
std::wstring WidePath(const std::string& path) {
  std::wstring wide = Widen(path);
  if (wide.size() < MAX_PATH - 12 || wide.compare(0, 4, L"\\\\?\\") == 0) return wide;
  std::string native;
  return SystemPathOf(path, native).IsError() ? wide : Widen(native);
}

}  // namespace


TSystemError CPlainFile::Open(const std::string& path, EPlainFileOpen how) {
  Close();
  DWORD access = GENERIC_WRITE, share = FILE_SHARE_READ, disposition = OPEN_ALWAYS;
  switch (how) {
    case EPlainFileOpen::kReadExisting: access = GENERIC_READ; disposition = OPEN_EXISTING; break;
    case EPlainFileOpen::kCreateAlways: disposition = CREATE_ALWAYS; break;
    case EPlainFileOpen::kOpenAlways: break;
  }
  const HANDLE handle = ::CreateFileW(WidePath(path).c_str(), access, share, nullptr, disposition,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return LastSystemError();
  m_handle = handle;
  return Ok();
}

bool CPlainFile::IsOpen() const { return m_handle != nullptr; }

TSystemError CPlainFile::Read(void* buffer, std::size_t size, std::size_t& read) {
  read = 0;
  if (m_handle == nullptr) return NotOpen();
  const DWORD chunk = size > 0x40000000 ? 0x40000000 : static_cast<DWORD>(size);
  DWORD got = 0;
  if (!::ReadFile(AsHandle(m_handle), buffer, chunk, &got, nullptr)) return LastSystemError();
  read = got;
  return Ok();
}

TSystemError CPlainFile::Write(const void* data, std::size_t size) {
  if (m_handle == nullptr) return NotOpen();
  const char* p = static_cast<const char*>(data);
  while (size > 0) {
    const DWORD chunk = size > 0x40000000 ? 0x40000000 : static_cast<DWORD>(size);
    DWORD written = 0;
    if (!::WriteFile(AsHandle(m_handle), p, chunk, &written, nullptr)) return LastSystemError();
    p += written;
    size -= written;
  }
  return Ok();
}

TSystemError CPlainFile::Seek(long long offset) {
  if (m_handle == nullptr) return NotOpen();
  LARGE_INTEGER to;
  to.QuadPart = offset;
  return ::SetFilePointerEx(AsHandle(m_handle), to, nullptr, FILE_BEGIN) ? Ok() : LastSystemError();
}

TSystemError CPlainFile::SeekToEnd() {
  if (m_handle == nullptr) return NotOpen();
  LARGE_INTEGER zero;
  zero.QuadPart = 0;
  return ::SetFilePointerEx(AsHandle(m_handle), zero, nullptr, FILE_END) ? Ok() : LastSystemError();
}

TSystemError CPlainFile::GetSize(long long& size) const {
  size = 0;
  if (m_handle == nullptr) return NotOpen();
  LARGE_INTEGER value;
  if (!::GetFileSizeEx(AsHandle(m_handle), &value)) return LastSystemError();
  size = value.QuadPart;
  return Ok();
}

TSystemError CPlainFile::GetPosition(long long& position) const {
  position = 0;
  if (m_handle == nullptr) return NotOpen();
  LARGE_INTEGER zero, at;
  zero.QuadPart = 0;
  if (!::SetFilePointerEx(AsHandle(m_handle), zero, &at, FILE_CURRENT)) return LastSystemError();
  position = at.QuadPart;
  return Ok();
}

TSystemError CPlainFile::Sync() {
  if (m_handle == nullptr) return NotOpen();
  return ::FlushFileBuffers(AsHandle(m_handle)) ? Ok() : LastSystemError();
}

void CPlainFile::Close() {
  if (m_handle != nullptr) ::CloseHandle(AsHandle(m_handle));
  m_handle = nullptr;
}

TSystemError ReplaceFileAtomically(const std::string& source, const std::string& target) {
  return ::MoveFileExW(WidePath(source).c_str(), WidePath(target).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)
             ? Ok()
             : LastSystemError();
}

}  // namespace FXPlatform
