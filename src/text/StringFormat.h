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
#include "platform/ZuTypes.h"

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

// Decimal with a ',' before every group of three digits from the right:
// 1234567 gives "1,234,567", -123456 gives "-123,456".
ZUUTILS_API std::string FormatNumber(int value);
ZUUTILS_API std::string FormatNumber(unsigned int value);
ZUUTILS_API std::string FormatNumber(long long value);
ZUUTILS_API std::string FormatNumber(unsigned long long value);

// The size in the largest binary unit (at most EB) that leaves a number of
// at least 1, a space and the unit: "B " (with a space, so that every unit
// has two characters), "KB", "MB", "GB", "TB", "PB", "EB". A precision of 0
// or more gives that many decimals, or none for a whole number; a negative
// one gives six significant digits. 1536 with precision 2 gives "1.50 KB",
// 1048576 gives "1 MB".
ZUUTILS_API std::string FormatByteSize(unsigned long long size, int precision);

// "{6B29FC40-CA47-1067-B31D-00DD010662DA}": upper-case, in braces.
ZUUTILS_API std::string AsString(const GUID& guid);
ZUUTILS_API std::wstring AsWstring(const GUID& guid);
// The high part in decimal and the low part in hexadecimal, as Windows'
// own tools print logon sessions: "0:0x3e7".
ZUUTILS_API std::string AsString(const LUID& luid);
ZUUTILS_API std::wstring AsWstring(const LUID& luid);

}  // namespace FXString
