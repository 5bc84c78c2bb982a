#include "TolvaneCore/ScrollState.h"

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
    EXPECT_FALSE(shouldInvert(ScrollMode::trackpad, true));
    EXPECT_TRUE(shouldInvert(ScrollMode::trackpad, false));
    EXPECT_TRUE(shouldInvert(ScrollMode::mouse, true));
    EXPECT_FALSE(shouldInvert(ScrollMode::mouse, false));
}

} // namespace
} // namespace tolvane
