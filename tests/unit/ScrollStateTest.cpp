#include "TolvaneCore/ScrollState.h"
#include "TolvaneCore/DesktopScrollSettings.h"
#include "TolvaneCore/ExternalMouse.h"
#include "TolvaneCore/StoredSettings.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tolvane {
namespace {

// Every state against every event. A state is three letters: auto on (T/F), mouse connected
// (T/F), mode (t)rackpad or (m)ouse.
constexpr const char* transitions = R"(
before  setAuto(false)  setAuto(true)  connected  disconnected  toggle
FFt     FFt             TFt            FTt        FFt           FFm
FFm     FFm             TFt            FTm        FFm           FFt
FTt     FTt             TTm            FTt        FFt           FTm
FTm     FTm             TTm            FTm        FFm           FTt
TFt     FFt             TFt            TTm        TFt           TFm
TFm     FFm             TFt            TTm        TFt           TFt
TTt     FTt             TTm            TTm        TFt           TTm
TTm     FTm             TTm            TTm        TFt           TTt
)";

AppState parse(const std::string& s) {
    return {s[0] == 'T', s[1] == 'T', s[2] == 'm' ? ScrollMode::mouse : ScrollMode::trackpad};
}

TEST(Reduce, FollowsTheWholeTransitionTable) {
    const AppEvent events[] = {AppEvent::setAuto(false), AppEvent::setAuto(true),
                               AppEvent::mouseConnected(), AppEvent::mouseDisconnected(),
                               AppEvent::manualToggle()};
    std::istringstream table(transitions);
    std::string line;
    std::getline(table, line);
    std::getline(table, line); // the heading
    int rows = 0;
    while (std::getline(table, line)) {
        std::istringstream cells(line);
        std::string before, after;
        cells >> before;
        for (const AppEvent& event : events) {
            cells >> after;
            EXPECT_EQ(reduce(parse(before), event), parse(after)) << line;
        }
        ++rows;
    }
    EXPECT_EQ(rows, 8);
}

TEST(ShouldInvert, WhenTheWantedDirectionDiffersFromTheDesktops) {
    for (bool natural : {false, true}) {
        EXPECT_EQ(shouldInvert(ScrollMode::trackpad, natural), !natural);
        EXPECT_EQ(shouldInvert(ScrollMode::mouse, natural), natural);
    }
}

// Only the exact forms the program writes read back; anything else gives the default.
TEST(StoredSettings, ReadBackOnlyTheExactFormsTheProgramWrites) {
    using V = StoredValue;
    const auto text = [](std::string value) { return V{V::Type::text, false, std::move(value)}; };
    EXPECT_FALSE(loadAutoEnabled({V::Type::boolean, false, {}}));
    EXPECT_FALSE(loadAutoEnabled(text("false")));
    for (const V& other : {V{V::Type::boolean, true, {}}, V{}, V{V::Type::other, false, {}},
                           text("no"), text("0"), text("False"), text(" false"), text("false "),
                           text(""), text("99999999999999999999"), text("\x01\xff\xfe")}) {
        EXPECT_TRUE(loadAutoEnabled(other)) << other.text;
    }
    EXPECT_EQ(loadMode(text(std::string(storedModeText(ScrollMode::mouse)))), ScrollMode::mouse);
    for (const V& other : {text("trackpad"), text("Mouse"), text("MOUSE"), text("mouse "), text(""),
                           text("1"), V{}, V{V::Type::boolean, true, {}}}) {
        EXPECT_EQ(loadMode(other), ScrollMode::trackpad) << other.text;
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
    const auto xfce = [](const char* devices) {
        return std::string(
                   "<?xml version=\"1.0\"?>\n<channel name=\"pointers\" version=\"1.0\">\n") +
               devices + "</channel>\n";
    };
    const char* mouse = "<property name=\"Logitech_USB_Mouse\" type=\"empty\">\n"
                        "<property name=\"RightHanded\" type=\"bool\" value=\"true\"/>\n"
                        "<property name=\"ReverseScrolling\" type=\"bool\" value=\"true\"/>\n"
                        "</property>\n";
    const char* touchpad = "<property name=\"SynPS2_Synaptics_TouchPad\" type=\"empty\">\n"
                           "<property name=\"ReverseScrolling\" type=\"bool\" value=\"false\"/>\n"
                           "</property>\n";
    EXPECT_EQ(xfceMouseReverseScrolling(xfce(mouse)), on);
    EXPECT_EQ(xfceMouseReverseScrolling(xfce(touchpad)), absent);
    EXPECT_EQ(xfceMouseReverseScrolling(xfce(touchpad) + mouse), on);
    EXPECT_EQ(xfceMouseReverseScrolling(xfce("<property name=\"M\" type=\"empty\">\n<property "
                                             "name=\"ReverseScrolling\" type=\"bool\" "
                                             "value=\"false\"/>\n</property>\n")),
              off);
    EXPECT_EQ(xfceMouseReverseScrolling(""), absent);
}

} // namespace
} // namespace tolvane
