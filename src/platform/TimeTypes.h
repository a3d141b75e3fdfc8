// The time records of the C runtime that CTimeStamp and CTimeInterval
// convert to and from: timespec, and the fixed-width _timespec32 and
// _timespec64 of the Microsoft C runtime.
//
// Elsewhere _timespec32 and _timespec64 are records of our own with the
// Windows layout (32-bit tv_nsec; 8 and 16 bytes), so both platforms hand
// out the same values in the same shape.
#pragma once

#include <cstdint>
#include <ctime>

#ifdef _WIN32

// The UCRT declares both records in <time.h>, mingw-w64 in <sys/timeb.h>.
#include <sys/timeb.h>

#else  // POSIX

struct _timespec32 {
  std::int32_t tv_sec;
  std::int32_t tv_nsec;
};

struct _timespec64 {
  std::int64_t tv_sec;
  std::int32_t tv_nsec;
};

#endif  // _WIN32
