#include "base/date_time.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "base/text.h"

namespace varnel {
namespace {

bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int DaysInMonth(int year, int month) {
  static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : days[month - 1];
}

// Days from 0001-01-01 to the date, proleptic Gregorian.
long long DayNumber(int year, int month, int day) {
  long long y = year - 1;
  long long n = y * 365 + y / 4 - y / 100 + y / 400;
  for (int m = 1; m < month; ++m) n += DaysInMonth(year, m);
  return n + day - 1;
}

constexpr long long kDayNumberOf18991230 = 693593;
constexpr long long kMsPerDay = 86400000;
// 0001-01-01 and 9999-12-31 as date values.
constexpr long long kFirstDate = -693593;
constexpr long long kLastDate = 2958465;

constexpr const wchar_t* kMonthNames[] = {L"January", L"February", L"March",     L"April",
                                          L"May",     L"June",     L"July",      L"August",
                                          L"September", L"October", L"November", L"December"};
constexpr const wchar_t* kDayNames[] = {L"Sunday",   L"Monday", L"Tuesday", L"Wednesday",
                                        L"Thursday", L"Friday", L"Saturday"};

std::wstring Padded(int value, int width) {
  std::wstring s = std::to_wstring(value);
  if (static_cast<int>(s.size()) < width) s.insert(0, width - s.size(), L'0');
  return s;
}

DateOrder OrderOfPicture(std::wstring_view picture) {
  bool quoted = false;
  for (wchar_t c : picture) {
    if (c == L'\'') quoted = !quoted;
    if (quoted) continue;
    if (c == L'y' || c == L'Y') return DateOrder::YMD;
    if (c == L'd' || c == L'D') return DateOrder::DMY;
    if (c == L'M' || c == L'm') return DateOrder::MDY;
  }
  return DateOrder::MDY;
}

}  // namespace

std::optional<TDateTime> TryEncodeDate(int year, int month, int day) {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 ||
      day > DaysInMonth(year, month)) {
    return std::nullopt;
  }
  return static_cast<TDateTime>(DayNumber(year, month, day) - kDayNumberOf18991230);
}

TDateTime EncodeDateTime(const LocalDateTime& t) {
  if (t.hour < 0 || t.hour > 23 || t.minute < 0 || t.minute > 59 || t.second < 0 ||
      t.second > 59 || t.millisecond < 0 || t.millisecond > 999) {
    return 0;
  }
  auto date = TryEncodeDate(t.year, t.month, t.day);
  if (!date) return 0;
  double time = (t.hour * 3600000.0 + t.minute * 60000.0 + t.second * 1000.0 + t.millisecond) /
                kMsPerDay;
  // Before 1899-12-30 the time of day counts away from zero, as the date
  // value's sign does.
  return *date >= 0 ? *date + time : *date - time;
}

LocalDateTime DecodeDateTime(TDateTime value) {
  LocalDateTime out;
  if (!std::isfinite(value) || std::fabs(value) > 3e6) return out;
  const double whole = std::trunc(value);
  long long date = static_cast<long long>(whole);
  long long ms = std::llround(std::fabs(value - whole) * kMsPerDay);
  // A time that rounds to midnight is the start of the next calendar day,
  // whichever side of 1899-12-30 the value lies on.
  if (ms >= kMsPerDay) {
    ms -= kMsPerDay;
    ++date;
  }
  if (date < kFirstDate || date > kLastDate) return out;
  const long long days = date + kDayNumberOf18991230;
  int year = static_cast<int>(days / 366) + 1;
  while (DayNumber(year + 1, 1, 1) <= days) ++year;
  long long rest = days - DayNumber(year, 1, 1);
  int month = 1;
  while (rest >= DaysInMonth(year, month)) rest -= DaysInMonth(year, month++);
  out.year = year;
  out.month = month;
  out.day = static_cast<int>(rest) + 1;
  out.hour = static_cast<int>(ms / 3600000);
  out.minute = static_cast<int>(ms / 60000 % 60);
  out.second = static_cast<int>(ms / 1000 % 60);
  out.millisecond = static_cast<int>(ms % 1000);
  return out;
}

TDateTime FileTimeToLocalDateTime(ISystem& system, FileTime utc) {
  auto local = system.ToLocalTime(utc);
  return local ? EncodeDateTime(*local) : 0;
}

TDateTime NowLocal(ISystem& system) { return FileTimeToLocalDateTime(system, system.Now()); }

std::optional<TDateTime> ParseDate(std::wstring_view text, DateOrder order, wchar_t separator,
                                   int currentYear) {
  if (currentYear < 1 || currentYear > 9999) return std::nullopt;
  std::wstring s = text::Trim(text);
  int numbers[3] = {0, 0, 0};
  int digitsOf[3] = {0, 0, 0};
  int count = 0;
  std::size_t i = 0;
  while (true) {
    if (count == 3) return std::nullopt;
    int value = 0, digits = 0;
    while (i < s.size() && s[i] >= L'0' && s[i] <= L'9' && digits < 5) {
      value = value * 10 + (s[i] - L'0');
      ++digits;
      ++i;
    }
    if (digits == 0) return std::nullopt;
    numbers[count] = value;
    digitsOf[count] = digits;
    ++count;
    if (i == s.size()) break;
    if (s[i] != separator) return std::nullopt;
    ++i;
  }
  if (count < 2) return std::nullopt;
  int year = currentYear, month = 0, day = 0, yearDigits = 4;
  if (count == 2) {
    if (order == DateOrder::DMY) {
      day = numbers[0];
      month = numbers[1];
    } else {
      month = numbers[0];
      day = numbers[1];
    }
  } else {
    const int yearAt = order == DateOrder::YMD ? 0 : 2;
    const int monthAt = order == DateOrder::MDY ? 0 : 1;
    const int dayAt = order == DateOrder::DMY ? 0 : order == DateOrder::MDY ? 1 : 2;
    year = numbers[yearAt];
    month = numbers[monthAt];
    day = numbers[dayAt];
    yearDigits = digitsOf[yearAt];
    if (yearDigits <= 2) {
      // The hundred years that begin 50 years before the current one.
      const int base = currentYear - 50;
      year += base / 100 * 100;
      if (year < base) year += 100;
    }
  }
  return TryEncodeDate(year, month, day);
}

