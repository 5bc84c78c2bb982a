#include "TolvaneCore/ScrollState.h"

#include <gtest/gtest.h>

#include <array>

namespace tolvane {
namespace {

constexpr ScrollMode T = ScrollMode::trackpad;
constexpr ScrollMode M = ScrollMode::mouse;

// Every state against every event, as the transition table gives it.
struct Row {
    AppState before;
    AppState afterSetAutoFalse, afterSetAutoTrue, afterConnected, afterDisconnected, afterToggle;
};

const std::array<Row, 8> transitions{{
    {{false, false, T},
     {false, false, T},
     {true, false, T},
     {false, true, T},
     {false, false, T},
     {false, false, M}},
    {{false, false, M},
     {false, false, M},
     {true, false, T},
     {false, true, M},
     {false, false, M},
     {false, false, T}},
    {{false, true, T},
     {false, true, T},
     {true, true, M},
     {false, true, T},
     {false, false, T},
     {false, true, M}},
    {{false, true, M},
     {false, true, M},
     {true, true, M},
     {false, true, M},
     {false, false, M},
     {false, true, T}},
    {{true, false, T},
     {false, false, T},
     {true, false, T},
     {true, true, M},
     {true, false, T},
     {true, false, M}},
    {{true, false, M},
     {false, false, M},
     {true, false, T},
     {true, true, M},
     {true, false, T},
     {true, false, T}},
    {{true, true, T},
     {false, true, T},
     {true, true, M},
     {true, true, M},
     {true, false, T},
     {true, true, M}},
    {{true, true, M},
     {false, true, M},
     {true, true, M},
     {true, true, M},
     {true, false, T},
     {true, true, T}},
}};

std::string describe(const AppState& s) {
    return std::string(s.autoEnabled ? "T" : "F") + (s.mouseConnected ? " T " : " F ") +
           std::string(modeName(s.mode));
}

TEST(Reduce, FollowsTheWholeTransitionTable) {
    for (const Row& row : transitions) {
        SCOPED_TRACE(describe(row.before));
        EXPECT_EQ(reduce(row.before, AppEvent::setAuto(false)), row.afterSetAutoFalse);
        EXPECT_EQ(reduce(row.before, AppEvent::setAuto(true)), row.afterSetAutoTrue);
        EXPECT_EQ(reduce(row.before, AppEvent::mouseConnected()), row.afterConnected);
        EXPECT_EQ(reduce(row.before, AppEvent::mouseDisconnected()), row.afterDisconnected);
        EXPECT_EQ(reduce(row.before, AppEvent::manualToggle()), row.afterToggle);
    }
}

TEST(Reduce, ManualToggleTwiceGivesTheStartingState) {
    for (const Row& row : transitions) {
        const AppState once = reduce(row.before, AppEvent::manualToggle());
        EXPECT_NE(once, row.before);
        EXPECT_EQ(reduce(once, AppEvent::manualToggle()), row.before) << describe(row.before);
    }
}

TEST(Reduce, ManualToggleUnderAutoLastsUntilTheNextConnectionEvent) {
    AppState state{true, true, M};
    state = reduce(state, AppEvent::manualToggle());
    EXPECT_EQ(state, (AppState{true, true, T}));
    EXPECT_EQ(reduce(state, AppEvent::mouseConnected()).mode, M);
    EXPECT_EQ(reduce(state, AppEvent::setAuto(true)).mode, M);
}

TEST(Reduce, SwitchingAutoOffKeepsTheModeAfterTheMouseLeaves) {
    AppState state = reduce({true, true, M}, AppEvent::setAuto(false));
    state = reduce(state, AppEvent::mouseDisconnected());
    EXPECT_EQ(state, (AppState{false, false, M}));
}

TEST(AppEventEquality, ComparesTheSetAutoPayloadOnly) {
    EXPECT_EQ(AppEvent::setAuto(true), AppEvent::setAuto(true));
    EXPECT_NE(AppEvent::setAuto(true), AppEvent::setAuto(false));
    EXPECT_EQ(AppEvent::manualToggle(), AppEvent::manualToggle());
    EXPECT_NE(AppEvent::mouseConnected(), AppEvent::mouseDisconnected());
}

TEST(ScrollModeNames, AreTheCaseNamesAndOppositeSwaps) {
    EXPECT_EQ(modeName(T), "trackpad");
    EXPECT_EQ(modeName(M), "mouse");
    EXPECT_EQ(opposite(T), M);
    EXPECT_EQ(opposite(M), T);
}

TEST(ShouldInvert, IsTheExclusiveOrOfTrackpadModeAndNaturalBaseline) {
    EXPECT_FALSE(shouldInvert(T, true));
    EXPECT_TRUE(shouldInvert(T, false));
    EXPECT_TRUE(shouldInvert(M, true));
    EXPECT_FALSE(shouldInvert(M, false));
}

} // namespace
} // namespace tolvane
