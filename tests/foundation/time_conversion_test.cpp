#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "foundation/time_conversion.h"
#include "platform/adapters.h"
#include "runtime/format.h"

namespace ostrel {
namespace {

double at(int year, int month, int day, int hour, int minute, int second) {
    return toCalendarValue(DateTimeParts{year, month, day, hour, minute, second});
}

std::string text(double date) {
    return formatDate(fromCalendarValue(date), "yyyy-mm-dd hh:nn:ss", LocaleFacts{});
}

// The number, description and source of the error the routine raises.
std::string raisedBy(double (*routine)(double), double date) {
    const AutomationError error = fakes::errorOf([&] { routine(date); });
    return std::to_string(error.number) + " " + error.description + " " + error.source;
}

class TimeConversion : public ::testing::Test {
  protected:
    fakes::TestApartment fx;
};

TEST_F(TimeConversion, AtGmtBothWaysGiveTheInputWithoutTheFractionOfASecond) {
    fx.timeZone.milliseconds = 999;  // the way back never looks at them
    const double monday = at(2024, 1, 15, 12, 0, 0);
    const double withFraction = monday + 0.4 / 86400;
    EXPECT_EQ(gfdatConvertToGMT(withFraction), monday);
    EXPECT_EQ(gfdatConvertFromGMT(withFraction), monday);
    EXPECT_EQ(fx.timeZone.given.at(0).wDayOfWeek, 1) << "Monday is 1";
    EXPECT_EQ(fx.timeZone.given.at(0).wMilliseconds, 0);
    gfdatConvertToGMT(at(2024, 1, 21, 23, 59, 59));
    EXPECT_EQ(fx.timeZone.given.back().wDayOfWeek, 7) << "Sunday is 7";
}

TEST_F(TimeConversion, ToGmtSubtractsTheOffsetInForceNowWhateverTheDate) {
    fx.timeZone.nowOffset = -5 * 60;  // west of GMT, in winter
    EXPECT_EQ(text(gfdatConvertToGMT(at(2023, 12, 31, 23, 30, 0))), "2024-01-01 04:30:00")
        << "the date comes from the converted record";
    EXPECT_EQ(text(gfdatConvertToGMT(at(2024, 3, 10, 2, 30, 0))), "2024-03-10 07:30:00")
        << "a time in the hour skipped in spring converts without an error";
    fx.timeZone.nowOffset = -4 * 60;  // summer now: a winter date takes the summer offset
    EXPECT_EQ(text(gfdatConvertToGMT(at(2024, 1, 15, 12, 0, 0))), "2024-01-15 16:00:00");
    fx.clock.time = DateTimeParts{2024, 7, 1, 22, 15, 30};
    EXPECT_EQ(text(gfdatNowGMT()), "2024-07-02 02:15:30");
}

TEST_F(TimeConversion, TheRoundTripDiffersByTheDaylightOffsetAcrossTheChange) {
    fx.timeZone.nowOffset = -4 * 60;
    fx.timeZone.ruleOfDate = [](const platform::SystemTimeRecord& universal) {
        return universal.wMonth >= 4 && universal.wMonth <= 10 ? -4 * 60 : -5 * 60;
    };
    const double winter = at(2024, 1, 15, 12, 0, 0);
    EXPECT_EQ(text(gfdatConvertFromGMT(gfdatConvertToGMT(winter))), "2024-01-15 11:00:00");
    const double summer = at(2024, 7, 15, 12, 0, 0);
    EXPECT_EQ(gfdatConvertFromGMT(gfdatConvertToGMT(summer)), summer);

    fx.timeZone.zoneRefuses = true;
    const double withFraction = summer + 0.25 / 86400;
    EXPECT_EQ(gfdatConvertFromGMT(withFraction), withFraction) << "refused: the input unchanged";
}

TEST_F(TimeConversion, OnlyToGmtWrapsItsFailureNowGmtPassesItOn) {
    const double beyond = 3e6;  // after the year 9999
    EXPECT_EQ(raisedBy(gfdatConvertToGMT, beyond),
              "6 [gfdatConvertToGMT]Overflow [OstrelGlobals.gfdatConvertToGMT]");
    EXPECT_EQ(raisedBy(gfdatConvertFromGMT, beyond), "6 Overflow Ostrel")
        << "no failure path of its own";

    fx.use(&platform::Ports::timeZone, nullptr);
    EXPECT_EQ(raisedBy([](double) { return gfdatNowGMT(); }, 0),
              "429 [gfdatConvertToGMT]ActiveX component can't create object "
              "[OstrelGlobals.gfdatConvertToGMT]");
    EXPECT_EQ(fakes::errorNumberOf([] { gfdatConvertFromGMT(1); }), kErrCantCreate);
}

// The real calls in the zone the test run was started in (see
// tests/CMakeLists.txt: TZ for Linux, and the zone Wine takes from it).
TEST(SystemTimeZone, EasternTimeByTheRuleOfTheDateBackAndTheOffsetNowThere) {
    if (!std::getenv("OSTREL_ZONE_UNDER_TEST")) GTEST_SKIP() << "run in its zone by ctest only";
    fakes::TestApartment fx;
    fx.ports.timeZone = &platform::systemTimeZone();
    fx.use(&platform::Ports::clock, &platform::systemClock());
    EXPECT_EQ(text(gfdatConvertFromGMT(at(2024, 1, 15, 12, 0, 0))), "2024-01-15 07:00:00");
    EXPECT_EQ(text(gfdatConvertFromGMT(at(2024, 7, 15, 12, 0, 0))), "2024-07-15 08:00:00");

    // The offset now is 4 or 5 hours, the same for every date, and the one
    // between the clock and NowGMT.
    const double hour = 1.0 / 24;
    const double offset = gfdatConvertToGMT(at(2024, 3, 10, 2, 30, 0)) - at(2024, 3, 10, 2, 30, 0);
    EXPECT_TRUE(std::abs(offset - 4 * hour) < 1e-6 || std::abs(offset - 5 * hour) < 1e-6);
    EXPECT_NEAR(gfdatConvertToGMT(at(2024, 7, 15, 12, 0, 0)) - at(2024, 7, 15, 12, 0, 0), offset,
                1e-6);
    EXPECT_NEAR(gfdatNowGMT() - toCalendarValue(fx.ports.clock->now()), offset, 5.0 / 86400);
    EXPECT_EQ(text(gfdatConvertToGMT(at(2023, 12, 31, 23, 30, 0))).substr(0, 10), "2024-01-01");

    // West of GMT the last second of the calendar becomes the year 10000.
    EXPECT_EQ(raisedBy(gfdatConvertToGMT, at(9999, 12, 31, 23, 59, 59)),
              "5 [gfdatConvertToGMT]Invalid procedure call or argument "
              "[OstrelGlobals.gfdatConvertToGMT]");
}

}  // namespace
}  // namespace ostrel
