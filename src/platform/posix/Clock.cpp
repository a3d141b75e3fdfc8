#include "platform/Clock.h"

#include <ctime>

namespace {

constexpr long long kUnitsPerSecond = 10000000;
constexpr long long kUnixEpochSeconds = 11644473600LL;  // 1601-01-01 to 1970-01-01

// Wrapping addition: the caller's count may lie anywhere in 64 bits.
long long AddWrapping(long long a, long long b) {
  return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}

}  // namespace

namespace FXPlatform {

long long FileTimeNow() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return (static_cast<long long>(now.tv_sec) + kUnixEpochSeconds) * kUnitsPerSecond + now.tv_nsec / 100;
}

long long UtcToLocalFileTime(long long utc) {
  // The offset as it is now, for every date: the rule of Windows'
  // FileTimeToLocalFileTime, so that both platforms print the same text.
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (::localtime_r(&now, &local) == nullptr) return utc;
  return AddWrapping(utc, static_cast<long long>(local.tm_gmtoff) * kUnitsPerSecond);
}

namespace {

void Copy(const std::tm& tm, TLocalTime& out) {
  out.year = tm.tm_year + 1900;
  out.month = tm.tm_mon + 1;
  out.day = tm.tm_mday;
  out.hour = tm.tm_hour;
  out.minute = tm.tm_min;
  out.second = tm.tm_sec;
}

}  // namespace

bool LocalTimeOf(long long unixSeconds, TLocalTime& out) {
  const std::time_t t = static_cast<std::time_t>(unixSeconds);
  std::tm tm;
  if (::localtime_r(&t, &tm) == nullptr) return false;
  Copy(tm, out);
  return true;
}

bool LocalTimeNow(TLocalTime& out) {
  // Converting to local time costs far more than reading the clock, and a
  // busy logger asks many times a second: each thread converts once a second.
  thread_local std::time_t cachedSecond = -1;
  thread_local TLocalTime cached;
  struct timespec now;
  if (::clock_gettime(CLOCK_REALTIME, &now) != 0) return false;
  if (now.tv_sec != cachedSecond) {
    if (!LocalTimeOf(now.tv_sec, cached)) return false;
    cachedSecond = now.tv_sec;
  }
  out = cached;
  return true;
}

TTimeZone CurrentTimeZone() {
  TTimeZone zone;
  ::tzset();
  const std::time_t now = std::time(nullptr);
  std::tm tm;
  if (::localtime_r(&now, &tm) == nullptr) return zone;
  zone.name = tm.tm_zone != nullptr ? tm.tm_zone : "";
  zone.offsetMinutes = tm.tm_gmtoff / 60;
  return zone;
}

}  // namespace FXPlatform
