#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "base/date_time.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

TDateTime Date(int year, int month, int day) { return TryEncodeDate(year, month, day).value(); }

void ExpectFields(const LocalDateTime& t, LocalDateTime want, const std::string& what) {
  EXPECT_EQ(t.year, want.year) << what;
  EXPECT_EQ(t.month, want.month) << what;
  EXPECT_EQ(t.day, want.day) << what;
  EXPECT_EQ(t.hour, want.hour) << what;
  EXPECT_EQ(t.minute, want.minute) << what;
  EXPECT_EQ(t.second, want.second) << what;
  EXPECT_EQ(t.millisecond, want.millisecond) << what;
}

TEST(DateTimeTest, DatesCountDaysFrom18991230) {
  EXPECT_EQ(Date(1899, 12, 30), 0);
  EXPECT_EQ(Date(1899, 12, 29), -1);
  EXPECT_EQ(Date(1900, 3, 1), 61);  // 1900 has no 29 February

  EXPECT_FALSE(TryEncodeDate(1900, 2, 29));
  EXPECT_TRUE(TryEncodeDate(2000, 2, 29));
  EXPECT_FALSE(TryEncodeDate(2100, 2, 29));
  EXPECT_FALSE(TryEncodeDate(2023, 4, 31));
  EXPECT_FALSE(TryEncodeDate(0, 1, 1));
  EXPECT_FALSE(TryEncodeDate(10000, 1, 1));
  EXPECT_FALSE(TryEncodeDate(2020, 13, 1));
}

TEST(DateTimeTest, EveryDayDecodesToTheNextCalendarDay) {
  LocalDateTime previous = DecodeDateTime(Date(1, 1, 1));
  ExpectFields(previous, {1, 1, 1, 0, 0, 0, 0}, "first day");
  for (long long d = -693592; d <= 2958465; ++d) {
    const LocalDateTime t = DecodeDateTime(static_cast<double>(d));
    const bool nextDay = t.year == previous.year && t.month == previous.month &&
                         t.day == previous.day + 1;
    const bool nextMonth = t.year == previous.year && t.month == previous.month + 1 && t.day == 1;
    const bool nextYear = t.year == previous.year + 1 && t.month == 1 && t.day == 1 &&
                          previous.month == 12 && previous.day == 31;
    if (!(nextDay || nextMonth || nextYear) || EncodeDateTime(t) != static_cast<double>(d)) {
      ADD_FAILURE() << "day " << d << " decodes to " << t.year << "-" << t.month << "-" << t.day;
      return;
    }
    if (nextMonth && TryEncodeDate(previous.year, previous.month, previous.day + 1)) {
      ADD_FAILURE() << "day " << d << " skips a day of " << previous.year << "-" << previous.month;
      return;
    }
    previous = t;
  }
  ExpectFields(previous, {9999, 12, 31, 0, 0, 0, 0}, "last day");
}

TEST(DateTimeTest, NegativeValuesCarryTheTimeAwayFromZero) {
  EXPECT_EQ(EncodeDateTime({1899, 12, 29, 6, 0, 0, 0}), -1.25);
  ExpectFields(DecodeDateTime(-1.25), {1899, 12, 29, 6, 0, 0, 0}, "-1.25");
  ExpectFields(DecodeDateTime(-0.5), {1899, 12, 30, 12, 0, 0, 0}, "-0.5");
  ExpectFields(DecodeDateTime(-693593.5), {1, 1, 1, 12, 0, 0, 0}, "first day, noon");
  ExpectFields(DecodeDateTime(2958465.75), {9999, 12, 31, 18, 0, 0, 0}, "last day");
}

TEST(DateTimeTest, TimesRoundingToMidnightStartTheNextDay) {
  ExpectFields(DecodeDateTime(1.0 - 1e-10), {1899, 12, 31, 0, 0, 0, 0}, "just before 1");
  ExpectFields(DecodeDateTime(-1.0 - (1.0 - 1e-10)), {1899, 12, 30, 0, 0, 0, 0}, "-2 + tiny");
  ExpectFields(DecodeDateTime(0.5 + 0.4e-3 / 86400), {1899, 12, 30, 12, 0, 0, 0}, "rounds down");
  ExpectFields(DecodeDateTime(0.5 + 0.6e-3 / 86400), {1899, 12, 30, 12, 0, 0, 1}, "rounds up");
}

TEST(DateTimeTest, ImpossibleValuesAndFieldsGiveNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (double bad : {-693594.0, 2958466.0, 2958465.9999999999, 1e300, -1e300, nan, inf, -inf})
    ExpectFields(DecodeDateTime(bad), {}, std::to_string(bad));

  EXPECT_EQ(EncodeDateTime({2010, 2, 30, 0, 0, 0, 0}), 0);
  EXPECT_EQ(EncodeDateTime({2010, 3, 15, 24, 0, 0, 0}), 0);
  EXPECT_EQ(EncodeDateTime({2010, 3, 15, 0, 60, 0, 0}), 0);
  EXPECT_EQ(EncodeDateTime({2010, 3, 15, 0, 0, -1, 0}), 0);
  EXPECT_EQ(EncodeDateTime({2010, 3, 15, 0, 0, 0, 1000}), 0);
  EXPECT_EQ(EncodeDateTime({}), 0);
}

