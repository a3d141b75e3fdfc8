#include "platform/Clock.h"

#include <windows.h>

#include "platform/win32/WinString.h"

namespace {

long long Join(const FILETIME& time) {
  return static_cast<long long>((static_cast<unsigned long long>(time.dwHighDateTime) << 32) |
                                time.dwLowDateTime);
}

}  // namespace

namespace FXPlatform {

long long FileTimeNow() {
  FILETIME now;
  ::GetSystemTimePreciseAsFileTime(&now);
  return Join(now);
}

long long UtcToLocalFileTime(long long utc) {
  // FileTimeToLocalFileTime applies today's bias to every date. The bias is
  // taken from the conversion of now, so that counts anywhere in 64 bits
  // wrap as the rest of the arithmetic does rather than fail.
  const long long now = FileTimeNow();
  FILETIME utcNow, localNow;
  utcNow.dwLowDateTime = static_cast<DWORD>(static_cast<unsigned long long>(now) & 0xFFFFFFFFu);
  utcNow.dwHighDateTime = static_cast<DWORD>(static_cast<unsigned long long>(now) >> 32);
  if (!::FileTimeToLocalFileTime(&utcNow, &localNow)) return utc;
  const long long bias = Join(localNow) - now;
  return static_cast<long long>(static_cast<unsigned long long>(utc) + static_cast<unsigned long long>(bias));
}

namespace {

void Copy(const SYSTEMTIME& st, TLocalTime& out) {
  out.year = st.wYear;
  out.month = st.wMonth;
  out.day = st.wDay;
  out.hour = st.wHour;
  out.minute = st.wMinute;
  out.second = st.wSecond;
}

}  // namespace

bool LocalTimeNow(TLocalTime& out) {
  SYSTEMTIME st;
  ::GetLocalTime(&st);
  Copy(st, out);
  return true;
}

bool LocalTimeOf(long long unixSeconds, TLocalTime& out) {
  // FILETIME counts 100-nanosecond units from 1601-01-01 UTC.
  const unsigned long long ticks = static_cast<unsigned long long>(unixSeconds + 11644473600LL) * 10000000ULL;
  FILETIME ft;
  ft.dwLowDateTime = static_cast<DWORD>(ticks);
  ft.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  SYSTEMTIME utc, local;
  if (!::FileTimeToSystemTime(&ft, &utc) || !::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) return false;
  Copy(local, out);
  return true;
}

TTimeZone CurrentTimeZone() {
  TIME_ZONE_INFORMATION info;
  const DWORD rc = ::GetTimeZoneInformation(&info);
  TTimeZone zone;
  // Bias is UTC minus local time, in minutes.
  if (rc == TIME_ZONE_ID_DAYLIGHT) {
    zone.name = Narrow(info.DaylightName);
    zone.offsetMinutes = -(info.Bias + info.DaylightBias);
  } else if (rc != TIME_ZONE_ID_INVALID) {
    zone.name = Narrow(info.StandardName);
    zone.offsetMinutes = -(info.Bias + info.StandardBias);
  }
  return zone;
}

}  // namespace FXPlatform
