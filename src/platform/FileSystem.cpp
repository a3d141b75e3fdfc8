#include "platform/FileSystem.h"

#include "errors/ErrorUtil.h"

namespace FXPlatform {

CZuError CreateDirectories(const std::string& path) {
  if (path.empty()) return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::CreateDirectories"), ERROR_INVALID_PARAMETER);
  std::string trimmed = path;
  while (trimmed.size() > 1 && (trimmed.back() == '/' || trimmed.back() == kPathSeparator)) trimmed.pop_back();
  if (IsDirectory(trimmed)) return CZuError::Success();
  const std::size_t cut = trimmed.find_last_of(kZuIsWindows ? "\\/" : "/");
  if (cut != std::string::npos && cut > 0) {
    const std::string parent = trimmed.substr(0, cut);
    // A drive root ("C:") needs no creating.
    if (!(kZuIsWindows && parent.size() == 2 && parent[1] == ':')) {
      CZuError r = CreateDirectories(parent);
      if (r.IsError()) return r;
    }
  }
  return CreateOneDirectory(trimmed);
}

}  // namespace FXPlatform
