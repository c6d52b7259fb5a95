#include "runtime/convert.h"

#include <gtest/gtest.h>

#include "fakes/error_number.h"

#include <clocale>
#include <cmath>
#include <optional>
#include <string>

#include "runtime/automation_error.h"

namespace ostrel {
namespace {

using fakes::errorNumberOf;

struct TextCase {
    const char* text;
    double value;  // what CLng/CInt give when error is 0
    int32_t error;
};

TEST(Convert, TextToLong) {
    const TextCase cases[] = {
        {"42", 42, 0},
        {"  42  ", 42, 0},
        {"\t42\r\n", 42, 0},
        {"+7", 7, 0},
        {"-7", -7, 0},
        {"7-", -7, 0},
        {"(7)", -7, 0},
        {"2.5", 2, 0},  // banker's rounding
        {"3.5", 4, 0},
        {"-2.5", -2, 0},
        {"2.5000001", 3, 0},
        {".5", 0, 0},
        {"1.5e1", 15, 0},
        {"1,000", 1000, 0},
        {"&HFF", 255, 0},
        {"&hffff", 65535, 0},
        {"&HFFFFFFFF", -1, 0},
        {"&O17", 15, 0},
        {"2147483647", 2147483647, 0},
        {"-2147483648", -2147483648.0, 0},
        {"2147483648", 0, 6},
        {"2147483647.5", 0, 6},
        {"&H100000000", 0, 6},
        {"1e400", 0, 6},
        {"", 0, 13},
        {"   ", 0, 13},
        {"abc", 0, 13},
        {"12abc", 0, 13},
        {"1 2", 0, 13},
        {"1.2.3", 0, 13},
        {"1e", 0, 13},
        {"--1", 0, 13},
        {"-1-", 0, 13},
        {",5", 0, 13},
        {".", 0, 13},
        {"&H", 0, 13},
        {"&HG", 0, 13},
        {"&O8", 0, 13},
        {"1,5", 15, 0},  // kept: a thousands separator is read anywhere between digits
    };
    for (const TextCase& c : cases) {
        SCOPED_TRACE(c.text);
        if (c.error != 0) {
            EXPECT_EQ(errorNumberOf([&] { toLong(c.text); }), c.error);
            if (c.error == 13) {
                EXPECT_FALSE(isNumeric(c.text));
            }
        } else {
            EXPECT_EQ(toLong(c.text), static_cast<int32_t>(c.value));
            EXPECT_TRUE(isNumeric(c.text));
        }
    }
}

TEST(Convert, TextToInteger) {
    const TextCase cases[] = {
        {"32767", 32767, 0}, {"-32768", -32768, 0}, {"32768", 0, 6},   {"-32769", 0, 6},
        {"32767.5", 0, 6},   {"-2.5", -2, 0},       {"&HFFFF", -1, 0}, {"&H8000", -32768, 0},
        {"&H10000", 0, 6},   {" 12 ", 12, 0},       {"x", 0, 13},      {"", 0, 13},
        {"1e3", 1000, 0},    {"0.5", 0, 0},         {"1.5", 2, 0},
    };
    for (const TextCase& c : cases) {
        SCOPED_TRACE(c.text);
        if (c.error != 0) {
            EXPECT_EQ(errorNumberOf([&] { toInteger(c.text); }), c.error);
        } else {
            EXPECT_EQ(toInteger(c.text), static_cast<int16_t>(c.value));
        }
    }
}

TEST(Convert, TextToDoubleIsLocaleFree) {
    // A C locale with a decimal comma must change nothing (where the
    // machine has one).
    const std::string saved = std::setlocale(LC_NUMERIC, nullptr);
    const bool switched = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr ||
                          std::setlocale(LC_NUMERIC, "German") != nullptr;
    EXPECT_DOUBLE_EQ(toDouble("1.25"), 1.25);
    EXPECT_EQ(toText(Variant(0.5)), "0.5");
    if (switched) std::setlocale(LC_NUMERIC, saved.c_str());

    EXPECT_DOUBLE_EQ(toDouble(" -1.5E-3 "), -0.0015);
    EXPECT_DOUBLE_EQ(toDouble("1,234.5"), 1234.5);
    EXPECT_DOUBLE_EQ(toDouble("&HFFFF"), 65535);
    EXPECT_DOUBLE_EQ(toDouble("1e-400"), 0.0);
    EXPECT_EQ(errorNumberOf([] { toDouble("1e400"); }), 6);
    EXPECT_EQ(errorNumberOf([] { toDouble("1,5 kg"); }), 13);
    EXPECT_FALSE(isNumeric("1e400"));
    EXPECT_FALSE(isNumeric("&H123456789"));
    EXPECT_FALSE(isNumeric("$5"));
    std::string owned = "17";
    EXPECT_EQ(toLong(owned), 17);  // std::string picks the text rules, not Variant's
}

TEST(Convert, RoundingAndNarrowing) {
    EXPECT_EQ(roundToLong(0.5), 0);
    EXPECT_EQ(roundToLong(1.5), 2);
    EXPECT_EQ(roundToLong(-1.5), -2);
    EXPECT_EQ(roundToLong(-2147483648.4), -2147483647 - 1);
    EXPECT_EQ(errorNumberOf([] { roundToLong(-2147483648.6); }), 6);
    EXPECT_EQ(errorNumberOf([] { roundToLong(std::nan("")); }), 6);
    EXPECT_EQ(narrowToInteger(-32768), -32768);
    EXPECT_EQ(errorNumberOf([] { narrowToInteger(32768); }), 6);
}

TEST(Convert, VariantToNumber) {
    EXPECT_EQ(toLong(Variant()), 0);
    EXPECT_EQ(toLong(Variant(true)), -1);
    EXPECT_EQ(toLong(Variant(false)), 0);
    EXPECT_EQ(toLong(Variant(int16_t{-5})), -5);
    EXPECT_EQ(toLong(Variant(2.5)), 2);
    EXPECT_EQ(toLong(Variant(DateValue{3.5})), 4);
    EXPECT_EQ(toLong(Variant(" 12 ")), 12);
    EXPECT_EQ(toInteger(Variant("&HFFFF")), -1);
    EXPECT_EQ(toLong(Variant("&HFFFF")), 65535);
    EXPECT_EQ(errorNumberOf([] { toInteger(Variant(int32_t{40000})); }), 6);
    EXPECT_EQ(errorNumberOf([] { toLong(Variant(NullValue{})); }), 94);
    EXPECT_EQ(errorNumberOf([] { toDouble(Variant(NullValue{})); }), 94);
    EXPECT_EQ(errorNumberOf([] { toLong(Variant(makeRef<Object>())); }), 13);
    EXPECT_EQ(errorNumberOf([] { toLong(Variant("x")); }), 13);
    EXPECT_DOUBLE_EQ(toDouble(Variant(int32_t{7})), 7.0);
    EXPECT_DOUBLE_EQ(toDouble(Variant("0.25")), 0.25);

    EXPECT_TRUE(isNumeric(Variant()));
    EXPECT_TRUE(isNumeric(Variant(true)));
    EXPECT_TRUE(isNumeric(Variant(1.5)));
    EXPECT_TRUE(isNumeric(Variant(" 3 ")));
    EXPECT_FALSE(isNumeric(Variant("3 x")));
    EXPECT_FALSE(isNumeric(Variant(NullValue{})));
    EXPECT_FALSE(isNumeric(Variant(DateValue{1.0})));
    EXPECT_FALSE(isNumeric(Variant(makeRef<Object>())));
}

TEST(Convert, VariantToText) {
    const std::pair<Variant, const char*> cases[] = {
        {Variant(), ""},
        {Variant(true), "True"},
        {Variant(false), "False"},
        {Variant(int16_t{-3}), "-3"},
        {Variant(int32_t{2147483647}), "2147483647"},
        {Variant(0.5), "0.5"},
        {Variant(-0.0), "0"},
        {Variant(100.0), "100"},
        {Variant(1.0 / 3.0), "0.333333333333333"},
        {Variant(2.0 / 3.0), "0.666666666666667"},
        {Variant(123456789012345.0), "123456789012345"},
        {Variant(1e15), "1E+15"},
        {Variant(1.5e20), "1.5E+20"},
        {Variant(0.0001), "0.0001"},
        {Variant(0.00001), "1E-05"},
        {Variant(-1.25e-10), "-1.25E-10"},
        {Variant(0.1 + 0.2), "0.3"},
        {Variant("as is "), "as is "},
        {Variant(DateValue{0.75}), "18:00:00"},
        {Variant(DateValue{2.0}), "1900-01-01"},
        {Variant(DateValue{-1.25}), "1899-12-29 06:00:00"},
    };
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(toText(value), text);
    }
    EXPECT_EQ(errorNumberOf([] { toText(Variant(NullValue{})); }), 94);
    EXPECT_EQ(errorNumberOf([] { toText(Variant(makeRef<Object>())); }), 13);
}

}  // namespace
}  // namespace ostrel
