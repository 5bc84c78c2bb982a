#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QAction>
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

    // The recorded steps of one cycle, without the reads a menu build makes.
    std::vector<std::string> steps() const {
        std::vector<std::string> kept;
        for (const std::string& call : fakePlatform->recorder.calls) {
            if (call != "access.isTrusted") {
                kept.push_back(call);
            }
        }
        return kept;
    }
};

TEST_F(StateCycle, MouseArrivalRunsReduceApplySaveRenderInOrder) {
    QMenu* before = delegate->menu();
    fakes().pointers.plug({"usb-7", {1, 2, 0, "Wireless Mouse"}});
    EXPECT_EQ(steps(), (std::vector<std::string>{
                           "log: Tolvane: mouse connected: Wireless Mouse (1 present)"}));
    settle();
    EXPECT_EQ(steps(), (std::vector<std::string>{
                           "log: Tolvane: mouse connected: Wireless Mouse (1 present)",
                           "log: Tolvane: applyInversion mode=mouse baseline=false inverting=false",
                       }));
    EXPECT_EQ(delegate->currentState(), (AppState{true, true, ScrollMode::mouse}));
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_NE(delegate->menu(), before);
}

TEST_F(StateCycle, ManualToggleUnderAutoIsStoredAndKeepsAutoOn) {
    delegate->manualToggle();
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::mouse}));
    EXPECT_FALSE(delegate->isInverting());
    settle();
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_EQ(storedText("autoEnabled"), "true");
}

TEST_F(StateCycle, ToggleAutoSendsTheOppositeAndRecomputesTheMode) {
    delegate->manualToggle(); // T F mouse
    delegate->toggleAuto();   // auto off, mode kept
    EXPECT_EQ(delegate->currentState(), (AppState{false, false, ScrollMode::mouse}));
    delegate->toggleAuto(); // auto on, mode from the connection
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::trackpad}));
    settle();
    EXPECT_EQ(storedText("autoEnabled"), "true");
}

TEST_F(StateCycle, ChangesWithoutAStateChangeNeverWriteTheSettings) {
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

TEST_F(StateCycle, ToggleLoginAsksForTheOppositeOfTheRegistration) {
    delegate->toggleLogin();
    EXPECT_TRUE(fakes().login.enabled);
    delegate->toggleLogin();
    EXPECT_FALSE(fakes().login.enabled);
    EXPECT_EQ(recorder().matching("login."),
              (std::vector<std::string>{"login.setEnabled true", "login.setEnabled false"}));
}

TEST_F(StateCycle, FailedLoginChangeGoesToTheSystemLogOnly) {
    fakes().login.failWith = "Permission denied";
    delegate->toggleLogin();
    EXPECT_EQ(
        recorder().matching("log: "),
        (std::vector<std::string>{"log: Tolvane: login item change failed: Permission denied"}));
    EXPECT_FALSE(fakes().login.enabled);
}

TEST_F(StateCycle, ReportsWhileTheMenuIsOpenLeaveTheOpenMenuAlone) {
    QMenu* open = delegate->menu();
    open->popup(QPoint(10, 10));
    settle();
    fakes().pointers.plug({"usb-1", {1, 2, 0, "Mouse"}});
    settle();
    ASSERT_FALSE(open == nullptr);
    EXPECT_TRUE(open->isVisible());
    EXPECT_NE(delegate->menu(), open);
    open->hide();
    settle();
}

} // namespace
} // namespace tolvane::testing