std::optional<TDateTime> ParseShortDate(ISystem& system, std::wstring_view text) {
  int currentYear = DecodeDateTime(NowLocal(system)).year;
  if (currentYear == 0) currentYear = 2000;
  return ParseDate(text, OrderOfPicture(system.ShortDateFormat()), system.DateSeparator(),
                   currentYear);
}

std::wstring FormatDate(std::wstring_view picture, TDateTime value) {
  const LocalDateTime t = DecodeDateTime(value);
  if (t.year == 0) return {};
  std::wstring out;
  std::size_t i = 0;
  while (i < picture.size()) {
    wchar_t c = picture[i];
    if (c == L'\'' && i + 1 < picture.size() && picture[i + 1] == L'\'') {
      out += L'\'';
      i += 2;
      continue;
    }
    if (c == L'\'') {
      // Literal up to the closing quote; a doubled quote stands for one.
      for (++i; i < picture.size(); ++i) {
        if (picture[i] != L'\'') {
          out += picture[i];
        } else if (i + 1 < picture.size() && picture[i + 1] == L'\'') {
          out += L'\'';
          ++i;
        } else {
          ++i;
          break;
        }
      }
      continue;
    }
    std::size_t run = 1;
    while (i + run < picture.size() && picture[i + run] == c) ++run;
    if (c == L'd') {
      if (run == 1) out += std::to_wstring(t.day);
      else if (run == 2) out += Padded(t.day, 2);
      else {
        // 0001-01-01 was a Monday.
        std::wstring name = kDayNames[(DayNumber(t.year, t.month, t.day) + 1) % 7];
        out += run == 3 ? name.substr(0, 3) : name;
      }
    } else if (c == L'M') {
      if (run == 1) out += std::to_wstring(t.month);
      else if (run == 2) out += Padded(t.month, 2);
      else {
        std::wstring name = kMonthNames[t.month - 1];
        out += run == 3 ? name.substr(0, 3) : name;
      }
    } else if (c == L'y') {
      if (run <= 2) out += Padded(t.year % 100, run == 1 ? 1 : 2);
      else out += Padded(t.year, 4);
    } else if (c == L'h' || c == L'H') {
      int hour = t.hour;
      if (c == L'h') hour = hour % 12 == 0 ? 12 : hour % 12;
      out += run == 1 ? std::to_wstring(hour) : Padded(hour, 2);
    } else if (c == L'm') {
      out += run == 1 ? std::to_wstring(t.minute) : Padded(t.minute, 2);
    } else if (c == L's') {
      out += run == 1 ? std::to_wstring(t.second) : Padded(t.second, 2);
    } else if (c == L't') {
      const wchar_t* marker = t.hour < 12 ? L"AM" : L"PM";
      out += run == 1 ? std::wstring(1, marker[0]) : std::wstring(marker);
    } else if (c == L'g') {
      // An era name is not shown.
    } else {
      out.append(run, c);
    }
    i += run;
  }
  return out;
}

std::wstring FormatShortDate(ISystem& system, TDateTime value) {
  std::wstring picture = system.ShortDateFormat();
  if (picture.empty()) picture = L"M/d/yyyy";
  return FormatDate(picture, value);
}

std::wstring NowShortDateTime(ISystem& system) {
  std::wstring timePicture = system.LongTimeFormat();
  if (timePicture.empty()) timePicture = L"h:mm:ss tt";
  std::wstring datePicture = system.ShortDateFormat();
  if (datePicture.empty()) datePicture = L"M/d/yyyy";
  return FormatDate(datePicture + L" " + timePicture, NowLocal(system));
}

std::wstring DateTimeToText(TDateTime value) {
  char buffer[64];
  if (!std::isfinite(value)) return L"0";
  auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  if (ec != std::errc()) return L"0";
  return text::Widen(std::string_view(buffer, end - buffer));
}

std::optional<TDateTime> TextToDateTime(std::wstring_view textIn) {
  std::wstring trimmed = text::Trim(textIn);
  std::string narrow;
  for (wchar_t c : trimmed) {
    if (c == L',') c = L'.';
    bool allowed = (c >= L'0' && c <= L'9') || c == L'.' || c == L'-' || c == L'+' || c == L'e' ||
                   c == L'E';
    if (!allowed) return std::nullopt;
    narrow += static_cast<char>(c);
  }
  if (narrow.empty()) return std::nullopt;
  double value = 0;
  const char* first = narrow.data();
  // from_chars takes no "+"; one may open the text, but not before a sign.
  if (*first == '+') {
    ++first;
    if (first != narrow.data() + narrow.size() && (*first == '+' || *first == '-')) {
      return std::nullopt;
    }
  }
  auto [end, ec] = std::from_chars(first, narrow.data() + narrow.size(), value);
  if (ec != std::errc() || end != narrow.data() + narrow.size() || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

}  // namespace varnel
