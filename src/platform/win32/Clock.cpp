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
  if (utc < 0) return utc;
  FILETIME utcTime;
  utcTime.dwLowDateTime = static_cast<DWORD>(static_cast<unsigned long long>(utc) & 0xFFFFFFFFu);
  utcTime.dwHighDateTime = static_cast<DWORD>(static_cast<unsigned long long>(utc) >> 32);
  // FileTimeToLocalFileTime would apply today's daylight-saving state to
  // every date; this conversion applies the one of the instant's own date,
  // as localtime_r does on POSIX.
  SYSTEMTIME utcFields, localFields;
  FILETIME localTime;
  if (!::FileTimeToSystemTime(&utcTime, &utcFields) ||
      !::SystemTimeToTzSpecificLocalTime(nullptr, &utcFields, &localFields) ||
      !::SystemTimeToFileTime(&localFields, &localTime))
    return utc;
  // SYSTEMTIME holds milliseconds: take the zone's offset, not the value.
  // Wrapping, because the largest counts lie within one offset of the end.
  const long long offset = Join(localTime) - (utc - utc % 10000);
  return static_cast<long long>(static_cast<unsigned long long>(utc) + static_cast<unsigned long long>(offset));
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
