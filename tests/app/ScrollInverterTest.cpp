#include "Tolvane/ScrollInverter.h"
#include "TolvaneCore/WheelEvents.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

TEST(ScrollInverterTest, NegatesWheelValuesOnlyWhileInverting) {
    const std::vector<InputEvent> frame{
        {evRel, 0, 4},          {evRel, relWheel, 1}, {evRel, relWheelHiRes, 120},
        {evRel, relHWheel, -1}, {evKey, 0x110, 1},    {evSyn, 0, 0}};
    FakePlatform fakes;
    ScrollInverter inverter(fakes.scrollTap);
    ASSERT_TRUE(inverter.start());
    EXPECT_EQ(fakes.scrollTap.pass(frame), frame);
    inverter.inverting = true;
    EXPECT_EQ(fakes.scrollTap.pass(frame), (std::vector<InputEvent>{{evRel, 0, 4},
                                                                    {evRel, relWheel, -1},
                                                                    {evRel, relWheelHiRes, -120},
                                                                    {evRel, relHWheel, 1},
                                                                    {evKey, 0x110, 1},
                                                                    {evSyn, 0, 0}}));
}

TEST(ScrollInverterTest, FailedStartsRetryAndOnlyTheFirstSuccessMakesATap) {
    FakePlatform fakes;
    fakes.scrollTap.available = false;
    ScrollInverter inverter(fakes.scrollTap);
    inverter.inverting = true; // set before the tap exists
    EXPECT_FALSE(inverter.start());
    EXPECT_FALSE(inverter.start());
    fakes.scrollTap.available = true;
    EXPECT_TRUE(inverter.start());
    EXPECT_TRUE(inverter.start());
    EXPECT_EQ(fakes.scrollTap.created, 1);
    EXPECT_EQ(fakes.scrollTap.pass({{evRel, relWheel, 2}})[0].value, -2);
}

} // namespace
} // namespace tolvane::testing
