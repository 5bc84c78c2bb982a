#include "TolvaneCore/GaugeValues.h"

#include <gtest/gtest.h>

#include <limits>

namespace tolvane {
namespace {

TEST(GaugeValues, ClampRoundHalfAwayFromZeroKeepADotAndWarnFromNinetyPercent) {
    struct Row {
        double fraction;
        GaugeValues expected;
    };
    const Row rows[] = {
        {0.0, {0.0, 0, 0.005, false}},
        {-0.3, {0.0, 0, 0.005, false}},
        {0.004, {0.004, 0, 0.005, false}},
        {0.005, {0.005, 1, 0.005, false}}, // 0.5 % goes away from zero
        {0.125, {0.125, 13, 0.125, false}},
        {0.5049, {0.5049, 50, 0.5049, false}},
        {0.895, {0.895, 90, 0.895, false}}, // the text rounds, the threshold does not
        {0.8999999, {0.8999999, 90, 0.8999999, false}},
        {0.9, {0.9, 90, 0.9, true}},
        {1.0, {1.0, 100, 1.0, true}},
        {7.5, {1.0, 100, 1.0, true}},
        {std::numeric_limits<double>::infinity(), {1.0, 100, 1.0, true}},
        {-std::numeric_limits<double>::infinity(), {0.0, 0, 0.005, false}},
        {std::numeric_limits<double>::quiet_NaN(), {0.0, 0, 0.005, false}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(gaugeValues(row.fraction), row.expected) << row.fraction;
    }
}

} // namespace
} // namespace tolvane
