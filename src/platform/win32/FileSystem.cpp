#include "platform/FileSystem.h"

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {

std::string TempDirectory() {
  wchar_t buffer[MAX_PATH + 2];
  const DWORD n = ::GetTempPathW(MAX_PATH + 1, buffer);
  if (n == 0 || n > MAX_PATH + 1) return ".\\";
  return Narrow(std::wstring(buffer, n));
}

bool PathExists(const std::string& path) {
  return ::GetFileAttributesW(Widen(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsDirectory(const std::string& path) {
  const DWORD attributes = ::GetFileAttributesW(Widen(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

CZuError CreateOneDirectory(const std::string& path) {
  if (::CreateDirectoryW(Widen(path).c_str(), nullptr)) return CZuError::Success();
  const TSystemError error = LastSystemError();
  if (error.win32 == ERROR_ALREADY_EXISTS && IsDirectory(path)) return CZuError::Success();
  return ErrorFromSystem(ZU_HERE("FXPlatform::CreateOneDirectory"), error)
      .Push(ZU_HERE("FXPlatform::CreateOneDirectory"), "%s", path.c_str());
}

CZuError MoveFileNoReplace(const std::string& from, const std::string& to) {
  if (::MoveFileExW(Widen(from).c_str(), Widen(to).c_str(), 0)) return CZuError::Success();
  return ErrorFromSystem(ZU_HERE("FXPlatform::MoveFileNoReplace"), LastSystemError())
      .Push(ZU_HERE("FXPlatform::MoveFileNoReplace"), "%s -> %s", from.c_str(), to.c_str());
}

CZuError DeleteFileAt(const std::string& path) {
  if (::DeleteFileW(Widen(path).c_str())) return CZuError::Success();
  return ErrorFromSystem(ZU_HERE("FXPlatform::DeleteFileAt"), LastSystemError())
      .Push(ZU_HERE("FXPlatform::DeleteFileAt"), "%s", path.c_str());
}

CZuError ListDirectory(const std::string& path, std::vector<std::string>& names) {
  names.clear();
  std::string pattern = path;
  if (!pattern.empty() && pattern.back() != '\\' && pattern.back() != '/') pattern += '\\';
  pattern += '*';
  WIN32_FIND_DATAW data;
  const HANDLE find = ::FindFirstFileW(Widen(pattern).c_str(), &data);
  if (find == INVALID_HANDLE_VALUE)
    return ErrorFromSystem(ZU_HERE("FXPlatform::ListDirectory"), LastSystemError())
        .Push(ZU_HERE("FXPlatform::ListDirectory"), "%s", path.c_str());
  do {
    const std::wstring name = data.cFileName;
    if (name != L"." && name != L"..") names.push_back(Narrow(name));
  } while (::FindNextFileW(find, &data));
  ::FindClose(find);
  return CZuError::Success();
}

}  // namespace FXPlatform
