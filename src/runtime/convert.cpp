#include "runtime/convert.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "runtime/automation_error.h"
#include "runtime/format.h"
#include "runtime/significant_digits.h"

namespace ostrel {
namespace {

// Blanks around a number, as the run time's parser skips them: spaces,
// tabs and line ends alike.
bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// A text read as a number. Decimal numbers become a double; "&H" and "&O"
// numbers keep their bit pattern, since CInt and CLng read it differently.
struct ParsedNumber {
    bool radix = false;
    uint64_t bits = 0;   // radix numbers, saturated above 32 bits
    double value = 0.0;  // decimal numbers
    bool overflow = false;
};

constexpr uint64_t kBitsLimit = 0x1'0000'0000ull;  // anything above fits no 32-bit pattern

std::optional<ParsedNumber> parseRadix(std::string_view text, size_t at, size_t end) {
    const char kind = text[at + 1];
    const unsigned shift = (kind == 'H' || kind == 'h') ? 4 : (kind == 'O' || kind == 'o') ? 3 : 0;
    if (shift == 0) return std::nullopt;
    ParsedNumber number;
    number.radix = true;
    size_t i = at + 2;
    if (i == end) return std::nullopt;
    for (; i < end; ++i) {
        const char c = text[i];
        unsigned digit = 0;
        if (isDigit(c)) {
            digit = static_cast<unsigned>(c - '0');
        } else if (shift == 4 && c >= 'a' && c <= 'f') {
            digit = static_cast<unsigned>(c - 'a' + 10);
        } else if (shift == 4 && c >= 'A' && c <= 'F') {
            digit = static_cast<unsigned>(c - 'A' + 10);
        } else {
            return std::nullopt;
        }
        if (digit >= (1u << shift)) return std::nullopt;
        number.bits = (number.bits << shift) | digit;
        if (number.bits >= kBitsLimit) {
            number.overflow = true;
            number.bits = kBitsLimit;
        }
    }
    return number;
}

// Blanks; "&H"/"&O" numbers; or an optional sign (in front or behind) or
// parentheses for a negative number, digits with "," between them, one
// "." and an exponent. The decimal point is always ".": these texts come
// from the registry, the settings file and WMI, not from the user's
// keyboard, so the reading must not change with the machine's locale.
// Currency symbols are not read.
std::optional<ParsedNumber> parseNumber(std::string_view text) {
    size_t at = 0, end = text.size();
    while (at < end && isBlank(text[at])) ++at;
    while (end > at && isBlank(text[end - 1])) --end;
    if (at == end) return std::nullopt;
    if (text[at] == '&') return end - at >= 2 ? parseRadix(text, at, end) : std::nullopt;

    bool negative = false, signSeen = false, parens = false;
    if (text[at] == '+' || text[at] == '-') {
        negative = text[at] == '-';
        signSeen = true;
        ++at;
    } else if (text[at] == '(') {
        parens = true;
        negative = true;
        ++at;
    }
    if (parens) {
        if (end == at || text[end - 1] != ')') return std::nullopt;
        --end;
    } else if (!signSeen && end > at && (text[end - 1] == '+' || text[end - 1] == '-')) {
        negative = text[end - 1] == '-';
        --end;
    }

    std::string plain;  // what from_chars reads: digits, '.', exponent
    size_t digits = 0;
    size_t i = at;
    for (; i < end; ++i) {
        if (isDigit(text[i])) {
            plain.push_back(text[i]);
            ++digits;
        } else if (text[i] == ',' && digits > 0) {
            // thousands separator: read and dropped
        } else {
            break;
        }
    }
    if (i < end && text[i] == '.') {
        plain.push_back('.');
        for (++i; i < end && isDigit(text[i]); ++i) {
            plain.push_back(text[i]);
            ++digits;
        }
    }
    if (digits == 0) return std::nullopt;
    if (i < end && (text[i] == 'e' || text[i] == 'E')) {
        plain.push_back('e');
        ++i;
        if (i < end && (text[i] == '+' || text[i] == '-')) plain.push_back(text[i++]);
        const size_t firstExponentDigit = i;
        for (; i < end && isDigit(text[i]); ++i) plain.push_back(text[i]);
        if (i == firstExponentDigit) return std::nullopt;
    }
    if (i != end) return std::nullopt;

    ParsedNumber number;
    const auto [ptr, ec] = std::from_chars(plain.data(), plain.data() + plain.size(), number.value);
    if (ec == std::errc::result_out_of_range) {
        // Too small reads as 0, too large is an overflow; the exponent's
        // sign tells which.
        const size_t e = plain.find('e');
        const bool tiny = e != std::string::npos && plain[e + 1] == '-';
        if (!tiny) number.overflow = true;
        number.value = 0.0;
    } else if (ec != std::errc()) {
        return std::nullopt;
    }
    if (negative) number.value = -number.value;
    return number;
}

ParsedNumber parseOrRaise(std::string_view text) {
    const auto number = parseNumber(text);
    if (!number) raise(kErrTypeMismatch);
    if (number->overflow) raise(kErrOverflow);
    return *number;
}

// Banker's rounding, which does not depend on the floating-point rounding mode.
double roundHalfEven(double value) {
    const double below = std::floor(value);
    const double rest = value - below;
    if (rest > 0.5) return below + 1.0;
    if (rest < 0.5) return below;
    return std::fmod(below, 2.0) == 0.0 ? below : below + 1.0;
}

std::string doubleText(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
    if (value == 0.0) return "0";
    const SignificantDigits d = significantDigits(value);
    std::string out = value < 0 ? "-" : "";
    const int count = static_cast<int>(d.digits.size());
    if (d.exponent >= 15 || d.exponent < -4) {
        // 1.5E+20, 1E-05: what printf's %G writes, as CStr does
        out += d.digits.substr(0, 1);
        if (count > 1) out += "." + d.digits.substr(1);
        const int magnitude = std::abs(d.exponent);
        out += d.exponent < 0 ? "E-" : "E+";
        if (magnitude < 10) out += '0';
        out += std::to_string(magnitude);
    } else if (d.exponent < 0) {
        out += "0." + std::string(static_cast<size_t>(-d.exponent - 1), '0') + d.digits;
    } else if (count <= d.exponent + 1) {
        out += d.digits + std::string(static_cast<size_t>(d.exponent + 1 - count), '0');
    } else {
        const auto whole = static_cast<size_t>(d.exponent + 1);
        out += d.digits.substr(0, whole) + "." + d.digits.substr(whole);
    }
    return out;
}

// CStr of a date: the date, the time, or both, in a fixed ISO-like form;
// the day 30 Dec 1899 shows the time only and midnight the date only, as
// the run time leaves them out.
std::string dateText(double value) {
    const DateTimeParts parts = fromCalendarValue(value);
    const LocaleFacts neutral;
    const bool hasTime = parts.hour != 0 || parts.minute != 0 || parts.second != 0;
    if (std::trunc(value) == 0.0) return formatDate(parts, "hh:nn:ss", neutral);
    if (!hasTime) return formatDate(parts, "yyyy-mm-dd", neutral);
    return formatDate(parts, "yyyy-mm-dd hh:nn:ss", neutral);
}

template <class Result, class FromText, class FromNumber>
Result convertVariant(const Variant& value, FromText fromText, FromNumber fromNumber) {
    return std::visit(
        [&](const auto& v) -> Result {
            using V = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<V, EmptyValue>) {
                return fromNumber(0.0);
            } else if constexpr (std::is_same_v<V, NullValue>) {
                raise(kErrInvalidNull);
            } else if constexpr (std::is_same_v<V, bool>) {
                return fromNumber(v ? -1.0 : 0.0);  // True is -1
            } else if constexpr (std::is_same_v<V, DateValue>) {
                return fromNumber(v.value);
            } else if constexpr (std::is_same_v<V, std::string>) {
                return fromText(v);
            } else if constexpr (std::is_same_v<V, Ref<Object>>) {
                raise(kErrTypeMismatch);
            } else {
                return fromNumber(static_cast<double>(v));
            }
        },
        value.storage());
}

}  // namespace

