// printf-style formatting into standard strings.
//
// Wide formats follow the C standard on every platform: %ls for wide
// strings, %s for narrow ones. Both builds use a C99 conforming printf family
// (mingw-w64's own on Windows), so the same format gives the same text.
#pragma once

#include <cstdarg>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

#if defined(__GNUC__)
#define ZU_FORMAT_ATTR(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define ZU_FORMAT_ATTR(fmt, args)
#endif

namespace FXString {

// Formats into `out`. The buffer starts at 2 * strlen(fmt) + 512 characters
// and grows by 16384 up to 131072; text that still does not fit is cut
// (out holds what was produced) and Win32 error 111 is returned. A null
// format gives ERROR_INVALID_PARAMETER and an empty `out`.
ZUUTILS_API CZuError FormatArgList(std::string& out, const char* fmt, va_list args);
ZUUTILS_API CZuError FormatArgList(std::wstring& out, const wchar_t* fmt, va_list args);

ZUUTILS_API CZuError Format(std::string& out, const char* fmt, ...) ZU_FORMAT_ATTR(2, 3);
ZUUTILS_API CZuError Format(std::wstring& out, const wchar_t* fmt, ...);

// The formatted text, cut short silently where FormatArgList would fail.
ZUUTILS_API std::string Format(const char* fmt, ...) ZU_FORMAT_ATTR(1, 2);
ZUUTILS_API std::wstring Format(const wchar_t* fmt, ...);

}  // namespace FXString