TEST(DateTimeTest, FileTimesBecomeLocalDates) {
  mem::MemoryPlatform m;
  const FileTime t = m.system.FromLocalTime({2010, 3, 15, 23, 0, 0, 500}).value();
  EXPECT_EQ(FileTimeToLocalDateTime(m.system, t), EncodeDateTime({2010, 3, 15, 23, 0, 0, 500}));
  m.system.utcOffsetMinutes = 90;
  EXPECT_EQ(FileTimeToLocalDateTime(m.system, t), EncodeDateTime({2010, 3, 16, 0, 30, 0, 500}));
  m.system.utcOffsetMinutes = -60;
  EXPECT_EQ(FileTimeToLocalDateTime(m.system, 0), 0);  // before 1601 locally
  EXPECT_EQ(FileTimeToLocalDateTime(m.system, ~FileTime{0}), 0);
}

TEST(DateTimeTest, ParsesTwoOrThreeNumbersInTheGivenOrder) {
  const struct {
    const wchar_t* text;
    DateOrder order;
    wchar_t separator;
    int now;
    std::optional<TDateTime> date;
  } cases[] = {
      {L"2010-03-15", DateOrder::YMD, L'-', 2024, Date(2010, 3, 15)},
      {L" 3/15/2010\t", DateOrder::MDY, L'/', 2024, Date(2010, 3, 15)},
      {L"15.03.2010", DateOrder::DMY, L'.', 2024, Date(2010, 3, 15)},
      {L"2010-03-1-5", DateOrder::YMD, L'-', 2024, std::nullopt},
      // Two numbers: day and month (or month and day), this year.
      {L"3/15", DateOrder::MDY, L'/', 2024, Date(2024, 3, 15)},
      {L"15.3", DateOrder::DMY, L'.', 2024, Date(2024, 3, 15)},
      {L"3-15", DateOrder::YMD, L'-', 2024, Date(2024, 3, 15)},
      {L"2/29", DateOrder::MDY, L'/', 2024, Date(2024, 2, 29)},
      {L"2/29", DateOrder::MDY, L'/', 2023, std::nullopt},
      // Short years fall in the century around now; three or four digits are
      // taken as written.
      {L"1.2.74", DateOrder::DMY, L'.', 2024, Date(1974, 2, 1)},
      {L"1.2.73", DateOrder::DMY, L'.', 2024, Date(2073, 2, 1)},
      {L"1.2.5", DateOrder::DMY, L'.', 2024, Date(2005, 2, 1)},
      {L"1.2.48", DateOrder::DMY, L'.', 2099, Date(2148, 2, 1)},
      {L"1.2.49", DateOrder::DMY, L'.', 2099, Date(2049, 2, 1)},
      {L"1.2.60", DateOrder::DMY, L'.', 2010, Date(1960, 2, 1)},
      {L"1.2.59", DateOrder::DMY, L'.', 2010, Date(2059, 2, 1)},
      {L"1.2.074", DateOrder::DMY, L'.', 2024, Date(74, 2, 1)},
      {L"05-3-15", DateOrder::YMD, L'-', 2024, Date(2005, 3, 15)},
      {L"1/1/2010", DateOrder::MDY, L'/', 0, std::nullopt},
      {L"1/1/2010", DateOrder::MDY, L'/', std::numeric_limits<int>::min(), std::nullopt},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ParseDate(c.text, c.order, c.separator, c.now), c.date) << c.text << " " << c.now;

  for (const wchar_t* bad :
       {L"", L" ", L"/", L"3", L"3/", L"/3/15", L"3//15", L"3/15/", L"3/15/2010/1", L"3-15-2010",
        L"a/b/c", L"3/15/2010x", L"3 /15/2010", L"2/30/2010", L"13/1/2010", L"0/1/2010",
        L"1/1/0000", L"1/1/10000", L"123456/1/1", L"-3/15/2010", L"\x0663/15/2010"}) {
    EXPECT_FALSE(ParseDate(bad, DateOrder::MDY, L'/', 2024)) << bad;
  }
}

TEST(DateTimeTest, ShortDatesFollowTheUsersPicture) {
  mem::MemoryPlatform m;  // "now" lies in 2022
  m.system.shortDateFormat = L"dd.MM.yyyy";
  m.system.dateSeparator = L'.';
  EXPECT_EQ(ParseShortDate(m.system, L"15.03.2010"), Date(2010, 3, 15));
  EXPECT_EQ(ParseShortDate(m.system, L"15.03.72"), Date(1972, 3, 15));
  EXPECT_EQ(ParseShortDate(m.system, L"15.03.71"), Date(2071, 3, 15));
  EXPECT_EQ(FormatShortDate(m.system, Date(2010, 3, 5)), L"05.03.2010");

  m.system.shortDateFormat = L"yyyy-MM-dd";
  m.system.dateSeparator = L'-';
  EXPECT_EQ(ParseShortDate(m.system, L"2010-03-15"), Date(2010, 3, 15));
  EXPECT_EQ(ParseShortDate(m.system, L"3-15"), Date(2022, 3, 15));
  EXPECT_FALSE(ParseShortDate(m.system, L"15.03.2010"));

  // Quoted text in the picture says nothing about the order.
  m.system.shortDateFormat = L"'Year' M/d/yyyy";
  m.system.dateSeparator = L'/';
  EXPECT_EQ(ParseShortDate(m.system, L"3/15/2010"), Date(2010, 3, 15));

  m.system.shortDateFormat.clear();
  EXPECT_EQ(FormatShortDate(m.system, Date(2010, 3, 5)), L"3/5/2010");
}

