// Conversions with the automation run time's rules (CLng, CInt, IsNumeric,
// CStr): blanks allowed around a number, banker's rounding of fractions,
// error 13 for text that is no number, error 6 on overflow.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/variant.h"

namespace ostrel {

// True when the text reads as a number under the run time's rules: blanks
// around it, an optional sign, digits with an optional fraction and exponent,
// "&H" hexadecimal and "&O" octal. Empty or blank text is not numeric.
bool isNumeric(std::string_view text);

// Text to a number, raising 13 for non-numeric or empty text.
double toDouble(std::string_view text);
// Text to 32-bit (CLng) and 16-bit (CInt): banker's rounding, 6 on overflow, 13 for no number.
int32_t toLong(std::string_view text);
int16_t toInteger(std::string_view text);
// The same from a Variant: Empty is 0, Null raises 94 "Invalid use of Null"... as the run time does.
int32_t toLong(const Variant& value);
int16_t toInteger(const Variant& value);
double toDouble(const Variant& value);

// A 32-bit value into 16 bits, with the range check: error 6 outside -32768..32767.
int16_t narrowToInteger(int32_t value);
// Banker's rounding of a double into 32 bits, error 6 when out of range.
int32_t roundToLong(double value);

// CStr of a Variant: numbers in plain decimal, booleans "True"/"False",
// Empty as "", Null raises 94.
std::string toText(const Variant& value);

}  // namespace ostrel
