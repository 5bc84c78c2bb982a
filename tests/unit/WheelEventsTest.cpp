#include "TolvaneCore/WheelEvents.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace tolvane {
namespace {

constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();

TEST(NegateWheelAxes, FlipsEveryWheelAxisAndLeavesTheRestOfTheFrame) {
    struct Row {
        std::uint16_t type, code;
        std::int32_t value, negated;
    };
    const Row rows[] = {
        {evRel, relWheel, 1, -1},
        {evRel, relWheelHiRes, 120, -120},
        {evRel, relHWheel, -2, 2},
        {evRel, relHWheelHiRes, -240, 240},
        {evRel, relWheel, 0, 0},
        {evRel, relWheel, least, most},
        {evRel, relWheel, most, -most},
        {evRel, 0x00, 5, 5}, // pointer motion
        {evRel, 0x07, 4, 4}, // a dial
        {evKey, 0x110, 1, 1},
        {evKey, relWheel, 1, 1}, // a key with a wheel's code
        {evSyn, 0, 0, 0},
    };
    std::vector<InputEvent> frame;
    for (const Row& row : rows) {
        frame.push_back({row.type, row.code, row.value});
    }
    negateWheelAxes(frame.data(), frame.size());
    for (std::size_t i = 0; i < frame.size(); ++i) {
        EXPECT_EQ(frame[i], (InputEvent{rows[i].type, rows[i].code, rows[i].negated})) << i;
    }
}

} // namespace
} // namespace tolvane
