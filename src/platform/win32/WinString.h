// UTF-8 <-> UTF-16 for the Win32 backend's calls of the wide API. The
// library's own transcoder does it, so that names convert exactly as all
// other text does (invalid input becomes U+FFFD, a NUL ends the text).
#pragma once

#include <windows.h>

#include <string>

#include "text/StringConvert.h"

namespace FXPlatform {

inline std::wstring Widen(const std::string& utf8) { return FXString::ToWstring(utf8); }

inline std::string Narrow(const std::wstring& utf16) { return FXString::ToString(utf16); }

}  // namespace FXPlatform
