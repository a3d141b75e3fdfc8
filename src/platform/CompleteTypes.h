// The complete Windows records that platform/ZuTypes.h only names on
// Windows (GUID, LUID, FILETIME), for code that reads their fields or keeps
// them by value (a FILETIME in a property bag). On Windows this brings in
// <windows.h>, which is why no other public header includes it.
#pragma once

#include "platform/ZuTypes.h"

#ifdef _WIN32
#include <windows.h>
#endif
