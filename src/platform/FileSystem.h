// File-system primitives in the platform's own path form. Paths are UTF-8;
// the Windows backend calls the wide API. Failures carry the Win32 code on
// both platforms (see SystemError.h).
#pragma once

#include <string>
#include <vector>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

namespace FXPlatform {

// The separator of paths handed to the operating system.
constexpr char kPathSeparator = kZuIsWindows ? '\\' : '/';

// The folder for temporary files, ending with the separator.
ZUUTILS_API std::string TempDirectory();

ZUUTILS_API bool PathExists(const std::string& path);
ZUUTILS_API bool IsDirectory(const std::string& path);

// Creates one folder whose parent exists; an existing folder is fine.
ZUUTILS_API CZuError CreateOneDirectory(const std::string& path);

// Creates the folder and every missing parent; an existing folder is fine,
// an existing file of that name is ERROR_ALREADY_EXISTS.
ZUUTILS_API CZuError CreateDirectories(const std::string& path);

// Renames a file, failing with ERROR_ALREADY_EXISTS where the target exists
// (as MoveFile does): nothing is ever overwritten.
ZUUTILS_API CZuError MoveFileNoReplace(const std::string& from, const std::string& to);

ZUUTILS_API CZuError DeleteFileAt(const std::string& path);

// The names of the entries of a folder, without "." and "..", in no
// particular order.
ZUUTILS_API CZuError ListDirectory(const std::string& path, std::vector<std::string>& names);

}  // namespace FXPlatform
