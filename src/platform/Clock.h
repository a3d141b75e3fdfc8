// The system's clock and its local-time rules: UTC in file-time units (100 ns
// since 1601-01-01 00:00:00 UTC) for time stamps, and the local wall-clock
// time and zone as the logger prints them.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {

// The current UTC time with the clock's full resolution (100 ns on Windows,
// the nanoseconds of CLOCK_REALTIME truncated to 100 ns on POSIX).
ZUUTILS_API long long FileTimeNow();

// The local time of a UTC instant: the zone's offset from UTC as it is now
// (daylight saving included when it applies today) added to any instant,
// whatever its own date. This is the operating system's local file-time
// conversion (FileTimeToLocalFileTime on Windows; the offset of localtime_r
// of the current time on POSIX, with TZ read once per process). The sum
// wraps in 64 bits.
ZUUTILS_API long long UtcToLocalFileTime(long long utc);

struct TLocalTime {
  int year = 0;    // 4 digits
  int month = 0;   // 1-12
  int day = 0;     // 1-31
  int hour = 0;    // 0-23
  int minute = 0;  // 0-59
  int second = 0;  // 0-59 (60 on a leap second where the system shows one)
};

struct TTimeZone {
  std::string name;        // "CET", "Pacific Standard Time" ...
  long offsetMinutes = 0;  // local time minus UTC
};

// The local time now, to the second; false when the clock or the time zone
// cannot be read.
ZUUTILS_API bool LocalTimeNow(TLocalTime& out);

// The local time of a moment given in seconds since 1970-01-01 UTC.
ZUUTILS_API bool LocalTimeOf(long long unixSeconds, TLocalTime& out);

// The zone in effect now: its name and its offset from UTC (daylight saving
// included where it applies now).
ZUUTILS_API TTimeZone CurrentTimeZone();

}  // namespace FXPlatform
