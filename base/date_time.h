#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/system.h"

namespace varnel {

// Days since 1899-12-30; the fraction is the time of day. 0 means "no date".
using TDateTime = double;

enum class DateOrder { MDY, DMY, YMD };

// nullopt for a date outside 1..9999 or a day the month does not have.
std::optional<TDateTime> TryEncodeDate(int year, int month, int day);
// 0 for a date or time of day that does not exist.
TDateTime EncodeDateTime(const LocalDateTime& local);
// All fields 0 for a value outside 0001-01-01..9999-12-31 or not finite.
LocalDateTime DecodeDateTime(TDateTime value);

// Local date-time of a UTC file time; 0 when the conversion fails.
TDateTime FileTimeToLocalDateTime(ISystem& system, FileTime utc);
TDateTime NowLocal(ISystem& system);

// Two or three numbers split by `separator`, in `order`, blanks allowed
// around the whole; two numbers mean the current year. A year of one or two
// digits falls in the hundred years that begin 50 before the current one.
// Anything else fails.
std::optional<TDateTime> ParseDate(std::wstring_view text, DateOrder order, wchar_t separator,
                                   int currentYear);
// The order follows the user's short date picture, the separator is theirs.
std::optional<TDateTime> ParseShortDate(ISystem& system, std::wstring_view text);

// Formats with a picture in the system's notation: d dd ddd dddd M MM MMM MMMM
// y yy yyyy, h hh (12-hour) H HH m mm s ss, t tt (A/P, AM/PM), text in single
// quotes literal ('' is a quote), other characters as they stand. Empty for a
// value DecodeDateTime cannot decode.
std::wstring FormatDate(std::wstring_view picture, TDateTime value);
std::wstring FormatShortDate(ISystem& system, TDateTime value);
// Now, in the system's short date followed by its long time (the logs' date lines).
std::wstring NowShortDateTime(ISystem& system);

// Shortest text that reads back to the same double, "." as decimal point.
std::wstring DateTimeToText(TDateTime value);
// nullopt for anything that is not a plain decimal or exponent number.
std::optional<TDateTime> TextToDateTime(std::wstring_view text);

}  // namespace varnel
