#include "platform/SystemClock.h"

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

}  // namespace FXPlatform