TEST(DateTimeTest, FormatsPictures) {
  const TDateTime friday = EncodeDateTime({2010, 3, 5, 14, 7, 9, 0});
  const TDateTime midnight = EncodeDateTime({2010, 3, 5, 0, 5, 0, 0});
  const struct {
    const wchar_t* picture;
    TDateTime value;
    const wchar_t* want;
  } cases[] = {
      {L"dd.MM.yyyy", friday, L"05.03.2010"},
      {L"M/d/yy", friday, L"3/5/10"},
      {L"y", Date(2005, 1, 1), L"5"},
      {L"yyyy", Date(999, 1, 1), L"0999"},
      {L"ddd, d MMM yyyy", friday, L"Fri, 5 Mar 2010"},
      {L"dddd d MMMM gg", friday, L"Friday 5 March "},
      {L"dddd", Date(1, 1, 1), L"Monday"},
      {L"dddd", -1.25, L"Friday"},  // 1899-12-29, 06:00
      {L"h:mm:ss tt", friday, L"2:07:09 PM"},
      {L"yyyy-MM-dd HH:mm:ss", friday, L"2010-03-05 14:07:09"},
      {L"hh:m:s t", midnight, L"12:5:0 A"},
      {L"H:mm 'h'", midnight, L"0:05 h"},
      // Quoted text is literal; a doubled quote is one quote.
      {L"'o''clock' d", friday, L"o'clock 5"},
      {L"d''M", friday, L"5'3"},
      {L"d 'open dMy", friday, L"5 open dMy"},
      {L"'", friday, L""},
      {L"dd.MM.yyyy", 1e9, L""},
      {L"'x' dddd", std::numeric_limits<double>::quiet_NaN(), L""},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatDate(c.picture, c.value), c.want) << c.picture;
}

TEST(DateTimeTest, FormattingAndParsingAgree) {
  struct Picture {
    const wchar_t* picture;
    DateOrder order;
    wchar_t separator;
  };
  const Picture pictures[] = {{L"dd.MM.yyyy", DateOrder::DMY, L'.'},
                              {L"M/d/yyyy", DateOrder::MDY, L'/'},
                              {L"yyyy-MM-dd", DateOrder::YMD, L'-'}};
  for (const auto& p : pictures) {
    for (TDateTime d = Date(1, 1, 1); d <= Date(9999, 12, 31); d += 997) {
      const std::wstring text = FormatDate(p.picture, d);
      EXPECT_EQ(ParseDate(text, p.order, p.separator, 2024), d) << text;
    }
  }
}

TEST(DateTimeTest, TextRoundTripsEveryValue) {
  for (double v : {0.0, 36526.5, -1.25, 40252.604166666664, 2958465.9999999884, -693593.5,
                   0.1, 1e-300, 123456789.125}) {
    const std::wstring text = DateTimeToText(v);
    EXPECT_EQ(TextToDateTime(text), v) << text;
  }
  EXPECT_EQ(DateTimeToText(36526.5), L"36526.5");
  EXPECT_EQ(DateTimeToText(0), L"0");
  EXPECT_EQ(DateTimeToText(-1.25), L"-1.25");
  EXPECT_EQ(DateTimeToText(std::numeric_limits<double>::quiet_NaN()), L"0");
  EXPECT_EQ(DateTimeToText(std::numeric_limits<double>::infinity()), L"0");
}

TEST(DateTimeTest, ReadsOnlyPlainNumbers) {
  EXPECT_EQ(TextToDateTime(L" 36526.5 "), 36526.5);
  EXPECT_EQ(TextToDateTime(L"36526,5"), 36526.5);
  EXPECT_EQ(TextToDateTime(L"+1.5"), 1.5);
  EXPECT_EQ(TextToDateTime(L"-1.5"), -1.5);
  EXPECT_EQ(TextToDateTime(L"1e3"), 1000);
  EXPECT_EQ(TextToDateTime(L"2.5E-1"), 0.25);
  EXPECT_EQ(TextToDateTime(L".5"), 0.5);
  for (const wchar_t* bad : {L"", L" ", L"+", L"-", L"+-1", L"++1", L"--1", L"1.5.3", L"1,5,3",
                             L"1e", L"e5", L"1e400", L"abc", L"nan", L"inf", L"0x10", L"1 2",
                             L"12:30", L"\x0661"}) {
    EXPECT_FALSE(TextToDateTime(bad)) << bad;
  }
}

}  // namespace
}  // namespace varnel
