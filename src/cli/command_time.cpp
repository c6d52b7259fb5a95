// time to-gmt|from-gmt|now-gmt: the time conversions, date-times written
// "yyyy-mm-dd hh:nn:ss" both ways (a fraction of a second may follow the
// seconds on the way in). An error the routine raises goes to stderr with
// its number and description, exit 1.
#include <charconv>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "commands.h"
#include "foundation/time_conversion.h"
#include "output.h"
#include "runtime/automation_error.h"
#include "runtime/format.h"

namespace ostrel::cli {

namespace {

std::string given;
CLI::App* toGmt = nullptr;
CLI::App* fromGmt = nullptr;

// The run of digits at `at` (no sign, no exponent), moving past it.
std::string_view digitsAt(const char*& at, const char* end) {
    const char* const first = at;
    while (at != end && *at >= '0' && *at <= '9') ++at;
    return {first, static_cast<size_t>(at - first)};
}

bool dayExists(const DateTimeParts& parts) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = parts.year % 4 == 0 && (parts.year % 100 != 0 || parts.year % 400 == 0);
    return parts.day <= kDays[parts.month - 1] + (parts.month == 2 && leap ? 1 : 0);
}

// "yyyy-mm-dd hh:nn:ss[.fff]" as a calendar value; nullopt when it isn't one
// or names a day the calendar doesn't have.
std::optional<double> readDate(std::string_view text) {
    DateTimeParts parts;
    int* const fields[] = {&parts.year, &parts.month,  &parts.day,
                           &parts.hour, &parts.minute, &parts.second};
    constexpr char separators[] = {0, '-', '-', ' ', ':', ':'};  // before each field
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    for (size_t i = 0; i < 6; ++i) {
        if (i > 0 && (at == end || *at++ != separators[i])) return std::nullopt;
        const std::string_view digits = digitsAt(at, end);
        if (digits.empty() || std::from_chars(digits.data(), at, *fields[i]).ec != std::errc())
            return std::nullopt;
    }
    double fraction = 0;
    if (at != end && *at == '.') {
        const char* const point = at++;
        if (digitsAt(at, end).empty()) return std::nullopt;
        std::from_chars(point, at, fraction);
    }
    if (at != end || parts.month < 1 || parts.month > 12 || parts.day < 1 || !dayExists(parts) ||
        parts.hour > 23 || parts.minute > 59 || parts.second > 59) {
        return std::nullopt;
    }
    try {
        return toCalendarValue(parts) + fraction / 86400.0;
    } catch (const AutomationError&) {
        return std::nullopt;
    }
}

int run() {
    double result = 0;
    try {
        if (toGmt->parsed() || fromGmt->parsed()) {
            const std::optional<double> date = readDate(given);
            if (!date) {
                std::cerr << "ostrel: not a date-time \"yyyy-mm-dd hh:nn:ss\": " << given << '\n';
                return kExitUsage;
            }
            result = toGmt->parsed() ? gfdatConvertToGMT(*date) : gfdatConvertFromGMT(*date);
        } else {
            result = gfdatNowGMT();
        }
        const std::string text =
            formatDate(fromCalendarValue(result), "yyyy-mm-dd hh:nn:ss", LocaleFacts{});
        return emit(Record{{"DateTime", text}}, text, kExitOk);
    } catch (const AutomationError& error) {
        std::cerr << "ostrel: error " << error.number << ": " << error.description << '\n';
        return kExitFailure;
    }
}

[[maybe_unused]] const bool registered = registerCommand({
    "time",
    "Convert a local date-time to GMT (by the offset in force now) or back (by the rule of the "
    "date), or print the time in GMT now",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        toGmt = app.add_subcommand("to-gmt", "The local date-time in GMT");
        toGmt->add_option("DATETIME", given, "yyyy-mm-dd hh:nn:ss")->required();
        fromGmt = app.add_subcommand("from-gmt", "The GMT date-time in local time");
        fromGmt->add_option("DATETIME", given, "yyyy-mm-dd hh:nn:ss")->required();
        app.add_subcommand("now-gmt", "The time now in GMT");
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
