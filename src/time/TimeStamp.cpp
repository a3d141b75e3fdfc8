#include "time/TimeStamp.h"

#include <climits>

#include "platform/Clock.h"
#include "platform/CompleteTypes.h"
#include "text/StringFormat.h"

namespace {

constexpr long long kUnitsPerSecond = 10000000;
constexpr long long kUnitsPerMinute = 60 * kUnitsPerSecond;
constexpr long long kUnitsPerDay = 86400 * kUnitsPerSecond;
constexpr long long kUnixEpoch = 116444736000000000LL;     // 1970-01-01
constexpr long long kUnixEpochSeconds = kUnixEpoch / kUnitsPerSecond;
constexpr long long kVariantEpoch = 94353120000000000LL;   // 1899-12-30
constexpr double kUnitsPerDayDouble = 8.64e11;

// Two's-complement wrapping, computed in unsigned arithmetic where it is
// defined; the conversion back is modular on every compiler we build with
// (and by definition from C++20 on).
long long Add(long long a, long long b) {
  return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}
long long Sub(long long a, long long b) {
  return static_cast<long long>(static_cast<unsigned long long>(a) - static_cast<unsigned long long>(b));
}
long long Mul(long long a, long long b) {
  return static_cast<long long>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
}

// Truncation toward zero; out of range and NaN give what cvttsd2si gives.
long long Truncate(double value) {
  if (value >= -9223372036854775808.0 && value < 9223372036854775808.0) return static_cast<long long>(value);
  return LLONG_MIN;
}

// The count of a record of seconds and nanoseconds since 1970; the record
// of 1970-01-01 00:00:00 itself gives 0, Clear.
template <class Record>
long long StampUnits(const Record& time) {
  const long long units =
      Add(Mul(static_cast<long long>(time.tv_sec), kUnitsPerSecond), static_cast<long long>(time.tv_nsec) / 100);
  return units == 0 ? 0 : Add(kUnixEpoch, units);
}

template <class Record>
Record StampTimeSpec(long long value) {
  Record record{};
  if (value == 0) return record;
  record.tv_sec = static_cast<decltype(record.tv_sec)>(Sub(value, kUnixEpoch) / kUnitsPerSecond);
  record.tv_nsec = static_cast<decltype(record.tv_nsec)>(value % kUnitsPerSecond * 100);
  return record;
}

template <class Record>
Record IntervalTimeSpec(long long value) {
  Record record{};
  const long long seconds = value / kUnitsPerSecond;
  record.tv_sec = static_cast<decltype(record.tv_sec)>(seconds);
  record.tv_nsec = static_cast<decltype(record.tv_nsec)>((value - seconds * kUnitsPerSecond) * 100);
  return record;
}

struct TCalendarFields {
  long long year;
  unsigned month, day, hour, minute, second;
  unsigned long long microseconds;
};

// Proleptic Gregorian calendar fields of a count of 100-ns units since
// 1601-01-01 (days to civil date after H. Hinnant's public-domain method).
TCalendarFields Split(long long units) {
  long long days = units / kUnitsPerDay;
  long long rest = units % kUnitsPerDay;
  if (rest < 0) {
    rest += kUnitsPerDay;
    --days;
  }
  TCalendarFields f{};
  f.hour = static_cast<unsigned>(rest / (60 * kUnitsPerMinute));
  f.minute = static_cast<unsigned>(rest / kUnitsPerMinute % 60);
  f.second = static_cast<unsigned>(rest / kUnitsPerSecond % 60);
  f.microseconds = static_cast<unsigned long long>(rest % kUnitsPerSecond / 10);

  // Days since 0000-03-01, so that the leap day ends each 400-year era.
  const long long z = days - 134774 + 719468;  // 1601-01-01 is day -134774 of 1970
  const long long era = (z >= 0 ? z : z - 146096) / 146097;
  const long long dayOfEra = z - era * 146097;
  const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const long long shiftedMonth = (5 * dayOfYear + 2) / 153;  // 0 is March
  f.day = static_cast<unsigned>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  f.month = static_cast<unsigned>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  f.year = yearOfEra + era * 400 + (f.month <= 2 ? 1 : 0);
  return f;
}

}  // namespace

// ---- CTimeInterval ----

CTimeInterval CTimeInterval::FromMilliseconds(long long milliseconds) {
  return CTimeInterval(Mul(milliseconds, 10000));
}
CTimeInterval CTimeInterval::FromSeconds(long long seconds) { return CTimeInterval(Mul(seconds, kUnitsPerSecond)); }
CTimeInterval CTimeInterval::FromMinutes(long long minutes) { return CTimeInterval(Mul(minutes, kUnitsPerMinute)); }

timespec CTimeInterval::AsTimeSpec() const { return IntervalTimeSpec<timespec>(m_value); }
_timespec32 CTimeInterval::AsTimeSpec32() const { return IntervalTimeSpec<_timespec32>(m_value); }
_timespec64 CTimeInterval::AsTimeSpec64() const { return IntervalTimeSpec<_timespec64>(m_value); }

