#include "platform/LocalTime.h"

#include <ctime>

namespace FXPlatform {

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
