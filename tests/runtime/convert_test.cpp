#include "runtime/convert.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <string>

#include "fakes/error_number.h"
#include "runtime/automation_error.h"

namespace ostrel {
namespace {

using fakes::errorNumberOf;

TEST(Convert, TextToLongAndInteger) {
    // Banker's rounding; signs before, after or as brackets; a thousands
    // separator anywhere between digits; &H and &O.
    const std::pair<const char*, int32_t> longs[] = {
        {"\t42\r\n", 42},  {"7-", -7},         {"(7)", -7},   {"2.5", 2},  {"3.5", 4},
        {"-2.5", -2},      {"2.5000001", 3},   {"1.5e1", 15}, {"1,5", 15}, {"&HFF", 255},
        {"&hffff", 65535}, {"&HFFFFFFFF", -1}, {"&O17", 15},
    };
    for (const auto& [text, value] : longs) {
        EXPECT_EQ(toLong(text), value) << text;
        EXPECT_TRUE(isNumeric(text)) << text;
    }
    EXPECT_EQ(toLong("-2147483648"), INT32_MIN);
    EXPECT_EQ(toLong("2147483647"), INT32_MAX);
    // 13 for anything that isn't a number, 6 for a number out of range.
    const std::pair<const char*, int32_t> errors[] = {
        {"2147483648", 6}, {"2147483647.5", 6}, {"&H100000000", 6}, {"1e400", 6},  {"", 13},
        {"   ", 13},       {"12abc", 13},       {"1 2", 13},        {"1.2.3", 13}, {"1e", 13},
        {"--1", 13},       {",5", 13},          {".", 13},          {"&HG", 13},   {"&O8", 13},
    };
    for (const auto& [text, error] : errors) {
        EXPECT_EQ(errorNumberOf([&] { toLong(text); }), error) << text;
        if (error == 13) {
            EXPECT_FALSE(isNumeric(text)) << text;
        }
    }

    const std::pair<const char*, int32_t> integers[] = {
        {"-32768", -32768}, {"-2.5", -2}, {"&HFFFF", -1}, {"&H8000", -32768}, {"1e3", 1000},
    };
    for (const auto& [text, value] : integers) EXPECT_EQ(toInteger(text), value) << text;
    for (const char* text : {"32768", "-32769", "32767.5", "&H10000"}) {
        EXPECT_EQ(errorNumberOf([&] { toInteger(text); }), 6) << text;
    }
    EXPECT_EQ(errorNumberOf([] { toInteger("x"); }), 13);
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
    for (const char* text : {"1e400", "&H123456789", "$5"}) EXPECT_FALSE(isNumeric(text)) << text;
    std::string owned = "17";
    EXPECT_EQ(toLong(owned), 17);  // std::string picks the text rules, not Variant's
}

// Halves to even and the 16-bit range: the text rows above.
TEST(Convert, RoundingAtTheEdges) {
    EXPECT_EQ(roundToLong(-2147483648.4), -2147483647 - 1);
    EXPECT_EQ(errorNumberOf([] { roundToLong(-2147483648.6); }), 6);
    EXPECT_EQ(errorNumberOf([] { roundToLong(std::nan("")); }), 6);
}

TEST(Convert, VariantToNumber) {
    EXPECT_EQ(toLong(Variant()), 0);
    EXPECT_EQ(toLong(Variant(true)), -1);
    EXPECT_EQ(toLong(Variant(DateValue{3.5})), 4);
    EXPECT_EQ(toLong(Variant("&HFFFF")), 65535);
    EXPECT_EQ(toInteger(Variant("&HFFFF")), -1);
    EXPECT_DOUBLE_EQ(toDouble(Variant("0.25")), 0.25);
    EXPECT_EQ(errorNumberOf([] { toInteger(Variant(int32_t{40000})); }), 6);
    for (const auto& [value, error] :
         {std::pair{Variant(NullValue{}), 94}, std::pair{Variant(makeRef<Object>()), 13},
          std::pair{Variant("x"), 13}}) {
        EXPECT_EQ(errorNumberOf([&] { toLong(value); }), error);
        EXPECT_FALSE(isNumeric(value));
    }
    EXPECT_TRUE(isNumeric(Variant()));
    EXPECT_TRUE(isNumeric(Variant(" 3 ")));
    EXPECT_FALSE(isNumeric(Variant(DateValue{1.0})));
}

TEST(Convert, VariantToText) {
    const std::pair<Variant, const char*> cases[] = {
        {Variant(), ""},
        {Variant(true), "True"},
        {Variant(-0.0), "0"},
        {Variant(100.0), "100"},
        {Variant(2.0 / 3.0), "0.666666666666667"},
        {Variant(123456789012345.0), "123456789012345"},
        {Variant(1e15), "1E+15"},
        {Variant(0.0001), "0.0001"},
        {Variant(0.00001), "1E-05"},
        {Variant(0.1 + 0.2), "0.3"},
        {Variant(DateValue{0.75}), "18:00:00"},
        {Variant(DateValue{2.0}), "1900-01-01"},
        {Variant(DateValue{-1.25}), "1899-12-29 06:00:00"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(toText(value), text);
    EXPECT_EQ(errorNumberOf([] { toText(Variant(NullValue{})); }), 94);
    EXPECT_EQ(errorNumberOf([] { toText(Variant(makeRef<Object>())); }), 13);
}

}  // namespace
}  // namespace ostrel
