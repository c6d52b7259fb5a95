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
// "&H" hexadecimal and "&O" octal. Empty or blank text is not numeric, nor
// is a number too large for a double. The decimal point is always ".",
// whatever the machine's locale; "," between digits is a thousands separator.
bool isNumeric(std::string_view text);
// IsNumeric of a Variant: numbers, booleans and Empty are numeric, a string
// by the text rules; Null, dates and objects are not.
bool isNumeric(const Variant& value);

// Text to a number, raising 13 for non-numeric or empty text.
double toDouble(std::string_view text);
// Text to 32-bit (CLng) and 16-bit (CInt): banker's rounding, 6 on overflow, 13 for no number.
int32_t toLong(std::string_view text);
int16_t toInteger(std::string_view text);
// The same from a Variant: Empty is 0, Null raises 94 "Invalid use of Null"... as the run time
// does.
int32_t toLong(const Variant& value);
int16_t toInteger(const Variant& value);
double toDouble(const Variant& value);

// The same for the two usual kinds of text, so that a call with a literal
// or a std::string picks the text rules without ambiguity.
bool isNumeric(const char* text);
bool isNumeric(const std::string& text);
double toDouble(const char* text);
double toDouble(const std::string& text);
int32_t toLong(const char* text);
int32_t toLong(const std::string& text);
int16_t toInteger(const char* text);
int16_t toInteger(const std::string& text);

// A 32-bit value into 16 bits, with the range check: error 6 outside -32768..32767.
int16_t narrowToInteger(int32_t value);
// Banker's rounding of a double into 32 bits, error 6 when out of range.
int32_t roundToLong(double value);

// CStr of a Variant: numbers in plain decimal (doubles with 15 significant
// digits, "1E+20" beyond), booleans "True"/"False", Empty as "", Null
// raises 94, an object 13. A date is written "yyyy-mm-dd hh:nn:ss" whatever
// the locale, without the date on day 0 and without the time at midnight.
std::string toText(const Variant& value);

}  // namespace ostrel
