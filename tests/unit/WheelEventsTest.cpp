#include "TolvaneCore/WheelEvents.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace tolvane {
namespace {

constexpr std::uint16_t relX = 0x00, relY = 0x01, relDial = 0x07, btnLeft = 0x110;

TEST(NegateWheelAxes, FlipsLegacyAndHighResolutionWheelsInAFrame) {
    std::vector<InputEvent> frame{{evRel, relWheel, 1},
                                  {evRel, relWheelHiRes, 120},
                                  {evRel, relHWheel, -2},
                                  {evRel, relHWheelHiRes, -240},
                                  {evSyn, 0, 0}};
    negateWheelAxes(frame.data(), frame.size());
    EXPECT_EQ(frame, (std::vector<InputEvent>{{evRel, relWheel, -1},
                                              {evRel, relWheelHiRes, -120},
                                              {evRel, relHWheel, 2},
                                              {evRel, relHWheelHiRes, 240},
                                              {evSyn, 0, 0}}));
}

TEST(NegateWheelAxes, LeavesMotionButtonsAndOtherAxesAlone) {
    const std::vector<InputEvent> original{{evRel, relX, 5},     {evRel, relY, -3},
                                           {evRel, relDial, 4},  {evKey, btnLeft, 1},
                                           {evKey, relWheel, 1}, {evSyn, 0, 0}};
    std::vector<InputEvent> frame = original;
    negateWheelAxes(frame.data(), frame.size());
    EXPECT_EQ(frame, original);
}

TEST(NegateWheelAxes, KeepsZeroAndSaturatesTheOneValueWithoutANegation) {
    std::vector<InputEvent> frame{{evRel, relWheel, 0},
                                  {evRel, relWheel, std::numeric_limits<std::int32_t>::min()},
                                  {evRel, relWheel, std::numeric_limits<std::int32_t>::max()}};
    negateWheelAxes(frame.data(), frame.size());
    EXPECT_EQ(frame[0].value, 0);
    EXPECT_EQ(frame[1].value, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(frame[2].value, -std::numeric_limits<std::int32_t>::max());
}

TEST(NegateWheelAxes, TwiceRestoresTheFrame) {
    const std::vector<InputEvent> original{{evRel, relWheel, 3}, {evRel, relHWheelHiRes, -60}};
    std::vector<InputEvent> frame = original;
    negateWheelAxes(frame.data(), frame.size());
    negateWheelAxes(frame.data(), frame.size());
    EXPECT_EQ(frame, original);
}

} // namespace
} // namespace tolvane
