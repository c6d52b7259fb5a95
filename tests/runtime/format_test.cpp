#include "runtime/format.h"

#include <gtest/gtest.h>

#include "runtime/automation_error.h"

namespace ostrel {
namespace {

TEST(Format, Numbers) {
    // Half away from zero, unlike CLng, and from the 15 digits a double
    // shows (2.675 lies just below); only the first section is read.
    const LocaleFacts english;
    const struct {
        double value;
        const char* format;
        const char* text;
    } cases[] = {
        {3, "00", "03"},        {123, "00", "123"},        {2.5, "00", "03"},
        {-2.5, "0", "-3"},      {2.675, "0.00", "2.68"},   {1.005, "0.00", "1.01"},
        {-0.04, "0.0", "-0.0"}, {9.96, "0.0", "10.0"},     {999.5, "#,##0", "1,000"},
        {0, "#,##0", "0"},      {0.5, "#.##", ".5"},       {5, "#.##", "5."},
        {1.5, "0.0#", "1.5"},   {1.256, "0.0#", "1.26"},   {-1, "0;(0)", "-1"},
        {0.25, "", "0.25"},     {4.5, "0.0 GB", "4.5 GB"}, {1.5e20, "", "1.5E+20"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(formatNumber(c.value, c.format, english), c.text) << c.value << " " << c.format;
    }

    EXPECT_EQ(formatNumber(1e20, "0", english), "100000000000000000000");
    EXPECT_EQ(formatNumber(1234567.891, "#,##0", english), "1,234,568");
    EXPECT_EQ(formatNumber(42, "\"No. \"0", english), "No. 42");

    LocaleFacts german;
    german.decimalSeparator = ",";
    german.thousandsSeparator = ".";
    EXPECT_EQ(formatNumber(4.25, "0.0", german), "4,3");
    EXPECT_EQ(formatNumber(1234.5, "#,##0.00", german), "1.234,50");
    EXPECT_EQ(formatNumber(0.5, "", german), "0,5");
}

TEST(Format, Dates) {
    const LocaleFacts english;
    const DateTimeParts t{2024, 3, 7, 9, 5, 4};
    EXPECT_EQ(formatDate(t, "hh:nn:ss dd-mmm-yyyy", english), "09:05:04 07-Mar-2024");
    EXPECT_EQ(formatDate(t, "h:n:s d/m/yy", english), "9:5:4 7/3/24");
    // "m" after an hour is the minute; elsewhere the month
    EXPECT_EQ(formatDate(t, "hh:mm mm", english), "09:05 03");
    EXPECT_EQ(formatDate(t, "mm/dd hh mm", english), "03/07 09 05");
    EXPECT_EQ(formatDate(t, "HH:NN DD-MMM-YYYY", english), "09:05 07-Mar-2024");
    EXPECT_EQ(formatDate(t, "y", english), "67");
    EXPECT_EQ(formatDate(t, "\"at\" hh\\h", english), "at 09h");
    EXPECT_EQ(formatDate(DateTimeParts{999, 12, 31, 23, 59, 59}, "yyyy yy", english), "999 99");

    LocaleFacts french;
    french.monthAbbreviations[2] = "mars";
    EXPECT_EQ(formatDate(t, "dd-mmm-yyyy", french), "07-mars-2024");
    EXPECT_THROW(formatDate(DateTimeParts{2024, 13, 1}, "mmm", english), AutomationError);
}

TEST(Format, CalendarValue) {
    const struct {
        DateTimeParts parts;
        double value;
    } cases[] = {
        {{1899, 12, 30, 0, 0, 0}, 0.0},       {{1899, 12, 31, 0, 0, 0}, 1.0},
        {{1900, 1, 1, 0, 0, 0}, 2.0},         {{1899, 12, 30, 6, 0, 0}, 0.25},
        {{1899, 12, 29, 6, 0, 0}, -1.25},  // the fraction counts forward from midnight
        {{1899, 12, 28, 18, 0, 0}, -2.75},    {{2000, 2, 29, 12, 0, 0}, 36585.5},
        {{9999, 12, 31, 0, 0, 0}, 2958465.0}, {{100, 1, 1, 0, 0, 0}, -657434.0},
    };
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(toCalendarValue(c.parts), c.value) << c.value;
        EXPECT_EQ(fromCalendarValue(c.value), c.parts) << c.value;
    }
    // carry like DateSerial/TimeSerial
    EXPECT_DOUBLE_EQ(toCalendarValue({2023, 14, 1, 0, 0, 0}),
                     toCalendarValue({2024, 2, 1, 0, 0, 0}));
    EXPECT_DOUBLE_EQ(toCalendarValue({2024, 3, 0, 24, 0, 0}),
                     toCalendarValue({2024, 3, 1, 0, 0, 0}));
    // rounding to the second carries into the next day
    EXPECT_EQ(fromCalendarValue(0.9999999999), (DateTimeParts{1899, 12, 31, 0, 0, 0}));
    EXPECT_EQ(fromCalendarValue(-1.9999999999), (DateTimeParts{1899, 12, 28, 0, 0, 0}));

    EXPECT_THROW(toCalendarValue({99, 12, 31, 0, 0, 0}), AutomationError);
    EXPECT_THROW(toCalendarValue({10000, 1, 1, 0, 0, 0}), AutomationError);
    EXPECT_THROW(fromCalendarValue(2958466.0), AutomationError);
    EXPECT_THROW(fromCalendarValue(-657435.0), AutomationError);
}

}  // namespace
}  // namespace ostrel
