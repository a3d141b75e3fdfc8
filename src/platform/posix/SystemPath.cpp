#include "platform/SystemPath.h"

#include "errors/ErrorUtil.h"

namespace FXPlatform {

CZuError SystemPathOf(const std::string& path, std::string& systemPath) {
  std::size_t begin = 0;
  if (path.compare(0, 4, "\\\\?\\") == 0 || path.compare(0, 4, "\\\\.\\") == 0) begin = 4;
  const bool drive = path.size() >= begin + 2 && path[begin + 1] == ':';
  if (drive) {
    if ((path[begin] != 'Z' && path[begin] != 'z') || (path.size() > begin + 2 && path[begin + 2] != '\\' && path[begin + 2] != '/'))
      return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::SystemPathOf"), ERROR_PATH_NOT_FOUND,
                                     "Only drive Z: (the root folder) exists on this system, Path=[%s]", path.c_str());
    begin += 2;
  } else if (begin != 0 || path.compare(0, 2, "\\\\") == 0) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPlatform::SystemPathOf"), ERROR_PATH_NOT_FOUND,
                                   "No such device or share on this system, Path=[%s]", path.c_str());
  }
  systemPath.assign(path, begin, std::string::npos);
  for (char& c : systemPath)
    if (c == '\\') c = '/';
  if (drive && systemPath.empty()) systemPath = "/";
  return CZuError::Success();
}

std::string LibraryPathOf(const std::string& systemPath) {
  if (systemPath.empty() || systemPath[0] != '/') return systemPath;
  std::string path = "Z:" + systemPath;
  for (char& c : path)
    if (c == '/') c = '\\';
  return path;
}

}  // namespace FXPlatform
