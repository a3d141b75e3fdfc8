// The one mapping between the library's path form and the operating
// system's paths, used by every platform call that takes a path.
//
// The library's form has backslashes. On POSIX the whole file system is
// drive Z:, as wine shows it to Windows programs: "Z:\usr\share" and
// "\\?\Z:\usr\share" are /usr/share, a path that already begins with '/'
// is a POSIX path, and a relative path stays relative to the current folder
// (backslashes become slashes). Other drives, shares and devices do not exist
// there (ERROR_PATH_NOT_FOUND). On Windows the system's form is the native
// long form ("\\?\C:\..." or "\\?\UNC\server\share\..."), so that paths
// beyond MAX_PATH work.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

namespace FXPlatform {

ZUUTILS_API CZuError SystemPathOf(const std::string& path, std::string& systemPath);

// The library's form of a path of the operating system: on POSIX an absolute
// path becomes "Z:" with backslashes; on Windows it is unchanged.
ZUUTILS_API std::string LibraryPathOf(const std::string& systemPath);

}  // namespace FXPlatform
