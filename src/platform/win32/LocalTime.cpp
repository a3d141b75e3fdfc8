#include "platform/LocalTime.h"

#include <windows.h>

#include "platform/win32/WinString.h"

namespace FXPlatform {

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
