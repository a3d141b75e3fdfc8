// The local wall-clock time as the logger prints it.
#pragma once

#include <string>

#include "ZuUtilsExport.h"

namespace FXPlatform {

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
