#include "TolvaneCore/ExternalMouse.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(IsExternalMouse, DecidesFromUsageBuiltInAndName) {
    struct Case {
        const char* what;
        DeviceProperties device;
        bool external;
        bool pointer; // delivered by the device monitor at all
    };
    const Case cases[] = {
        {"USB mouse", {1, 2, 0, "Logitech USB Optical Mouse"}, true, true},
        {"generic pointer", {1, 1, 0, "Pointer"}, true, true},
        {"no Built-In at all", {1, 2, std::nullopt, "Mouse"}, true, true},
        {"nothing but usage", {1, 2, std::nullopt, std::nullopt}, true, true},
        {"built in", {1, 2, 1, "Internal Mouse"}, false, true},
        {"built in, any non-zero", {1, 1, 7, "PS/2 Generic Mouse"}, false, true},
        {"usage page missing", {std::nullopt, 2, 0, "Mouse"}, false, false},
        {"usage missing", {1, std::nullopt, 0, "Mouse"}, false, false},
        {"other usage page", {12, 2, 0, "Consumer Control"}, false, false},
        {"keyboard usage", {1, 6, 0, "USB Keyboard"}, false, false},
        {"name holds trackpad", {1, 2, 0, "Magic Trackpad"}, false, true},
        {"name holds TrackPad", {1, 2, 0, "Acme TrackPad Mouse"}, false, true},
        {"name holds TRACKPAD", {1, 1, 0, "TRACKPAD"}, false, true},
        {"track pad with a blank is a different word", {1, 2, 0, "Track Pad"}, true, true},
        {"touchpad is not trackpad", {1, 2, 0, "Touchpad"}, true, true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(isExternalMouse(c.device), c.external) << c.what;
        EXPECT_EQ(matchesPointerUsage(c.device), c.pointer) << c.what;
    }
}

} // namespace
} // namespace tolvane
