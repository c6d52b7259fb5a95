// A double as the run time sees it when it writes one: 15 significant
// decimal digits, the rest rounded away. Shared by CStr and Format.
#pragma once

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>
#include <system_error>

namespace ostrel {

// digits: no trailing zeros, at least one digit ("0" for zero);
// exponent: the power of ten of the first digit (123.4 is "1234", 2).
struct SignificantDigits {
    std::string digits;
    int exponent = 0;
};

// The magnitude of a finite value; its sign is the caller's business.
inline SignificantDigits significantDigits(double value) {
    SignificantDigits out{"0", 0};
    if (value == 0.0 || !std::isfinite(value)) return out;
    char buffer[40];
    // to_chars, unlike printf, ignores the C locale's decimal point.
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value),
                                         std::chars_format::scientific, 14);
    if (ec != std::errc()) return out;
    const std::string text(buffer, end);  // d.ddddddddddddddde+XX
    const size_t e = text.find('e');
    out.digits = text.substr(0, 1) + text.substr(2, e - 2);
    out.exponent = std::atoi(text.c_str() + e + 1);
    while (out.digits.size() > 1 && out.digits.back() == '0') out.digits.pop_back();
    return out;
}

}  // namespace ostrel