CTimeInterval CTimeInterval::operator+(const CTimeInterval& other) const {
  return CTimeInterval(Add(m_value, other.m_value));
}
CTimeInterval CTimeInterval::operator-(const CTimeInterval& other) const {
  return CTimeInterval(Sub(m_value, other.m_value));
}
CTimeInterval CTimeInterval::operator*(int factor) const { return CTimeInterval(Mul(m_value, factor)); }
CTimeInterval CTimeInterval::operator*(double factor) const {
  return CTimeInterval(Truncate(static_cast<double>(m_value) * factor));
}
CTimeInterval CTimeInterval::operator/(double divisor) const {
  return CTimeInterval(Truncate(static_cast<double>(m_value) / divisor));
}

std::string CTimeInterval::AsString() const {
  return FXString::Format("%lld:%02d.%06lld", m_value / kUnitsPerMinute,
                          static_cast<int>(m_value / kUnitsPerSecond % 60), m_value % kUnitsPerSecond / 10);
}

// ---- CTimeStamp ----

CTimeStamp CTimeStamp::Now() { return CTimeStamp(FXPlatform::FileTimeNow()); }

CTimeStamp CTimeStamp::FromFileTime(const FILETIME& fileTime) {
  return CTimeStamp(static_cast<long long>((static_cast<unsigned long long>(fileTime.dwHighDateTime) << 32) |
                                           fileTime.dwLowDateTime));
}

FILETIME CTimeStamp::AsFileTime() const {
  const unsigned long long bits = static_cast<unsigned long long>(m_value);
  FILETIME fileTime;
  fileTime.dwLowDateTime = static_cast<DWORD>(bits & 0xFFFFFFFFu);
  fileTime.dwHighDateTime = static_cast<DWORD>(bits >> 32);
  return fileTime;
}

CTimeStamp CTimeStamp::FromUnixTime(long long seconds) {
  if (seconds == 0) return CTimeStamp();
  return CTimeStamp(Mul(Add(seconds, kUnixEpochSeconds), kUnitsPerSecond));
}

long long CTimeStamp::AsUnixTime() const {
  if (IsClear()) return 0;
  if (IsFilled()) return kFilled;
  return Sub(m_value, kUnixEpoch) / kUnitsPerSecond;
}

CTimeStamp CTimeStamp::FromTimeSpec(const timespec& time) { return CTimeStamp(StampUnits(time)); }
CTimeStamp CTimeStamp::FromTimeSpec(const _timespec32& time) { return CTimeStamp(StampUnits(time)); }
CTimeStamp CTimeStamp::FromTimeSpec(const _timespec64& time) { return CTimeStamp(StampUnits(time)); }

timespec CTimeStamp::AsTimeSpec() const { return StampTimeSpec<timespec>(m_value); }
_timespec32 CTimeStamp::AsTimeSpec32() const { return StampTimeSpec<_timespec32>(m_value); }
_timespec64 CTimeStamp::AsTimeSpec64() const { return StampTimeSpec<_timespec64>(m_value); }

CTimeStamp CTimeStamp::FromVariantTime(double days) {
  if (days == 0.0) return CTimeStamp();
  return CTimeStamp(Add(kVariantEpoch, Truncate(days * kUnitsPerDayDouble)));
}

double CTimeStamp::AsVariantTime() const {
  if (IsClear()) return 0.0;
  return static_cast<double>(Sub(m_value, kVariantEpoch)) / kUnitsPerDayDouble;
}

CTimeStamp CTimeStamp::operator+(const CTimeInterval& span) const { return CTimeStamp(Add(m_value, span.m_value)); }
CTimeStamp CTimeStamp::operator-(const CTimeInterval& span) const { return CTimeStamp(Sub(m_value, span.m_value)); }
CTimeInterval CTimeStamp::operator-(const CTimeStamp& other) const {
  return CTimeInterval(Sub(m_value, other.m_value));
}

std::string CTimeStamp::AsUTCDateTimeString() const { return Text(false, true); }
std::string CTimeStamp::AsUTCTimeString() const { return Text(false, false); }
std::string CTimeStamp::AsLocalDateTimeString() const { return Text(true, true); }
std::string CTimeStamp::AsLocalTimeString() const { return Text(true, false); }

std::string CTimeStamp::Text(bool local, bool withDate) const {
  if (IsClear()) return "Clear";
  if (IsFilled()) return "Filled";
  const TCalendarFields f = Split(local ? FXPlatform::UtcToLocalFileTime(m_value) : m_value);
  const unsigned year = static_cast<unsigned>(f.year);
  if (withDate && local)
    return FXString::Format("%04u/%02u/%02u %02u:%02u:%02u.%06llu", year, f.month, f.day, f.hour, f.minute,
                            f.second, f.microseconds);
  if (withDate)
    return FXString::Format("%04u/%02u/%02u %02u:%02u:%02u.%06lluZ", year, f.month, f.day, f.hour, f.minute,
                            f.second, f.microseconds);
  if (local) return FXString::Format("%02u:%02u:%02u.%06llu", f.hour, f.minute, f.second, f.microseconds);
  return FXString::Format("%02u:%02u:%02u.%06lluZ", f.hour, f.minute, f.second, f.microseconds);
}
