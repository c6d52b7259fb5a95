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
};

// Format(number, "00"), Format(number, "0.0") and the like: '0' digit
// placeholders, '#' optional digits, one '.' for the locale's separator;
// rounding half away from zero as Format does.
std::string formatNumber(double value, std::string_view format, const LocaleFacts& locale);

// A local date and time, as the clock port gives it.
struct DateTimeParts {
    int year = 1899, month = 12, day = 30, hour = 0, minute = 0, second = 0;
    friend bool operator==(const DateTimeParts&, const DateTimeParts&) = default;
};

// The calendar value: whole part days since 30 Dec 1899, fraction the time.
double toCalendarValue(const DateTimeParts& parts);
DateTimeParts fromCalendarValue(double value);

// Format(date, "hh:nn:ss dd-mmm-yyyy"): the tokens yyyy, yy, mmm, mm,
// m, dd, d, hh, h, nn, n, ss, s; other characters are copied.
std::string formatDate(const DateTimeParts& parts, std::string_view format,
                       const LocaleFacts& locale);

}  // namespace ostrel
