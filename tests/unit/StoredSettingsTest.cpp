#include "TolvaneCore/StoredSettings.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

StoredValue text(std::string value) {
    return {StoredValue::Type::text, false, std::move(value)};
}

// Only the exact forms the program writes read back; anything else gives the default.
TEST(StoredSettings, ReadBackOnlyTheExactFormsTheProgramWrites) {
    EXPECT_FALSE(loadAutoEnabled({StoredValue::Type::boolean, false, {}}));
    EXPECT_TRUE(loadAutoEnabled({StoredValue::Type::boolean, true, {}}));
    EXPECT_FALSE(loadAutoEnabled(text("false")));
    EXPECT_TRUE(loadAutoEnabled({}));
    EXPECT_TRUE(loadAutoEnabled({StoredValue::Type::other, false, {}}));
    for (const char* junk :
         {"no", "0", "False", " false", "false ", "", "99999999999999999999", "\x01\xff\xfe"}) {
        EXPECT_TRUE(loadAutoEnabled(text(junk))) << junk;
    }
    for (ScrollMode mode : {ScrollMode::trackpad, ScrollMode::mouse}) {
        EXPECT_EQ(loadMode(text(std::string(storedModeText(mode)))), mode);
    }
    EXPECT_EQ(storedModeText(ScrollMode::mouse), "mouse");
    for (const char* other : {"Mouse", "MOUSE", "mouse ", "", "natural", "1"}) {
        EXPECT_EQ(loadMode(text(other)), ScrollMode::trackpad) << other;
    }
    EXPECT_EQ(loadMode({}), ScrollMode::trackpad);
    EXPECT_EQ(loadMode({StoredValue::Type::boolean, true, {}}), ScrollMode::trackpad);
}

} // namespace
} // namespace tolvane
