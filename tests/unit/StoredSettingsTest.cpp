#include "TolvaneCore/StoredSettings.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

StoredValue text(std::string value) {
    return {StoredValue::Type::text, false, std::move(value)};
}
StoredValue boolean(bool value) {
    return {StoredValue::Type::boolean, value, {}};
}

TEST(LoadAutoEnabled, KeepsOnlyARealBoolean) {
    EXPECT_TRUE(loadAutoEnabled({}));
    EXPECT_FALSE(loadAutoEnabled(boolean(false)));
    EXPECT_TRUE(loadAutoEnabled(boolean(true)));
    EXPECT_FALSE(loadAutoEnabled(text("false")));
    EXPECT_TRUE(loadAutoEnabled(text("true")));
}

TEST(LoadAutoEnabled, TreatsEveryOtherWordingAsUnusable) {
    for (const char* junk : {"no", "0", "False", "FALSE", " false", "false ", "", "yes", "1",
                             "99999999999999999999", "\x01\xff\xfe"}) {
        EXPECT_TRUE(loadAutoEnabled(text(junk))) << junk;
    }
    EXPECT_TRUE(loadAutoEnabled({StoredValue::Type::other, false, {}}));
}

TEST(LoadMode, IsMouseOnlyForTheExactWord) {
    EXPECT_EQ(loadMode(text("mouse")), ScrollMode::mouse);
    for (const char* other : {"Mouse", "MOUSE", "mouse ", "trackpad", "", "natural", "1"}) {
        EXPECT_EQ(loadMode(text(other)), ScrollMode::trackpad) << other;
    }
    EXPECT_EQ(loadMode({}), ScrollMode::trackpad);
    EXPECT_EQ(loadMode(boolean(true)), ScrollMode::trackpad);
}

TEST(StoredModeText, RoundTripsThroughLoadMode) {
    for (ScrollMode mode : {ScrollMode::trackpad, ScrollMode::mouse}) {
        EXPECT_EQ(loadMode(text(std::string(storedModeText(mode)))), mode);
    }
}

} // namespace
} // namespace tolvane
