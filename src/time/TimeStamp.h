// CTimeStamp, a point in time, and CTimeInterval, a span of time: each one
// signed 64-bit count of 100-nanosecond units, so that file times convert
// without loss and arithmetic is plain integer arithmetic.
//
// A stamp counts from 1601-01-01 00:00:00 UTC (the file-time epoch). 0 is
// "Clear" (no time) and 0x7FFFFFFFFFFFFFFF "Filled" (the latest time); the
// conversions treat them as stated at each function, the arithmetic does not.
//
// Arithmetic wraps modulo 2^64 without an overflow check (Filled plus one
// unit is the most negative count); it is done in unsigned arithmetic, so
// the wrap is defined behaviour and the same on every compiler.
//
// Conversions from double (OLE automation dates, scaling of intervals)
// truncate toward zero; a result outside the 64-bit range, or NaN, becomes
// the most negative count, as the x86-64 conversion instruction gives it.
//
// FILETIME: on Windows, callers include <windows.h> for its definition.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "platform/TimeTypes.h"
#include "platform/ZuTypes.h"

class CTimeStamp;

class ZUUTILS_API CTimeInterval {
 public:
  CTimeInterval() = default;
  CTimeInterval(const CTimeInterval&) = default;
  CTimeInterval& operator=(const CTimeInterval&) = default;
  ~CTimeInterval() = default;

  static CTimeInterval From100NS(long long units) { return CTimeInterval(units); }
  static CTimeInterval FromMilliseconds(long long milliseconds);
  static CTimeInterval FromSeconds(long long seconds);
  static CTimeInterval FromMinutes(long long minutes);

  long long As100NSIntervals() const { return m_value; }
  // Truncated toward zero.
  long long AsMilliseconds() const { return m_value / 10000; }
  double AsSeconds() const { return static_cast<double>(m_value) / 1e7; }

  // Whole seconds truncated toward zero; tv_nsec carries the rest with the
  // count's sign. _timespec32 keeps the low 32 bits of the seconds.
  timespec AsTimeSpec() const;
  _timespec32 AsTimeSpec32() const;
  _timespec64 AsTimeSpec64() const;

  void Clear() { m_value = 0; }
  bool IsClear() const { return m_value == 0; }

  CTimeInterval operator+(const CTimeInterval& other) const;
  CTimeInterval operator-(const CTimeInterval& other) const;
  CTimeInterval& operator+=(const CTimeInterval& other) { return *this = *this + other; }
  CTimeInterval& operator-=(const CTimeInterval& other) { return *this = *this - other; }

  CTimeInterval operator*(int factor) const;
  CTimeInterval operator*(double factor) const;
  // Integer division truncates toward zero. A divisor of 0, or -1 with the
  // most negative count, faults like any integer division: callers must not.
  CTimeInterval operator/(int divisor) const { return CTimeInterval(m_value / divisor); }
  CTimeInterval operator/(double divisor) const;
  CTimeInterval& operator*=(int factor) { return *this = *this * factor; }
  CTimeInterval& operator*=(double factor) { return *this = *this * factor; }
  CTimeInterval& operator/=(int divisor) { return *this = *this / divisor; }
  CTimeInterval& operator/=(double divisor) { return *this = *this / divisor; }

  bool operator==(const CTimeInterval& other) const { return m_value == other.m_value; }
  bool operator!=(const CTimeInterval& other) const { return m_value != other.m_value; }
  bool operator<(const CTimeInterval& other) const { return m_value < other.m_value; }
  bool operator<=(const CTimeInterval& other) const { return m_value <= other.m_value; }
  bool operator>(const CTimeInterval& other) const { return m_value > other.m_value; }
  bool operator>=(const CTimeInterval& other) const { return m_value >= other.m_value; }

  // "minutes:ss.uuuuuu" with the minutes unfolded ("120:00.000000" for two
  // hours); each field truncated toward zero, so a negative span carries
  // its sign in every nonzero field.
  std::string AsString() const;

 private:
  friend class CTimeStamp;
  explicit CTimeInterval(long long value) : m_value(value) {}

