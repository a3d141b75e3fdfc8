#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "platform/Clock.h"
#include "platform/CompleteTypes.h"
#include "time/TimeStamp.h"

namespace {

constexpr long long kUnixEpoch = 116444736000000000LL;
constexpr long long kSecond = 10000000;

CTimeStamp Unix(long long seconds, long long units = 0) {
  return CTimeStamp::FromUnixTime(seconds) + CTimeInterval::From100NS(units);
}

TEST(TimeStamp, ClearAndFilledInEveryText) {
  CTimeStamp filled;
  filled.Fill();
  EXPECT_EQ(LLONG_MAX, filled.AsSystemTime());
  EXPECT_EQ(LLONG_MAX, filled.AsUnixTime());
  EXPECT_EQ(0, CTimeStamp().AsUnixTime());
  for (const CTimeStamp& t : {CTimeStamp(), filled})
    for (const std::string& text : {t.AsString(), t.AsUTCDateTimeString(), t.AsUTCTimeString(),
                                    t.AsLocalDateTimeString(), t.AsLocalTimeString()})
      EXPECT_EQ(t.IsClear() ? "Clear" : "Filled", text);
}

TEST(TimeStamp, UnixTimesAroundTheEpoch) {
  EXPECT_TRUE(CTimeStamp::FromUnixTime(0).IsClear());  // 0 means "no time"
  EXPECT_EQ(116444736010000000LL, CTimeStamp::FromUnixTime(1).AsSystemTime());
  EXPECT_EQ(kUnixEpoch - kSecond, CTimeStamp::FromUnixTime(-1).AsSystemTime());
  EXPECT_EQ(0, CTimeStamp::FromSystemTime(kUnixEpoch - 1).AsUnixTime());  // toward zero, not -1
  EXPECT_EQ(0, CTimeStamp::FromSystemTime(kUnixEpoch + 1).AsUnixTime());
  EXPECT_EQ(-1, CTimeStamp::FromSystemTime(kUnixEpoch - kSecond).AsUnixTime());
  EXPECT_EQ(1704164645, Unix(1704164645, 9999999).AsUnixTime());
  EXPECT_EQ(-11644473599LL, CTimeStamp::FromSystemTime(1).AsUnixTime());
}

// The three records behave alike, apart from the width of tv_sec.
template <class Record, Record (CTimeStamp::*AsRecord)() const>
void ExpectTimeSpecRoundTrip() {
  EXPECT_TRUE(CTimeStamp::FromTimeSpec(Record{0, 0}).IsClear());
  EXPECT_TRUE(CTimeStamp::FromTimeSpec(Record{0, 99}).IsClear());  // below 100 ns is nothing
  const CTimeStamp stamp = CTimeStamp::FromTimeSpec(Record{1704164645, 123456789});
  EXPECT_EQ(Unix(1704164645, 1234567), stamp);
  const Record back = (stamp.*AsRecord)();
  EXPECT_EQ(1704164645, back.tv_sec);
  EXPECT_EQ(123456700, back.tv_nsec);
}

TEST(TimeStamp, TimeSpecRecords) {
  ExpectTimeSpecRoundTrip<_timespec32, &CTimeStamp::AsTimeSpec32>();
  ExpectTimeSpecRoundTrip<_timespec64, &CTimeStamp::AsTimeSpec64>();
  ExpectTimeSpecRoundTrip<timespec, &CTimeStamp::AsTimeSpec>();
  EXPECT_EQ(0, CTimeStamp().AsTimeSpec64().tv_sec);

  // Beyond 2038 the 32-bit record keeps the low 32 bits of the seconds.
  const CTimeStamp later = CTimeStamp::FromUnixTime(0x100000005LL);
  EXPECT_EQ(0x100000005LL, later.AsTimeSpec64().tv_sec);
  EXPECT_EQ(5, later.AsTimeSpec32().tv_sec);
  EXPECT_EQ(8u, sizeof(_timespec32));  // the Windows layout on both platforms
  EXPECT_EQ(16u, sizeof(_timespec64));
}

TEST(TimeStamp, FileTimeHalves) {
  const CTimeStamp stamp = CTimeStamp::FromSystemTime(0x0123456789ABCDEFLL);
  const FILETIME ft = stamp.AsFileTime();
  EXPECT_EQ(0x89ABCDEFu, ft.dwLowDateTime);
  EXPECT_EQ(0x01234567u, ft.dwHighDateTime);
  EXPECT_EQ(stamp, CTimeStamp::FromFileTime(ft));
}

TEST(TimeStamp, VariantTimes) {
  EXPECT_TRUE(CTimeStamp::FromVariantTime(0.0).IsClear());
  EXPECT_EQ("1899/12/31 00:00:00.000000Z", CTimeStamp::FromVariantTime(1.0).AsString());
  EXPECT_EQ("1899/12/28 12:00:00.000000Z", CTimeStamp::FromVariantTime(-1.5).AsString());
  EXPECT_EQ("2023/03/15 06:00:00.000000Z", CTimeStamp::FromVariantTime(45000.25).AsString());
  EXPECT_DOUBLE_EQ(45000.25, CTimeStamp::FromVariantTime(45000.25).AsVariantTime());
  EXPECT_EQ(0.0, CTimeStamp().AsVariantTime());
  EXPECT_DOUBLE_EQ(-109204.0, CTimeStamp::FromSystemTime(864000000000).AsVariantTime());  // 1601-01-02
  // Out of range, as the processor's conversion gives it: the most negative count.
  EXPECT_EQ(CTimeStamp::FromVariantTime(1e300), CTimeStamp::FromVariantTime(-1e300));
  EXPECT_EQ(LLONG_MIN + 94353120000000000LL, CTimeStamp::FromVariantTime(1e300).AsSystemTime());
}

TEST(TimeStamp, UtcTexts) {
  const CTimeStamp t = Unix(1704164645, 1234567);  // 2024-01-02 03:04:05.1234567
  EXPECT_EQ("2024/01/02 03:04:05.123456Z", t.AsUTCDateTimeString());
  EXPECT_EQ("2024/01/02 03:04:05.123456Z", t.AsString());
  EXPECT_EQ("03:04:05.123456Z", t.AsUTCTimeString());
  EXPECT_EQ("2024/02/29 23:59:59.999999Z", Unix(1709251199, 9999999).AsString());  // last digit dropped
  EXPECT_EQ("1601/01/01 00:00:00.000000Z", CTimeStamp::FromSystemTime(9).AsString());
  EXPECT_EQ("1970/01/01 00:00:00.000000Z", CTimeStamp::FromSystemTime(kUnixEpoch).AsString());
  EXPECT_EQ("1600/12/31 23:59:59.999999Z", CTimeStamp::FromSystemTime(-10).AsString());
  EXPECT_EQ("30828/09/14 02:48:05.477580Z", CTimeStamp::FromSystemTime(LLONG_MAX - 1).AsString());
}

// The calendar against a day-by-day count through four centuries from 1601,
// which holds every leap-year rule (1700, 1800 and 1900 are not leap years,
// 2000 is).
TEST(TimeStamp, CalendarDayByDay) {
  const CTimeInterval day = CTimeInterval::FromMinutes(24 * 60);
  CTimeStamp t = CTimeStamp::FromSystemTime(1);
  unsigned year = 1601, month = 1, dayOfMonth = 1;
  for (int i = 0; i < 146097; ++i, t += day) {
    char expected[32];
    std::snprintf(expected, sizeof expected, "%04u/%02u/%02u 00:00:00.000000Z", year, month, dayOfMonth);
    ASSERT_EQ(expected, t.AsUTCDateTimeString());
    static const unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (++dayOfMonth > kDays[month - 1] + (month == 2 && leap ? 1 : 0)) {
      dayOfMonth = 1;
      if (++month > 12) {
        month = 1;
        ++year;
      }
    }
  }
  EXPECT_EQ("2001/01/01 00:00:00.000000Z", t.AsString());
}

// Local texts apply the zone's offset as it is now to every date, summer or
// winter (the rule of the system's local file-time conversion), so the
// expected text is the UTC text moved by today's offset, whatever the
// machine's zone. CTest runs this program with TZ=America/St_Johns, whose
// half-hour offset changes with daylight saving time: a date's own offset
// would show.
TEST(TimeStamp, LocalTextsUseTodaysOffset) {
  const CTimeInterval offset = CTimeInterval::FromMinutes(FXPlatform::CurrentTimeZone().offsetMinutes);
  // January, July, and the second after a spring-forward in St. John's.
  for (const long long seconds : {1705320000LL, 1721044800LL, 1710048600LL}) {
    const CTimeStamp t = Unix(seconds, 1234567);
    const std::string moved = (t + offset).AsUTCDateTimeString();  // "YYYY/MM/DD hh:mm:ss.uuuuuuZ"
    EXPECT_EQ(moved.substr(0, 26), t.AsLocalDateTimeString()) << seconds;
    EXPECT_EQ(moved.substr(11, 15), t.AsLocalTimeString()) << seconds;
  }
}

TEST(TimeStamp, ArithmeticWrapsAndComparesSigned) {
  const CTimeStamp a = Unix(1000), b = Unix(1060);
  EXPECT_EQ(CTimeInterval::FromMinutes(1), b - a);
  EXPECT_EQ(CTimeInterval::FromSeconds(-60), a - b);
  CTimeStamp c = a + CTimeInterval::FromSeconds(90);
  c -= CTimeInterval::FromSeconds(30);
  EXPECT_EQ(b, c);

  CTimeStamp filled;
  filled.Fill();
  const CTimeStamp wrapped = filled + CTimeInterval::From100NS(1);
  EXPECT_EQ(LLONG_MIN, wrapped.AsSystemTime());
  EXPECT_LT(wrapped, CTimeStamp());
  EXPECT_LT(CTimeStamp(), filled);
  EXPECT_EQ(LLONG_MIN + 1, (CTimeStamp() - filled).As100NSIntervals());
  EXPECT_EQ(1, (wrapped - filled).As100NSIntervals());
}

TEST(TimeStamp, NowIsTheSystemsUtcTime) {
  const CTimeStamp now = CTimeStamp::Now();
  const long long seconds = static_cast<long long>(std::time(nullptr));
  EXPECT_LE(seconds - 2, now.AsUnixTime());
  EXPECT_GE(seconds + 2, now.AsUnixTime());
  EXPECT_LE(now, CTimeStamp::Now());
}

TEST(TimeInterval, FactoriesAndConversions) {
  EXPECT_EQ(1200000000, CTimeInterval::FromMinutes(2).As100NSIntervals());
  EXPECT_EQ(1, CTimeInterval::From100NS(19999).AsMilliseconds());
  EXPECT_EQ(-1, CTimeInterval::From100NS(-19999).AsMilliseconds());
  EXPECT_DOUBLE_EQ(1.5, CTimeInterval::FromMilliseconds(1500).AsSeconds());
  EXPECT_EQ(-10000000, CTimeInterval::FromSeconds(LLONG_MAX).As100NSIntervals());  // wraps, no fault

  // Seconds truncated toward zero, the rest with the span's sign.
  EXPECT_EQ(-1, CTimeInterval::FromMilliseconds(-1500).AsTimeSpec().tv_sec);
  EXPECT_EQ(-500000000, CTimeInterval::FromMilliseconds(-1500).AsTimeSpec().tv_nsec);
  EXPECT_EQ(500000100, CTimeInterval::From100NS(25000001).AsTimeSpec32().tv_nsec);
  EXPECT_EQ(60LL << 30, CTimeInterval::FromMinutes(1LL << 30).AsTimeSpec64().tv_sec);
}

TEST(TimeInterval, ArithmeticAndText) {
  CTimeInterval i = CTimeInterval::From100NS(10);
  EXPECT_EQ(30, (i * 3).As100NSIntervals());
  EXPECT_EQ(2, (i / 4).As100NSIntervals());
  EXPECT_EQ(-2, (CTimeInterval::From100NS(-10) / 4).As100NSIntervals());  // toward zero
  EXPECT_EQ(25, (i * 2.5).As100NSIntervals());
  EXPECT_EQ(4, (i / 2.5).As100NSIntervals());
  EXPECT_EQ(-3, (i * -0.39).As100NSIntervals());
  EXPECT_EQ(LLONG_MIN, (i * 1e300).As100NSIntervals());
  EXPECT_EQ(LLONG_MIN, (i / 0.0).As100NSIntervals());
  EXPECT_EQ(-2, (CTimeInterval::From100NS(LLONG_MAX) * 2).As100NSIntervals());
  i *= 6;
  i /= 4;
  i *= 0.5;
  EXPECT_EQ(7, i.As100NSIntervals());  // 60, 15, 7.5 truncated
  i -= CTimeInterval::From100NS(17);
  EXPECT_LT(i, CTimeInterval());  // signed

  EXPECT_EQ("0:01.500000", CTimeInterval::FromMilliseconds(1500).AsString());
  EXPECT_EQ("1:30.000000", CTimeInterval::FromSeconds(90).AsString());
  EXPECT_EQ("120:00.000000", CTimeInterval::FromMinutes(120).AsString());
  EXPECT_EQ("0:00.000012", CTimeInterval::From100NS(129).AsString());
  EXPECT_EQ("-1:-30.000000", CTimeInterval::FromSeconds(-90).AsString());
}

}  // namespace
