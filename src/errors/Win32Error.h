// EWin32Error: a Win32 error code with its symbolic name and message.
#pragma once

#include <cstddef>
#include <string>

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"
#include "text/EnumWrapper.h"

// One row of the display table: the code, its symbolic name and its
// standard system message, narrow and wide.
struct TWin32ErrorName {
  DWORD value;
  const char* name;
  const wchar_t* wname;
  const char* message;
  const wchar_t* wmessage;
};

class ZUUTILS_API EWin32Error : public TEnumWrapper<EWin32Error, DWORD> {
 public:
  using TEnumWrapper::TEnumWrapper;
  using TEnumWrapper::AsString;
  using TEnumWrapper::AsWstring;

  // For a code of the display table its message and " (NAME.code)", as
  //   "Access is denied. (ERROR_ACCESS_DENIED.5)";
  // for any other code the system message in one line and " (code)". The
  // table's messages are the standard English ones on every platform;
  // without a system message (always so outside Windows) a code outside
  // the table reads " (1450)".
  static std::string AsString(DWORD code);
  static std::wstring AsWstring(DWORD code);

  // The 55 rows, in ascending order of their codes.
  static const TWin32ErrorName* DisplayTable(std::size_t& count);
  // The row of a code, or null.
  static const TWin32ErrorName* Find(DWORD code);
};
