#include "runtime/format.h"

#include <cmath>
#include <cstdint>

#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/significant_digits.h"

namespace ostrel {
namespace {

// ---- numbers -------------------------------------------------------------

// The digit part of a number format, with the literal text around it.
struct NumberPattern {
    std::string prefix, suffix;
    int integerMinimum = 0;  // '0's from the first '0' before the point
    bool grouped = false;    // a ',' among the integer placeholders
    bool point = false;
    int fractionMinimum = 0;  // up to the last '0' after the point
    int fractionMaximum = 0;  // every placeholder after the point
};

// Reads the first section of the format (up to ';'). Literal text is kept
// before and after the digits; inside them it is not supported.
NumberPattern readPattern(std::string_view format) {
    NumberPattern p;
    bool digitsSeen = false, zeroSeen = false;
    const auto literal = [&](char c) {
        (digitsSeen || p.point ? p.suffix : p.prefix).push_back(c);
    };
    for (size_t i = 0; i < format.size(); ++i) {
        const char c = format[i];
        if (c == ';') break;
        if (c == '\\' && i + 1 < format.size()) {
            literal(format[++i]);
        } else if (c == '"') {
            for (++i; i < format.size() && format[i] != '"'; ++i) literal(format[i]);
        } else if ((c == '0' || c == '#') && !p.point) {
            digitsSeen = true;
            zeroSeen = zeroSeen || c == '0';
            if (zeroSeen) ++p.integerMinimum;
        } else if ((c == '0' || c == '#') && p.point) {
            ++p.fractionMaximum;
            if (c == '0') p.fractionMinimum = p.fractionMaximum;
        } else if (c == '.' && !p.point) {
            p.point = true;
        } else if (c == ',' && digitsSeen && !p.point) {
            p.grouped = true;
        } else {
            literal(c);
        }
    }
    return p;
}

// |value| as whole and fraction digits, rounded half away from zero at
// `decimals` places on the 15-digit decimal form, as Format rounds: 2.675
// is 2.68 though its double lies a little below.
void roundedDigits(double value, int decimals, std::string& whole, std::string& fraction) {
    const SignificantDigits d = significantDigits(value);
    whole.clear();
    fraction.clear();
    const int count = static_cast<int>(d.digits.size());
    for (int k = 0; k < count; ++k) {
        const int power = d.exponent - k;
        (power >= 0 ? whole : fraction).push_back(d.digits[static_cast<size_t>(k)]);
    }
    if (d.exponent < 0) {
        fraction.insert(0, static_cast<size_t>(-d.exponent - 1), '0');
    } else if (count <= d.exponent) {
        whole.append(static_cast<size_t>(d.exponent + 1 - count), '0');
    }
    if (whole.empty()) whole = "0";

    const auto keep = static_cast<size_t>(decimals);
    const bool roundUp = fraction.size() > keep && fraction[keep] >= '5';
    fraction.resize(keep, '0');
    if (!roundUp) return;
    std::string all = whole + fraction;
    size_t at = all.size();
    while (at > 0 && all[at - 1] == '9') all[--at] = '0';
    if (at == 0) {
        all.insert(0, 1, '1');
    } else {
        ++all[at - 1];
    }
    whole = all.substr(0, all.size() - keep);
    fraction = all.substr(all.size() - keep);
}

std::string groupThousands(const std::string& digits, const std::string& separator) {
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) out += separator;
        out.push_back(digits[i]);
    }
    return out;
}

// ---- dates ---------------------------------------------------------------

constexpr int kFirstYear = 100, kLastYear = 9999;  // the calendar's range
constexpr int64_t kSecondsPerDay = 86400;

int64_t floorDiv(int64_t a, int64_t b) {
    return a / b - ((a % b != 0) && ((a < 0) != (b < 0)));
}