bool isNumeric(std::string_view text) {
    const auto number = parseNumber(text);
    return number && !number->overflow;
}

bool isNumeric(const char* text) {
    return isNumeric(std::string_view(text));
}
bool isNumeric(const std::string& text) {
    return isNumeric(std::string_view(text));
}

bool isNumeric(const Variant& value) {
    if (const auto* text = value.getIf<std::string>()) return isNumeric(*text);
    // Empty counts as 0; a date is no number to IsNumeric though it converts.
    return value.isEmpty() || (value.isNumber() && !value.getIf<DateValue>());
}

double toDouble(std::string_view text) {
    const ParsedNumber number = parseOrRaise(text);
    if (number.radix) return static_cast<int32_t>(static_cast<uint32_t>(number.bits));
    return number.value;
}

int32_t toLong(std::string_view text) {
    const ParsedNumber number = parseOrRaise(text);
    // "&HFFFFFFFF" is -1: the digits are a 32-bit pattern.
    if (number.radix) return static_cast<int32_t>(static_cast<uint32_t>(number.bits));
    return roundToLong(number.value);
}

int16_t toInteger(std::string_view text) {
    const ParsedNumber number = parseOrRaise(text);
    // "&HFFFF" is -1 here but 65535 to toLong: a 16-bit pattern.
    if (number.radix) {
        if (number.bits > 0xFFFF) raise(kErrOverflow);
        return static_cast<int16_t>(static_cast<uint16_t>(number.bits));
    }
    return narrowToInteger(roundToLong(number.value));
}

