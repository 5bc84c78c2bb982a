#include "TolvaneCore/ExternalMouse.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

struct Case {
    const char* what;
    DeviceProperties device;
    bool external;
};

const Case cases[] = {
    {"USB mouse", {1, 2, 0, "Logitech USB Optical Mouse"}, true},
    {"generic pointer", {1, 1, 0, "Pointer"}, true},
    {"no Built-In at all", {1, 2, std::nullopt, "Mouse"}, true},
    {"no product", {1, 2, 0, std::nullopt}, true},
    {"nothing but usage", {1, 2, std::nullopt, std::nullopt}, true},
    {"built in", {1, 2, 1, "Internal Mouse"}, false},
    {"built in, any non-zero", {1, 1, 7, "PS/2 Generic Mouse"}, false},
    {"usage page missing", {std::nullopt, 2, 0, "Mouse"}, false},
    {"usage missing", {1, std::nullopt, 0, "Mouse"}, false},
    {"other usage page", {12, 2, 0, "Consumer Control"}, false},
    {"keyboard usage", {1, 6, 0, "USB Keyboard"}, false},
    {"name holds trackpad", {1, 2, 0, "Magic Trackpad"}, false},
    {"name holds TrackPad", {1, 2, 0, "Acme TrackPad Mouse"}, false},
    {"name holds TRACKPAD", {1, 1, 0, "TRACKPAD"}, false},
    {"track pad with a blank is a different word", {1, 2, 0, "Track Pad"}, true},
    {"touchpad is not trackpad", {1, 2, 0, "Touchpad"}, true},
};

TEST(IsExternalMouse, DecidesFromUsageBuiltInAndName) {
    for (const Case& c : cases) {
        EXPECT_EQ(isExternalMouse(c.device), c.external) << c.what;
    }
}

TEST(MatchesPointerUsage, AcceptsGenericDesktopPointerAndMouseOnly) {
    EXPECT_TRUE(matchesPointerUsage({1, 1, 1, "Built-in"}));
    EXPECT_TRUE(matchesPointerUsage({1, 2, std::nullopt, std::nullopt}));
    EXPECT_FALSE(matchesPointerUsage({1, 6, 0, "Keyboard"}));
    EXPECT_FALSE(matchesPointerUsage({2, 2, 0, "Mouse"}));
    EXPECT_FALSE(matchesPointerUsage({}));
}

TEST(DisplayName, FallsBackToUnknownDevice) {
    EXPECT_EQ(displayName({1, 2, 0, "Mäus"}), "Mäus");
    EXPECT_EQ(displayName({1, 2, 0, std::nullopt}), "unknown device");
    EXPECT_EQ(displayName({1, 2, 0, ""}), "");
}

} // namespace
} // namespace tolvane