// Days from 1 Jan 1970 of a proleptic Gregorian date, month 1..12.
int64_t daysFromCivil(int64_t year, int64_t month, int64_t day) {
    year -= month <= 2;
    const int64_t era = floorDiv(year, 400);
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

void civilFromDays(int64_t days, int& year, int& month, int& day) {
    days += 719468;
    const int64_t era = floorDiv(days, 146097);
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t mp = (5 * dayOfYear + 2) / 153;
    day = static_cast<int>(dayOfYear - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(yearOfEra + era * 400 + (month <= 2));
}

const int64_t kEpochDays = daysFromCivil(1899, 12, 30);

std::string twoDigits(int value) {
    std::string text = std::to_string(value);
    return text.size() < 2 ? "0" + text : text;
}

// How many of the letter `c` (either case) start the text at `at`.
size_t runOf(std::string_view text, size_t at, char c) {
    size_t n = 0;
    while (at + n < text.size() && (text[at + n] | 0x20) == c) ++n;
    return n;
}

}  // namespace

std::string formatNumber(double value, std::string_view format, const LocaleFacts& locale) {
    const NumberPattern p = readPattern(format);
    if (format.empty()) {
        // no pattern: CStr's form, with the locale's separator
        std::string text = toText(Variant(value));
        const size_t point = text.find('.');
        if (point != std::string::npos) text.replace(point, 1, locale.decimalSeparator);
        return text;
    }

    std::string whole, fraction;
    const bool digitsOnly = !p.point && !p.grouped && p.prefix.empty() && p.suffix.empty();
    if (digitsOnly && value == std::trunc(value) && std::fabs(value) < 1e15) {
        // A whole number into digit placeholders: nothing to round, and the
        // commonest use ("00"), so it skips the decimal expansion.
        const auto magnitude = static_cast<int64_t>(std::fabs(value));
        whole = magnitude == 0 ? std::string() : std::to_string(magnitude);
        if (static_cast<int>(whole.size()) < p.integerMinimum) {
            whole.insert(0, static_cast<size_t>(p.integerMinimum) - whole.size(), '0');
        }
        return value < 0 ? "-" + whole : whole;
    }
    roundedDigits(value, p.fractionMaximum, whole, fraction);
    while (static_cast<int>(fraction.size()) > p.fractionMinimum && fraction.back() == '0') {
        fraction.pop_back();
    }
    if (whole == "0") whole.clear();
    if (static_cast<int>(whole.size()) < p.integerMinimum) {
        whole.insert(0, static_cast<size_t>(p.integerMinimum) - whole.size(), '0');
    }
    if (p.grouped) whole = groupThousands(whole, locale.thousandsSeparator);

    // kept: like Format, a negative value keeps its sign even when it
    // rounds to nothing ("-0.0").
    std::string out = value < 0 ? "-" : "";
    out += p.prefix + whole;
    if (p.point) out += locale.decimalSeparator + fraction;  // "5." for "0.#": Format's way
    out += p.suffix;
    return out;
}

double toCalendarValue(const DateTimeParts& parts) {
    // Months and seconds beyond their range carry over, as DateSerial and
    // TimeSerial let them.
    const int64_t months = int64_t{parts.year} * 12 + (parts.month - 1);
    const int64_t days =
        daysFromCivil(floorDiv(months, 12), months - floorDiv(months, 12) * 12 + 1, 1) +
        (parts.day - 1) - kEpochDays;
    const int64_t total = days * kSecondsPerDay + int64_t{parts.hour} * 3600 +
                          int64_t{parts.minute} * 60 + parts.second;
    const int64_t day = floorDiv(total, kSecondsPerDay);
    const int64_t second = total - day * kSecondsPerDay;
    const int64_t first = daysFromCivil(kFirstYear, 1, 1) - kEpochDays;
    const int64_t last = daysFromCivil(kLastYear, 12, 31) - kEpochDays;
    if (day < first || day > last) raise(kErrInvalidCall);
    const double time = static_cast<double>(second) / static_cast<double>(kSecondsPerDay);
    // Before the epoch the fraction still counts forward from midnight: the
    // value is the day's number minus the time.
    return day < 0 ? static_cast<double>(day) - time : static_cast<double>(day) + time;
}

DateTimeParts fromCalendarValue(double value) {
    const double first = static_cast<double>(daysFromCivil(kFirstYear, 1, 1) - kEpochDays);
    const double last = static_cast<double>(daysFromCivil(kLastYear, 12, 31) - kEpochDays + 1);
    if (!(value > first - 1.0 && value < last)) raise(kErrOverflow);
    double whole = std::trunc(value);
    int64_t second = std::llround(std::fabs(value - whole) * static_cast<double>(kSecondsPerDay));
    if (second >= kSecondsPerDay) {  // rounds up into the next day, away from the epoch
        second -= kSecondsPerDay;
        whole += value < 0 ? -1.0 : 1.0;
    }
    DateTimeParts parts;
    civilFromDays(static_cast<int64_t>(whole) + kEpochDays, parts.year, parts.month, parts.day);
    parts.hour = static_cast<int>(second / 3600);
    parts.minute = static_cast<int>(second / 60 % 60);
    parts.second = static_cast<int>(second % 60);
    return parts;
}

double dateAdd(TimeInterval interval, int32_t number, double date) {
    DateTimeParts parts = fromCalendarValue(date);
    switch (interval) {
        case TimeInterval::Hour:
            parts.hour += number;
            break;
        case TimeInterval::Minute:
            parts.minute += number;
            break;
        case TimeInterval::Second:
            parts.second += number;
            break;
    }
    return toCalendarValue(parts);
}

int weekdayFromMonday(double date) {
    const DateTimeParts parts = fromCalendarValue(date);
    // 1 Jan 1970 was a Thursday, the fourth day of a week from Monday.
    const int64_t days = daysFromCivil(parts.year, parts.month, parts.day);
    return static_cast<int>(days - floorDiv(days + 3, 7) * 7 + 3) + 1;
}

std::string formatDate(const DateTimeParts& parts, std::string_view format,
                       const LocaleFacts& locale) {
    std::string out;
    bool afterHour = false;  // "m" right after an hour is the minute, as Format has it
    for (size_t at = 0; at < format.size();) {
        const char c = static_cast<char>(format[at] | 0x20);
        size_t run = 0;
        if (c == 'y') {
            run = runOf(format, at, 'y');
            if (run >= 4) {
                out += std::to_string(parts.year);
                run = 4;
            } else if (run >= 2) {
                out += twoDigits(parts.year % 100);
                run = 2;
            } else {
                const int64_t dayOfYear = daysFromCivil(parts.year, parts.month, parts.day) -
                                          daysFromCivil(parts.year, 1, 1) + 1;
                out += std::to_string(dayOfYear);
            }
            afterHour = false;
        } else if (c == 'm') {
            run = runOf(format, at, 'm');
            if (run >= 3 && !afterHour) {
                if (parts.month < 1 || parts.month > 12) raise(kErrInvalidCall);
                out += locale.monthAbbreviations[static_cast<size_t>(parts.month - 1)];
                run = 3;
            } else {
                run = run >= 2 ? 2 : 1;
                const int number = afterHour ? parts.minute : parts.month;
                out += run == 2 ? twoDigits(number) : std::to_string(number);
            }
            afterHour = false;
        } else if (c == 'd' || c == 'h' || c == 'n' || c == 's') {
            run = runOf(format, at, c) >= 2 ? 2 : 1;
            const int number = c == 'd'   ? parts.day
                               : c == 'h' ? parts.hour
                               : c == 'n' ? parts.minute
                                          : parts.second;
            out += run == 2 ? twoDigits(number) : std::to_string(number);
            afterHour = c == 'h';
        } else if (format[at] == '\\' && at + 1 < format.size()) {
            out.push_back(format[at + 1]);
            run = 2;
        } else if (format[at] == '"') {
            const size_t close = format.find('"', at + 1);
            const size_t stop = close == std::string_view::npos ? format.size() : close;
            out.append(format.substr(at + 1, stop - at - 1));
            run = stop + 1 - at;
        } else {
            out.push_back(format[at]);  // separators are copied as they stand
            run = 1;
        }
        at += run;
    }
    return out;
}

}  // namespace ostrel
