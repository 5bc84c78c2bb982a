#include "TolvaneCore/CleaningClock.h"

#include <gtest/gtest.h>

#include <limits>

namespace tolvane {
namespace {

struct Span {
    double from;
    double to;
    const char* text;
};

TEST(Elapsed, CountsWholeMinutesAndSecondsWithoutAnHoursField) {
    const Span spans[] = {
        {0, 0, "00:00"},     {0, 0.999, "00:00"},   {0, 1, "00:01"},    {0, 59.9, "00:59"},
        {0, 60, "01:00"},    {0, 61.5, "01:01"},    {0, 3599, "59:59"}, {0, 3600, "60:00"},
        {0, 6000, "100:00"}, {0, 86399, "1439:59"},
    };
    for (const Span& s : spans) {
        EXPECT_EQ(elapsed(s.from, s.to), s.text) << s.from << " to " << s.to;
    }
}

TEST(Elapsed, DependsOnlyOnTheDistanceBetweenTheTwoTimes) {
    EXPECT_EQ(elapsed(1795016661.25, 1795016661.25 + 59.9), "00:59");
    EXPECT_EQ(elapsed(1795016661.75, 1795016662.5), "00:00");
    EXPECT_EQ(elapsed(-30, 30), "01:00");
}

TEST(Elapsed, ReadsZeroWhenTheEndLiesBeforeTheStart) {
    EXPECT_EQ(elapsed(10, 9.5), "00:00");
    EXPECT_EQ(elapsed(10, 0), "00:00");
    EXPECT_EQ(elapsed(0, -3600), "00:00");
    EXPECT_EQ(elapsed(0, -0.5), "00:00");
}

TEST(Elapsed, LongSpansKeepGrowingTheMinutes) {
    EXPECT_EQ(elapsed(0, 10.0 * 365 * 86400), "5256000:00");
    EXPECT_EQ(elapsed(0, 2147483647.0 * 60 + 7), "2147483647:07"); // past a 32-bit minute
}

TEST(Elapsed, SpansBeyondAnyClockStayDefined) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(elapsed(0, 1e300), "153333333333333333:20");
    EXPECT_EQ(elapsed(0, inf), "153333333333333333:20");
    EXPECT_EQ(elapsed(0, -inf), "00:00");
    EXPECT_EQ(elapsed(0, std::numeric_limits<double>::quiet_NaN()), "00:00");
}

} // namespace
} // namespace tolvane
