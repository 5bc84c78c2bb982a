#include "TolvaneCore/CleaningClock.h"

#include <gtest/gtest.h>

#include <limits>

namespace tolvane {
namespace {

TEST(Elapsed, CountsWholeMinutesAndSecondsOfTheDistanceWithoutAnHoursField) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    struct Span {
        double from, to;
        const char* text;
    };
    const Span spans[] = {
        {0, 0, "00:00"},
        {0, 0.999, "00:00"}, // cut off, never rounded up
        {0, 59.9, "00:59"},
        {0, 61.5, "01:01"},
        {0, 3599, "59:59"},
        {0, 3600, "60:00"},
        {0, 6000, "100:00"},
        {1795016661.25, 1795016661.25 + 59.9, "00:59"},
        {1795016661.75, 1795016662.5, "00:00"},
        {-30, 30, "01:00"},
        {10, 9.5, "00:00"}, // an end before the start
        {0, -3600, "00:00"},
        {0, 2147483647.0 * 60 + 7, "2147483647:07"}, // past a 32-bit minute
        {0, 1e300, "153333333333333333:20"},
        {0, inf, "153333333333333333:20"},
        {0, -inf, "00:00"},
        {0, std::numeric_limits<double>::quiet_NaN(), "00:00"},
    };
    for (const Span& s : spans) {
        EXPECT_EQ(elapsed(s.from, s.to), s.text) << s.from << " to " << s.to;
    }
}

} // namespace
} // namespace tolvane
