#include "TolvaneCore/DesktopScrollSettings.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

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
