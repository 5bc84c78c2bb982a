#include "TolvaneCore/ScrollState.h"
#include "TolvaneCore/DesktopScrollSettings.h"
#include "TolvaneCore/ExternalMouse.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

// Every state against every event. A state is three letters: auto on (T/F), mouse connected
// (T/F), mode (t)rackpad or (m)ouse. Each row: the state before, then after setAuto(false),
// setAuto(true), a mouse connected, the last mouse disconnected, a manual toggle.
constexpr const char* transitions[][6] = {
    {"FFt", "FFt", "TFt", "FTt", "FFt", "FFm"}, {"FFm", "FFm", "TFt", "FTm", "FFm", "FFt"},
    {"FTt", "FTt", "TTm", "FTt", "FFt", "FTm"}, {"FTm", "FTm", "TTm", "FTm", "FFm", "FTt"},
    {"TFt", "FFt", "TFt", "TTm", "TFt", "TFm"}, {"TFm", "FFm", "TFt", "TTm", "TFt", "TFt"},
    {"TTt", "FTt", "TTm", "TTm", "TFt", "TTm"}, {"TTm", "FTm", "TTm", "TTm", "TFt", "TTt"},
};

AppState parse(const std::string& s) {
    return {s[0] == 'T', s[1] == 'T', s[2] == 'm' ? ScrollMode::mouse : ScrollMode::trackpad};
}

TEST(Reduce, FollowsTheWholeTransitionTable) {
    const AppEvent events[] = {AppEvent::setAuto(false), AppEvent::setAuto(true),
                               AppEvent::mouseConnected(), AppEvent::mouseDisconnected(),
                               AppEvent::manualToggle()};
    for (const auto& row : transitions) {
        for (int e = 0; e < 5; ++e) {
            EXPECT_EQ(reduce(parse(row[0]), events[e]), parse(row[e + 1])) << row[0] << " " << e;
        }
    }
}

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
        {"built in, any non-zero", {1, 1, 7, "PS/2 Generic Mouse"}, false, true},
        {"usage page missing", {std::nullopt, 2, 0, "Mouse"}, false, false},
        {"usage missing", {1, std::nullopt, 0, "Mouse"}, false, false},
        {"other usage page", {12, 2, 0, "Consumer Control"}, false, false},
        {"keyboard usage", {1, 6, 0, "USB Keyboard"}, false, false},
        {"name holds trackpad", {1, 2, 0, "Magic Trackpad"}, false, true},
        {"name holds TrackPad", {1, 2, 0, "Acme TrackPad Mouse"}, false, true},
        {"track pad with a blank is a different word", {1, 2, 0, "Track Pad"}, true, true},
        {"touchpad is not trackpad", {1, 2, 0, "Touchpad"}, true, true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(isExternalMouse(c.device), c.external) << c.what;
        EXPECT_EQ(matchesPointerUsage(c.device), c.pointer) << c.what;
    }
}

constexpr auto off = std::optional<bool>(false), on = std::optional<bool>(true);
constexpr std::optional<bool> absent;

TEST(DesktopScrollSettings, EachDesktopsOwnSettingForMiceNotForTouchpads) {
    using S = ScrollSettingSource;
    for (auto [desktop, source] : {std::pair{"KDE", S::kde},
                                   {"XFCE", S::xfce},
                                   {"ubuntu:GNOME", S::gnome},
                                   {"", S::gnome},
                                   {"GNOME:KDE", S::gnome}}) {
        EXPECT_EQ(scrollSettingSource(desktop), source) << desktop;
    }
    const char* x11 = "[Mouse]\nXLbInptPointerAcceleration=0.2\nXLbInptNaturalScroll=true\n";
    const char* wayland =
        "[Libinput][1133][49271][Logitech USB Optical Mouse]\nNaturalScroll=false\n"
        "[Libinput][2][7][SynPS/2 Synaptics TouchPad]\nNaturalScroll=true\n";
    for (auto [file, isWayland, natural] :
         {std::tuple{x11, false, on},
          {x11, true, absent},
          {wayland, false, absent},
          {wayland, true, off},
          {"[Mouse]\nXLbInptNaturalScroll=false\n", false, off},
          {"[Libinput][1][2][Mouse A]\nNaturalScroll=false\n[Libinput][3][4][Mouse B]\n"
           "NaturalScroll=true\n",
           true, on},
          {"[Libinput][2][7][Apple Magic Trackpad]\nNaturalScroll=true\n", true, absent}}) {
        EXPECT_EQ(kdeMouseNaturalScroll(file, isWayland), natural) << file;
    }
    const auto device = [](const char* name, const char* reverse) {
        return std::string("<property name=\"") + name + "\" type=\"empty\">\n<property " +
               "name=\"RightHanded\" type=\"bool\" value=\"true\"/>\n<property name=\"" +
               "ReverseScrolling\" type=\"bool\" value=\"" + reverse + "\"/>\n</property>\n";
    };
    const std::string channel = "<?xml version=\"1.0\"?>\n<channel name=\"pointers\">\n",
                      touchpad = device("SynPS2_Synaptics_TouchPad", "false");
    for (auto [devices, reverse] : {std::pair{device("Logitech_USB_Mouse", "true"), on},
                                    {touchpad, absent},
                                    {touchpad + device("M", "true"), on},
                                    {device("M", "false"), off}}) {
        EXPECT_EQ(xfceMouseReverseScrolling(channel + devices + "</channel>\n"), reverse)
            << devices;
    }
    EXPECT_EQ(xfceMouseReverseScrolling(""), absent);
}

} // namespace
} // namespace tolvane
