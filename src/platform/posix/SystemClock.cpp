#include "platform/SystemClock.h"

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
  // Whole seconds, rounded down, so that instants before 1970 fall into the
  // right second and therefore the right zone period.
  long long seconds = utc / kUnitsPerSecond;
  if (utc % kUnitsPerSecond < 0) --seconds;
  const std::time_t unixSeconds = static_cast<std::time_t>(seconds - kUnixEpochSeconds);
  std::tm local{};
  if (::localtime_r(&unixSeconds, &local) == nullptr) return utc;
  return AddWrapping(utc, static_cast<long long>(local.tm_gmtoff) * kUnitsPerSecond);
}

}  // namespace FXPlatform