  long long m_value = 0;
};

class ZUUTILS_API CTimeStamp {
 public:
  CTimeStamp() = default;
  CTimeStamp(const CTimeStamp&) = default;
  CTimeStamp& operator=(const CTimeStamp&) = default;
  ~CTimeStamp() = default;

  // The current UTC time.
  static CTimeStamp Now();

  // The count split into and joined from its 32-bit halves.
  static CTimeStamp FromFileTime(const FILETIME& fileTime);
  FILETIME AsFileTime() const;

  // The raw count.
  static CTimeStamp FromSystemTime(long long value) { return CTimeStamp(value); }
  long long AsSystemTime() const { return m_value; }

  // Seconds since 1970-01-01 UTC. 0 gives Clear. Back: Clear gives 0,
  // Filled 0x7FFFFFFFFFFFFFFF, anything else whole seconds truncated toward
  // zero (one unit before 1970 is 0, not -1).
  static CTimeStamp FromUnixTime(long long seconds);
  long long AsUnixTime() const;

  // Seconds and nanoseconds since 1970 (nanoseconds truncated to 100 ns).
  // A record of exactly 1970-01-01 00:00:00 gives Clear: 0 means "no time"
  // in both worlds. Back: Clear gives {0, 0}; Filled is not special.
  static CTimeStamp FromTimeSpec(const timespec& time);
  static CTimeStamp FromTimeSpec(const _timespec32& time);
  static CTimeStamp FromTimeSpec(const _timespec64& time);
  timespec AsTimeSpec() const;
  _timespec32 AsTimeSpec32() const;
  _timespec64 AsTimeSpec64() const;

  // OLE automation dates: days since 1899-12-30 00:00:00. 0.0 and Clear
  // map onto each other.
  static CTimeStamp FromVariantTime(double days);
  double AsVariantTime() const;

  void Clear() { m_value = 0; }
  bool IsClear() const { return m_value == 0; }
  void Fill() { m_value = kFilled; }
  bool IsFilled() const { return m_value == kFilled; }

  CTimeStamp operator+(const CTimeInterval& span) const;
  CTimeStamp operator-(const CTimeInterval& span) const;
  CTimeInterval operator-(const CTimeStamp& other) const;
  CTimeStamp& operator+=(const CTimeInterval& span) { return *this = *this + span; }
  CTimeStamp& operator-=(const CTimeInterval& span) { return *this = *this - span; }

  // Signed comparison of the counts: Clear is the earliest time, Filled the
  // latest, and a count wrapped past Filled earlier than both.
  bool operator==(const CTimeStamp& other) const { return m_value == other.m_value; }
  bool operator!=(const CTimeStamp& other) const { return m_value != other.m_value; }
  bool operator<(const CTimeStamp& other) const { return m_value < other.m_value; }
  bool operator<=(const CTimeStamp& other) const { return m_value <= other.m_value; }
  bool operator>(const CTimeStamp& other) const { return m_value > other.m_value; }
  bool operator>=(const CTimeStamp& other) const { return m_value >= other.m_value; }

  // "Clear" and "Filled" for the reserved values; otherwise
  // "YYYY/MM/DD hh:mm:ss.uuuuuuZ" (UTC) and "hh:mm:ss.uuuuuuZ", and the local
  // forms without the "Z". The last 100-ns digit is dropped, not rounded.
  // The calendar is the proleptic Gregorian one on both sides of 1601;
  // local time is UTC moved by the zone's offset as it is now, for every
  // date (see platform/Clock.h).
  std::string AsUTCDateTimeString() const;
  std::string AsUTCTimeString() const;
  std::string AsLocalDateTimeString() const;
  std::string AsLocalTimeString() const;
  std::string AsString() const { return AsUTCDateTimeString(); }

 private:
  static constexpr long long kFilled = 0x7FFFFFFFFFFFFFFFLL;

  explicit CTimeStamp(long long value) : m_value(value) {}
  std::string Text(bool local, bool withDate) const;

  long long m_value = 0;
};
