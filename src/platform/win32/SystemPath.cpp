#include "platform/SystemPath.h"

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

#include <windows.h>

namespace FXPlatform {

CZuError SystemPathOf(const std::string& path, std::string& systemPath) {
  // Already native: the long-path or device namespace.
  if (path.compare(0, 4, "\\\\?\\") == 0 || path.compare(0, 4, "\\\\.\\") == 0) {
    systemPath = path;
    return CZuError::Success();
  }
  std::wstring full;
  const std::wstring wide = Widen(path);
  DWORD n = ::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
  if (n != 0) {
    full.resize(n);
    n = ::GetFullPathNameW(wide.c_str(), n, &full[0], nullptr);
  }
  if (n == 0 || n >= full.size())
    return ErrorFromSystem(ZU_HERE("FXPlatform::SystemPathOf"), LastSystemError())
        .Push(ZU_HERE("FXPlatform::SystemPathOf"), "Path=[%s]", path.c_str());
  full.resize(n);
  if (full.compare(0, 2, L"\\\\") == 0)
    full = L"\\\\?\\UNC\\" + full.substr(2);
  else
    full = L"\\\\?\\" + full;
  systemPath = Narrow(full);
  return CZuError::Success();
}

std::string LibraryPathOf(const std::string& systemPath) { return systemPath; }

}  // namespace FXPlatform
