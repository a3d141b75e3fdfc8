// Conversions between the text of a Windows code page and UTF-16, as
// MultiByteToWideChar (flags 0) and WideCharToMultiByte do them.
//
// Windows calls those functions, so every installed code page works.
// POSIX converts through glibc's iconv for the common Windows code pages:
// 1250-1258, 437, 850, 932, 936, 949 and 950; 65001 (UTF-8) goes through
// the library's own transcoder. Other code pages are refused there.
//
// Bytes that do not form a character of the code page become U+FFFD (in
// UTF-8 one for each maximal ill-formed part; Windows differs in a few
// cases, such as the encoded surrogates ED A0..BF xx);
// characters the code page lacks become the replacement text (or "?" when
// it is empty; UTF-8 never needs one, and Windows takes only the first byte,
// as WideCharToMultiByte's default character is one character).
#pragma once

#include <cstddef>
#include <string>

#include "ZuUtilsExport.h"

namespace FXPlatform {

constexpr unsigned int kCodePageUtf8 = 65001;

// The code page of narrow text when none was chosen: the system's ANSI code
// page (GetACP) on Windows; UTF-8 on POSIX, where narrow text is UTF-8.
ZUUTILS_API unsigned int SystemAnsiCodePage();

// Append to `out`; false (with `out` as it was) for a code page that
// cannot be used here.
ZUUTILS_API bool CodePageToUtf16(unsigned int codePage, const char* bytes, std::size_t size, std::u16string& out);
ZUUTILS_API bool Utf16ToCodePage(unsigned int codePage, const char16_t* units, std::size_t count,
                                 const std::string& replacement, std::string& out);

}  // namespace FXPlatform
