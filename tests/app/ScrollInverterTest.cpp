#include "Tolvane/ScrollInverter.h"
#include "TolvaneCore/WheelEvents.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

const std::vector<InputEvent> wheelFrame{
    {evRel, 0, 4},          {evRel, relWheel, 1}, {evRel, relWheelHiRes, 120},
    {evRel, relHWheel, -1}, {evKey, 0x110, 1},    {evSyn, 0, 0}};

TEST(ScrollInverterTest, NegatesWheelValuesOnlyWhileInverting) {
    FakePlatform fakes;
    ScrollInverter inverter(fakes.scrollTap);
    ASSERT_TRUE(inverter.start());
    EXPECT_EQ(fakes.scrollTap.pass(wheelFrame), wheelFrame);
    inverter.inverting = true;
    EXPECT_EQ(fakes.scrollTap.pass(wheelFrame),
              (std::vector<InputEvent>{{evRel, 0, 4},
                                       {evRel, relWheel, -1},
                                       {evRel, relWheelHiRes, -120},
                                       {evRel, relHWheel, 1},
                                       {evKey, 0x110, 1},
                                       {evSyn, 0, 0}}));
}

TEST(ScrollInverterTest, StartAfterSuccessMakesNoSecondTap) {
    FakePlatform fakes;
    ScrollInverter inverter(fakes.scrollTap);
    EXPECT_TRUE(inverter.start());
    EXPECT_TRUE(inverter.start());
    EXPECT_EQ(fakes.scrollTap.created, 1);
}

TEST(ScrollInverterTest, FailedStartsRetryAndAFlagSetEarlyAppliesOnceTheTapExists) {
    FakePlatform fakes;
    fakes.scrollTap.answers = {false, false};
    ScrollInverter inverter(fakes.scrollTap);
    inverter.inverting = true;
    EXPECT_FALSE(inverter.start());
    EXPECT_FALSE(inverter.start());
    EXPECT_TRUE(inverter.start());
    EXPECT_EQ(fakes.scrollTap.pass({{evRel, relWheel, 2}})[0].value, -2);
    EXPECT_EQ(fakes.recorder.matching("scrollTap.").size(), 3u);
}

} // namespace
} // namespace tolvane::testing
