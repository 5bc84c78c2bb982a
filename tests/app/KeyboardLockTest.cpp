#include "Tolvane/KeyboardLock.h"
#include "Tolvane/CleaningOverlay.h"
#include "Tolvane/Log.h"
#include "Tolvane/UnlockButton.h"
#include "support/FakePlatform.h"
#include "support/OffscreenScreens.h"
#include "support/OverlayProbe.h"

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace tolvane::testing {
namespace {

const std::string locked = "log: Tolvane: keyboard lock: locked";
const std::string unlocked = "log: Tolvane: keyboard lock: unlocked";
const std::string refused = "log: Tolvane: keyboard lock: tap creation failed";

// A lock on the recording keyboard grab, with its changes and its log lines in one journal.
class LockTest : public ::testing::Test {
protected:
    void SetUp() override {
        Log::setSystemLog(&fakes.systemLog);
        lock = std::make_unique<KeyboardLock>(fakes.keyboard);
        lock->onChange = [this](bool on) {
            fakes.recorder.record(std::string("onChange(") + (on ? "true" : "false") + ") with " +
                                  std::to_string(visibleOverlayWindows().size()) + " shown");
        };
    }
    void TearDown() override {
        lock.reset();
        spinEventLoop(0);
        restoreOffscreenScreens();
        Log::setSystemLog(nullptr);
    }
    const std::vector<std::string>& journal() const { return fakes.recorder.calls; }
    static void clickUnlockOn(CleaningOverlay* overlay) {
        UnlockButton* button = overlay->unlockButton();
        QTest::mouseClick(button, Qt::LeftButton, {}, button->capsuleRect().center().toPoint());
    }

    FakePlatform fakes;
    std::unique_ptr<KeyboardLock> lock;
};

TEST_F(LockTest, LockGrabsShowsOneOverlayPerScreenLogsThenTells) {
    EXPECT_TRUE(lock->lock());
    EXPECT_TRUE(lock->locked());
    EXPECT_EQ(journal(), (std::vector<std::string>{"keyboard.grab -> true", locked,
                                                   "onChange(true) with 1 shown"}));
    const QList<CleaningOverlay*> overlays = visibleOverlayWindows();
    ASSERT_EQ(overlays.size(), 1);
    CleaningOverlay* overlay = overlays[0];
    EXPECT_EQ(overlay->geometry(), QGuiApplication::primaryScreen()->geometry());
    EXPECT_EQ(overlay->screen(), QGuiApplication::primaryScreen());
    const Qt::WindowFlags flags = overlay->windowFlags();
    EXPECT_TRUE(flags.testFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                                Qt::X11BypassWindowManagerHint));
    EXPECT_TRUE(overlay->testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_TRUE(QTest::qWaitForWindowActive(overlay));
}

TEST_F(LockTest, RepeatedLockKeepsTheOneGrabAndItsWindows) {
    ASSERT_TRUE(lock->lock());
    const QList<CleaningOverlay*> first = visibleOverlayWindows();
    EXPECT_TRUE(lock->lock());
    EXPECT_TRUE(lock->lock());
    EXPECT_EQ(journal(), (std::vector<std::string>{"keyboard.grab -> true", locked,
                                                   "onChange(true) with 1 shown"}));
    EXPECT_EQ(overlayWindows(), first);
}

TEST_F(LockTest, UnlockReleasesHidesLogsTellsAndDeletesTheWindowsLater) {
    ASSERT_TRUE(lock->lock());
    const QPointer<CleaningOverlay> window = visibleOverlayWindows().value(0);
    fakes.recorder.clear();
    lock->unlock();
    EXPECT_FALSE(lock->locked());
    EXPECT_EQ(journal(), (std::vector<std::string>{"keyboard.release", unlocked,
                                                   "onChange(false) with 0 shown"}));
    EXPECT_FALSE(fakes.keyboard.held);
    spinEventLoop(0);
    EXPECT_TRUE(window.isNull());
    EXPECT_TRUE(overlayWindows().isEmpty());
}

TEST_F(LockTest, UnlockWhileUnlockedDoesNothing) {
    lock->unlock();
    ASSERT_TRUE(lock->lock());
    lock->unlock();
    fakes.recorder.clear();
    lock->unlock();
    EXPECT_TRUE(journal().empty());
}

TEST_F(LockTest, EachLockMakesNewWindowsWhoseClocksStartAgain) {
    ASSERT_TRUE(lock->lock());
    const QPointer<CleaningOverlay> first = visibleOverlayWindows().value(0);
    spinEventLoop(1100);
    EXPECT_EQ(first->clockText(), "00:01");
    lock->unlock();
    ASSERT_TRUE(lock->lock());
    spinEventLoop(0);
    EXPECT_TRUE(first.isNull());
    const QList<CleaningOverlay*> second = visibleOverlayWindows();
    ASSERT_EQ(second.size(), 1);
    EXPECT_EQ(second[0]->clockText(), "00:00");
    EXPECT_EQ(fakes.recorder.matching("keyboard.grab"),
              (std::vector<std::string>{"keyboard.grab -> true", "keyboard.grab -> true"}));
}

TEST_F(LockTest, RefusedGrabLogsReturnsFalseAndShowsNothingEachTime) {
    fakes.keyboard.grantable = false;
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_FALSE(lock->lock());
        EXPECT_FALSE(lock->locked());
    }
    EXPECT_EQ(journal(), (std::vector<std::string>{"keyboard.grab -> false", refused,
                                                   "keyboard.grab -> false", refused}));
    EXPECT_TRUE(overlayWindows().isEmpty());
    lock->unlock();
    EXPECT_EQ(journal().size(), 4u);

    fakes.keyboard.grantable = true;
    EXPECT_TRUE(lock->lock());
    EXPECT_EQ(visibleOverlayWindows().size(), 1);
}

TEST_F(LockTest, WorksTheSameWithoutAnOnChange) {
    lock->onChange = nullptr;
    ASSERT_TRUE(lock->lock());
    EXPECT_EQ(visibleOverlayWindows().size(), 1);
    lock->unlock();
    EXPECT_EQ(journal(), (std::vector<std::string>{"keyboard.grab -> true", locked,
                                                   "keyboard.release", unlocked}));
}

TEST_F(LockTest, TheButtonOfTheSecondOfTwoScreensUnlocksAndRemovesBoth) {
    ASSERT_TRUE(setOffscreenScreens(
        {{QString(), QRect(0, 0, 800, 800)}, {"right", QRect(800, 100, 1024, 640)}}));
    ASSERT_EQ(QGuiApplication::screens().size(), 2);
    ASSERT_TRUE(lock->lock());
    const QList<CleaningOverlay*> overlays = visibleOverlayWindows();
    ASSERT_EQ(overlays.size(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(overlays[i]->screen(), QGuiApplication::screens()[i]);
        EXPECT_EQ(overlays[i]->geometry(), QGuiApplication::screens()[i]->geometry());
    }
    const QPointer<CleaningOverlay> left = overlays[0];
    const QPointer<CleaningOverlay> right = overlays[1];
    fakes.recorder.clear();

    clickUnlockOn(right);

    EXPECT_FALSE(lock->locked());
    EXPECT_EQ(journal(), (std::vector<std::string>{"keyboard.release", unlocked,
                                                   "onChange(false) with 0 shown"}));
    spinEventLoop(0);
    EXPECT_TRUE(left.isNull());
    EXPECT_TRUE(right.isNull());
}

TEST_F(LockTest, AScreenThatComesWhileLockedGetsAnOverlayAndOneThatGoesTakesItsOwn) {
    const QRect main(0, 0, 800, 800);
    const QRect side(800, 0, 640, 480);
    setOffscreenScreens({{QString(), main}});
    ASSERT_TRUE(lock->lock());
    fakes.recorder.clear();

    ASSERT_TRUE(setOffscreenScreens({{QString(), main}, {"side", side}}));
    QList<CleaningOverlay*> overlays = visibleOverlayWindows();
    ASSERT_EQ(overlays.size(), 2);
    EXPECT_EQ(overlays[1]->geometry(), side);
    EXPECT_EQ(overlays[1]->screen()->name(), "side");
    const QPointer<CleaningOverlay> sideOverlay = overlays[1];
    const QPointer<CleaningOverlay> mainOverlay = overlays[0];

    ASSERT_TRUE(setOffscreenScreens({{QString(), main}}));
    spinEventLoop(0);
    EXPECT_TRUE(sideOverlay.isNull());
    EXPECT_EQ(visibleOverlayWindows(), QList<CleaningOverlay*>{mainOverlay});
    EXPECT_TRUE(lock->locked());
    EXPECT_TRUE(journal().empty()) << "screens come and go without a log line or onChange";

    clickUnlockOn(mainOverlay);
    spinEventLoop(0);
    EXPECT_TRUE(overlayWindows().isEmpty());
    EXPECT_FALSE(lock->locked());
}

TEST_F(LockTest, AnOverlayFollowsItsScreenWhenTheScreenChangesSize) {
    ASSERT_TRUE(lock->lock());
    const QRect larger(0, 0, 1280, 1024);
    ASSERT_TRUE(setOffscreenScreens({{QString(), larger}}));
    spinEventLoop(0);
    ASSERT_EQ(QGuiApplication::primaryScreen()->geometry(), larger);
    const QList<CleaningOverlay*> overlays = visibleOverlayWindows();
    ASSERT_EQ(overlays.size(), 1);
    EXPECT_EQ(overlays[0]->geometry(), larger);
}

TEST_F(LockTest, ScreensThatComeWhileUnlockedGetNothing) {
    ASSERT_TRUE(setOffscreenScreens(
        {{QString(), QRect(0, 0, 800, 800)}, {"side", QRect(800, 0, 640, 480)}}));
    EXPECT_TRUE(overlayWindows().isEmpty());
    ASSERT_TRUE(lock->lock());
    lock->unlock();
    ASSERT_TRUE(setOffscreenScreens({{QString(), QRect(0, 0, 800, 800)}}));
    ASSERT_TRUE(setOffscreenScreens(
        {{QString(), QRect(0, 0, 800, 800)}, {"other", QRect(0, 800, 640, 480)}}));
    spinEventLoop(0);
    EXPECT_TRUE(overlayWindows().isEmpty());
}

TEST_F(LockTest, DestroyingALockedLockTakesItsWindowsWithIt) {
    ASSERT_TRUE(lock->lock());
    const QPointer<CleaningOverlay> window = visibleOverlayWindows().value(0);
    lock.reset();
    EXPECT_TRUE(window.isNull());
}

} // namespace
} // namespace tolvane::testing