double toDouble(const char* text) {
    return toDouble(std::string_view(text));
}
double toDouble(const std::string& text) {
    return toDouble(std::string_view(text));
}
int32_t toLong(const char* text) {
    return toLong(std::string_view(text));
}
int32_t toLong(const std::string& text) {
    return toLong(std::string_view(text));
}
int16_t toInteger(const char* text) {
    return toInteger(std::string_view(text));
}
int16_t toInteger(const std::string& text) {
    return toInteger(std::string_view(text));
}

int32_t toLong(const Variant& value) {
    return convertVariant<int32_t>(
        value, [](const std::string& text) { return toLong(std::string_view(text)); },
        [](double number) { return roundToLong(number); });
}

int16_t toInteger(const Variant& value) {
    return convertVariant<int16_t>(
        value, [](const std::string& text) { return toInteger(std::string_view(text)); },
        [](double number) { return narrowToInteger(roundToLong(number)); });
}

double toDouble(const Variant& value) {
    return convertVariant<double>(
        value, [](const std::string& text) { return toDouble(std::string_view(text)); },
        [](double number) { return number; });
}

int16_t narrowToInteger(int32_t value) {
    if (value < std::numeric_limits<int16_t>::min() ||
        value > std::numeric_limits<int16_t>::max()) {
        raise(kErrOverflow);
    }
    return static_cast<int16_t>(value);
}

int32_t roundToLong(double value) {
    if (std::isnan(value)) raise(kErrOverflow);
    const double rounded = roundHalfEven(value);
    if (rounded < -2147483648.0 || rounded > 2147483647.0) raise(kErrOverflow);
    return static_cast<int32_t>(rounded);
}

std::string toText(const Variant& value) {
    return std::visit(
        [](const auto& v) -> std::string {
            using V = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<V, EmptyValue>) {
                return {};
            } else if constexpr (std::is_same_v<V, NullValue>) {
                raise(kErrInvalidNull);
            } else if constexpr (std::is_same_v<V, bool>) {
                return v ? "True" : "False";
            } else if constexpr (std::is_same_v<V, double>) {
                return doubleText(v);
            } else if constexpr (std::is_same_v<V, DateValue>) {
                return dateText(v.value);
            } else if constexpr (std::is_same_v<V, std::string>) {
                return v;
            } else if constexpr (std::is_same_v<V, Ref<Object>>) {
                raise(kErrTypeMismatch);
            } else {
                return std::to_string(v);
            }
        },
        value.storage());
}

}  // namespace ostrel
