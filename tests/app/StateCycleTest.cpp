#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QMenu>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

class StateCycle : public AppHarness {
protected:
    void SetUp() override {
        AppHarness::SetUp();
        launch();
        settle();
        recorder().clear();
    }
};

TEST_F(StateCycle, AMouseArrivalIsLoggedThenAppliedStoredAndShownInANewMenu) {
    QMenu* before = delegate->menu();
    fakes().pointers.plug({"usb-7", {1, 2, 0, "Wireless Mouse"}});
    const std::string connected = "log: Tolvane: mouse connected: Wireless Mouse (1 present)";
    EXPECT_EQ(recorder().matching("log: "), std::vector<std::string>{connected});
    settle();
    EXPECT_EQ(
        recorder().matching("log: "),
        (std::vector<std::string>{
            connected, "log: Tolvane: applyInversion mode=mouse baseline=false inverting=false"}));
    EXPECT_EQ(delegate->currentState(), (AppState{true, true, ScrollMode::mouse}));
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_NE(delegate->menu(), before);
}

TEST_F(StateCycle, ManualAndAutoTogglesChangeTheDirectionAndAreStored) {
    delegate->manualToggle();
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::mouse}));
    EXPECT_FALSE(delegate->isInverting());
    settle();
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_EQ(storedText("autoEnabled"), "true");
    delegate->toggleAuto(); // auto off, mode kept
    EXPECT_EQ(delegate->currentState(), (AppState{false, false, ScrollMode::mouse}));
    settle();
    EXPECT_EQ(storedText("autoEnabled"), "false");
    delegate->toggleAuto(); // auto on, mode from the connection
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::trackpad}));
    EXPECT_TRUE(delegate->isInverting());
}

TEST_F(StateCycle, ChangesWithoutAStateChangeRenderTheMenuButNeverWriteTheSettings) {
    writeSettings("[General]\nautoEnabled=false\nmode=mouse\n");
    const QMenu* before = delegate->menu();
    delegate->lockForTesting().lock();
    delegate->lockForTesting().unlock();
    delegate->toggleLogin();
    settle();
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_EQ(storedText("autoEnabled"), "false");
    EXPECT_TRUE(recorder().matching("log: Tolvane: applyInversion").empty());
    EXPECT_NE(delegate->menu(), before);
}

TEST_F(StateCycle, ToggleLoginAsksForTheOppositeAndLogsOnlyAFailure) {
    delegate->toggleLogin();
    delegate->toggleLogin();
    fakes().login.failWith = "Permission denied";
    delegate->toggleLogin();
    EXPECT_FALSE(fakes().login.enabled);
    EXPECT_EQ(recorder().calls,
              (std::vector<std::string>{
                  "login.setEnabled true", "login.setEnabled false", "login.setEnabled true",
                  "log: Tolvane: login item change failed: Permission denied"}));
}

TEST_F(StateCycle, ReportsWhileTheMenuIsOpenLeaveTheOpenMenuAlone) {
    QMenu* open = delegate->menu();
    open->popup(QPoint(10, 10));
    settle();
    fakes().pointers.plug({"usb-1", {1, 2, 0, "Mouse"}});
    settle();
    EXPECT_TRUE(open->isVisible());
    EXPECT_NE(delegate->menu(), open);
    open->hide();
}

} // namespace
} // namespace tolvane::testing
