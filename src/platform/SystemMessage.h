// The texts the operating system and the C runtime give for error numbers.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {

// The system's message for a Win32 error or an HRESULT, as the system gives
// it (line breaks included), UTF-8 or wide; empty when it has none.
// Windows asks FormatMessageW (from the system, inserts ignored, the user's
// default language). Other platforms have no message tables: the text is
// always empty there, and callers fall back to their own words or numbers.
ZUUTILS_API void SystemMessage(DWORD code, std::string& text);
ZUUTILS_API void SystemMessage(DWORD code, std::wstring& text);

// The C runtime's text for an errno number in the Microsoft C runtime's
// numbering (see errors/ErrorUtil.h); empty when the runtime fails.
// Windows asks strerror_s (1024-byte buffer) of the runtime the library is
// linked with. Elsewhere a built-in copy of the Microsoft runtime's standard
// English texts answers: 0 to 42, the POSIX supplement 100 (EADDRINUSE) to
// 140 (EWOULDBLOCK), "Unknown error" for any other number, so a failure
// prints the same line on both platforms. (mingw-w64's msvcrt.dll knows
// only 0 to 42 and says "Unknown error" for the supplement.)
ZUUTILS_API std::string CRuntimeErrorText(int crtErrno);

}  // namespace FXPlatform
