#include "TolvaneCore/ScrollState.h"
#include "TolvaneCore/DesktopScrollSettings.h"
#include "TolvaneCore/ExternalMouse.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

namespace tolvane {
using testing::TableRow, testing::readTable;
namespace {

AppState parse(const std::string& s) {
    return {s[0] == 'T', s[1] == 'T', s[2] == 'm' ? ScrollMode::mouse : ScrollMode::trackpad};
}

TEST(Reduce, FollowsTheWholeTransitionTable) {
    const AppEvent events[] = {AppEvent::setAuto(false), AppEvent::setAuto(true),
                               AppEvent::mouseConnected(), AppEvent::mouseDisconnected(),
                               AppEvent::manualToggle()};
    for (const TableRow& row : readTable("scroll-transitions.txt", 6)) {
        for (int e = 0; e < 5; ++e) {
            EXPECT_EQ(reduce(parse(row[0]), events[e]), parse(row[e + 1])) << row.where << " " << e;
        }
    }
}

TEST(IsExternalMouse, DecidesFromUsageBuiltInAndName) {
    const auto value = [](const std::string& cell) {
        return cell == "-" ? std::nullopt : std::optional<std::int64_t>(std::stoll(cell));
    };
    for (const TableRow& row : readTable("pointer-devices.txt", 6)) {
        const DeviceProperties device{value(row[0]), value(row[1]), value(row[2]),
                                      row[3] == "-" ? std::nullopt : std::optional(row[3])};
        EXPECT_EQ(isExternalMouse(device), row[4] == "yes") << row.where;
        EXPECT_EQ(matchesPointerUsage(device), row[5] == "yes") << row.where;
    }
}

TEST(DesktopScrollSettings, EachDesktopsOwnSettingForMiceNotForTouchpads) {
    using S = ScrollSettingSource;
    for (auto [desktop, source] : {std::pair{"KDE", S::kde},
                                   {"XFCE", S::xfce},
                                   {"ubuntu:GNOME", S::gnome},
                                   {"", S::gnome},
                                   {"GNOME:KDE", S::gnome}}) {
        EXPECT_EQ(scrollSettingSource(desktop), source) << desktop;
    }
    for (const TableRow& row : readTable("desktop-scroll-settings.txt", 4)) {
        const std::optional<bool> natural =
            row[3] == "-" ? std::nullopt : std::optional<bool>(row[3] == "on");
        EXPECT_EQ(row[0] == "KDE" ? kdeMouseNaturalScroll(row[2], row[1] == "wayland")
                                  : xfceMouseReverseScrolling(row[2]),
                  natural)
            << row.where;
    }
}

} // namespace
} // namespace tolvane
