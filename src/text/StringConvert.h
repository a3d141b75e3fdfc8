// FXString::ToString and FXString::ToWstring: the one conversion between
// UTF-8 (narrow) and wide text used everywhere in the library.
//
// Wide strings are UTF-16 on Windows and UTF-32 elsewhere (the size of
// wchar_t); both builds give the same code points for the same input, and
// the UTF-8 side is byte-identical. The library's own transcoder does the
// work on both platforms (not MultiByteToWideChar, not iconv), so answers
// never depend on the system.
//
// Invalid input never fails: each maximal ill-formed UTF-8 subpart becomes
// one U+FFFD (the Unicode Standard's recommended practice), and so does an
// unpaired surrogate or, from a 32-bit wchar_t, a value above U+10FFFF.
// Conversion stops at the first NUL of the input, as a conversion of the
// terminated C string would. Running out of memory gives an empty string.
#pragma once

#include <string>

#include "ZuUtilsExport.h"

namespace FXString {

// UTF-16 (UTF-32) to UTF-8. A null pointer gives an empty string.
ZUUTILS_API std::string ToString(const std::wstring& text);
ZUUTILS_API std::string ToString(const wchar_t* text);

// UTF-8 to UTF-16 (UTF-32). A null pointer gives an empty string.
ZUUTILS_API std::wstring ToWstring(const std::string& text);
ZUUTILS_API std::wstring ToWstring(const char* text);

// Plain copies: the code page is accepted for the older callers and ignored,
// since narrow text is always UTF-8.
ZUUTILS_API std::string ToString(const std::string& text, unsigned long codePage);
ZUUTILS_API std::wstring ToWstring(const std::wstring& text, unsigned long codePage);

// Copies of a C string; a null pointer gives an empty string.
ZUUTILS_API std::string ToString(const char* text);
ZUUTILS_API std::wstring ToWstring(const wchar_t* text);

// The text as the wide ("T") strings of the system interface take it.
ZUUTILS_API std::wstring ToTstring(const std::string& text);

}  // namespace FXString
