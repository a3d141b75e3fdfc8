// The system's UTC clock and its local-time rules, in file-time units
// (100 ns since 1601-01-01 00:00:00 UTC). Including this header also makes
// FILETIME a complete type on every platform (platform/ZuTypes.h only names
// it on Windows, to keep <windows.h> out of the public headers).
#pragma once

#ifdef _WIN32
#include <windows.h>
#endif

#include "platform/ZuTypes.h"

namespace FXPlatform {

// The current UTC time with the clock's full resolution (100 ns on Windows,
// the nanoseconds of CLOCK_REALTIME truncated to 100 ns on POSIX).
long long FileTimeNow();

// The local time of a UTC instant under the system's current zone
// settings, with the daylight-saving rule of the instant's own date (on
// Windows SystemTimeToTzSpecificLocalTime, on POSIX localtime_r, which
// reads TZ once per process). An instant the system cannot convert (before
// 1601 on Windows) is returned unchanged, as UTC.
long long UtcToLocalFileTime(long long utc);

}  // namespace FXPlatform
