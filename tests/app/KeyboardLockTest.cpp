#include "Tolvane/KeyboardLock.h"
#include "Tolvane/CleaningOverlay.h"
#include "Tolvane/Log.h"
#include "Tolvane/UnlockButton.h"
#include "support/AppHarness.h"
#include "support/Screens.h"

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace tolvane::testing {
namespace {

using Journal = std::vector<std::string>;
const std::string locked = "log: Tolvane: keyboard lock: locked";
const std::string unlocked = "log: Tolvane: keyboard lock: unlocked";
const std::string refused = "log: Tolvane: keyboard lock: tap creation failed";
const QRect mainScreen(0, 0, 800, 800);

// A lock on the recording keyboard grab, with its changes and its log lines in one journal.
class LockTest : public ::testing::Test {
protected:
    void SetUp() override {
        Log::setSystemLog(&fakes.systemLog);
        lock = std::make_unique<KeyboardLock>(fakes.keyboard);
        lock->onChange = [this](bool on) {
            fakes.recorder.record(std::string("onChange(") + (on ? "true" : "false") + ") with " +
                                  std::to_string(overlayWindows(true).size()) + " shown");
        };
    }
    void TearDown() override {
        lock.reset();
        settle();
        restoreOffscreenScreens();
        Log::setSystemLog(nullptr);
    }
    const Journal& journal() const { return fakes.recorder.calls; }
    static void clickUnlockOn(CleaningOverlay* overlay) {
        UnlockButton* button = overlay->unlockButton();
        QTest::mouseClick(button, Qt::LeftButton, {}, button->capsuleRect().center().toPoint());
    }

    FakePlatform fakes;
    std::unique_ptr<KeyboardLock> lock;
};

TEST_F(LockTest, LockGrabsCoversTheScreenLogsAndTellsOnceAndUnlockUndoesIt) {
    lock->unlock();
    for (int repeat = 0; repeat < 3; ++repeat) {
        EXPECT_TRUE(lock->lock());
    }
    EXPECT_TRUE(lock->locked());
    EXPECT_EQ(journal(), (Journal{"keyboard.grab -> true", locked, "onChange(true) with 1 shown"}));
    const QList<CleaningOverlay*> overlays = overlayWindows();
    ASSERT_EQ(overlays.size(), 1);
    const QPointer<CleaningOverlay> overlay = overlays[0];
    EXPECT_TRUE(overlay->isVisible());
    EXPECT_EQ(overlay->geometry(), QGuiApplication::primaryScreen()->geometry());
    EXPECT_TRUE(overlay->windowFlags().testFlags(
        Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint));
    EXPECT_TRUE(overlay->testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_TRUE(QTest::qWaitForWindowActive(overlay));

    fakes.recorder.clear();
    lock->unlock();
    lock->unlock();
    EXPECT_FALSE(lock->locked());
    EXPECT_FALSE(fakes.keyboard.held);
    EXPECT_EQ(journal(), (Journal{"keyboard.release", unlocked, "onChange(false) with 0 shown"}));
    settle();
    EXPECT_TRUE(overlay.isNull());

    ASSERT_TRUE(lock->lock()); // new windows
    ASSERT_EQ(overlayWindows(true).size(), 1);
}

TEST_F(LockTest, ARefusedGrabLogsReturnsFalseAndShowsNothingEachTime) {
    fakes.keyboard.grantable = false;
    EXPECT_FALSE(lock->lock());
    EXPECT_FALSE(lock->lock());
    lock->unlock();
    EXPECT_FALSE(lock->locked());
    EXPECT_EQ(journal(),
              (Journal{"keyboard.grab -> false", refused, "keyboard.grab -> false", refused}));
    EXPECT_TRUE(overlayWindows().isEmpty());

    fakes.keyboard.grantable = true;
    lock->onChange = nullptr;
    EXPECT_TRUE(lock->lock());
    EXPECT_EQ(overlayWindows(true).size(), 1);
}

TEST_F(LockTest, TheButtonOfTheSecondOfTwoScreensUnlocksAndRemovesBoth) {
    ASSERT_TRUE(setOffscreenScreens({{QString(), mainScreen}, {"right", {800, 100, 1024, 640}}}));
    ASSERT_TRUE(lock->lock());
    const QList<CleaningOverlay*> overlays = overlayWindows(true);
    ASSERT_EQ(overlays.size(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(overlays[i]->screen(), QGuiApplication::screens()[i]);
        EXPECT_EQ(overlays[i]->geometry(), QGuiApplication::screens()[i]->geometry());
    }
    fakes.recorder.clear();
    clickUnlockOn(overlays[1]);
    EXPECT_FALSE(lock->locked());
    EXPECT_EQ(journal(), (Journal{"keyboard.release", unlocked, "onChange(false) with 0 shown"}));
    settle();
    EXPECT_TRUE(overlayWindows().isEmpty());
}

TEST_F(LockTest, OverlaysFollowScreensThatComeGoOrChangeSizeWhileLocked) {
    ASSERT_TRUE(lock->lock());
    fakes.recorder.clear();
    const QRect side(800, 0, 640, 480);
    ASSERT_TRUE(setOffscreenScreens({{QString(), mainScreen}, {"side", side}}));
    const QList<CleaningOverlay*> overlays = overlayWindows(true);
    ASSERT_EQ(overlays.size(), 2);
    EXPECT_EQ(overlays[1]->geometry(), side);
    EXPECT_EQ(overlays[1]->screen()->name(), "side");
    const QPointer<CleaningOverlay> sideOverlay = overlays[1];
    const QPointer<CleaningOverlay> mainOverlay = overlays[0];

    const QRect larger(0, 0, 1280, 1024);
    ASSERT_TRUE(setOffscreenScreens({{QString(), larger}}));
    settle();
    EXPECT_TRUE(sideOverlay.isNull());
    EXPECT_EQ(overlayWindows(true), QList<CleaningOverlay*>{mainOverlay});
    EXPECT_EQ(mainOverlay->geometry(), larger);
    EXPECT_TRUE(lock->locked());
    EXPECT_TRUE(journal().empty()) << "screens come and go without a log line or onChange";

    clickUnlockOn(mainOverlay);
    settle();
    EXPECT_TRUE(overlayWindows().isEmpty());
    EXPECT_FALSE(lock->locked());
}

TEST_F(LockTest, ScreensThatComeWhileUnlockedGetNothing) {
    ASSERT_TRUE(setOffscreenScreens({{QString(), mainScreen}, {"side", {800, 0, 640, 480}}}));
    EXPECT_TRUE(overlayWindows().isEmpty());
    ASSERT_TRUE(lock->lock());
    lock->unlock();
    ASSERT_TRUE(setOffscreenScreens({{QString(), mainScreen}, {"other", {0, 800, 640, 480}}}));
    settle();
    EXPECT_TRUE(overlayWindows().isEmpty());
}

TEST_F(LockTest, DestroyingALockedLockTakesItsWindowsWithIt) {
    ASSERT_TRUE(lock->lock());
    const QPointer<CleaningOverlay> window = overlayWindows().value(0);
    lock.reset();
    EXPECT_TRUE(window.isNull());
}

} // namespace
} // namespace tolvane::testing
