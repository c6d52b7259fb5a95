// Number and date formats as the run time's Format function writes them,
// with the locale's month names and decimal separator.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

// What a format needs to know of the user's locale.
struct LocaleFacts {
    std::array<std::string, 12> monthAbbreviations{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::string decimalSeparator = ".";
    std::string thousandsSeparator = ",";
};

// Format(number, "00"), Format(number, "0.0") and the like: '0' digit
// placeholders, '#' optional digits, one '.' for the locale's separator,
// ',' among the whole digits for its thousands separator; rounding half
// away from zero as Format does. Literal text may stand before and after
// the digits; only the first ';' section is read. An empty format gives
// the number in general form.
std::string formatNumber(double value, std::string_view format, const LocaleFacts& locale);

// A local date and time, as the clock port gives it.
struct DateTimeParts {
    int year = 1899, month = 12, day = 30, hour = 0, minute = 0, second = 0;
    friend bool operator==(const DateTimeParts&, const DateTimeParts&) = default;
};

// The calendar value: whole part days since 30 Dec 1899, fraction the time
// (before that day the fraction is still the time: -1.25 is 29 Dec 1899
// 06:00). Parts beyond their range carry over as DateSerial lets them; a
// date outside the years 100 to 9999 raises 5. The way back rounds to the
// second and raises 6 outside the calendar.
double toCalendarValue(const DateTimeParts& parts);
DateTimeParts fromCalendarValue(double value);

// DateAdd with the intervals of the time of day: "h" hours, "n" minutes,
// "s" seconds, added to the value's whole second; 5 outside the calendar.
enum class TimeInterval { Hour, Minute, Second };
double dateAdd(TimeInterval interval, int32_t number, double date);

// Weekday(date, vbMonday): Monday is 1, Sunday 7.
int weekdayFromMonday(double date);

// Format(date, "hh:nn:ss dd-mmm-yyyy"): the tokens yyyy, yy, y (day of the
// year), mmm, mm, m, dd, d, hh, h, nn, n, ss, s, in either case; "m" or
// "mm" right after an hour token is the minute. Other characters are
// copied, "\x" and "quoted" text literally; ':' and '/' are not replaced
// by the locale's separators.
std::string formatDate(const DateTimeParts& parts, std::string_view format,
                       const LocaleFacts& locale);

}  // namespace ostrel
