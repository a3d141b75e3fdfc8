// FXMisc: helpers around the system's error messages.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

namespace FXMisc {

// Flags of GetFormattedErrorMessageAsString.
enum : DWORD {
  kErrorMessageWithCode = 1,    // "[0x%X %u] " (the code in hex and decimal) in front
  kErrorMessageSingleLine = 2,  // trailing CR, LF and blanks removed, line breaks made blanks
};

// The system's message for a Win32 error or an HRESULT, shaped by `flags`.
// Where the system has no message (always so outside Windows) the codes of
// EWin32Error's display table, also wrapped as 0x8007xxxx HRESULTs, use the
// table's message; any other code gives an empty message.
ZUUTILS_API std::string GetFormattedErrorMessageAsString(DWORD code, DWORD flags);
ZUUTILS_API std::wstring GetFormattedErrorMessageAsWstring(DWORD code, DWORD flags);

}  // namespace FXMisc
