#include "Tolvane/lock/KeyboardLock.h"
#include "Tolvane/lock/CleaningOverlay.h"
#include "Tolvane/lock/ScreenBackdrop.h"
#include "Tolvane/lock/UnlockButton.h"
#include "support/AppHarness.h"
#include "support/Views.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace tolvane::testing {
namespace {

// One overlay of 1000 by 700 counting its unlock calls.
class Overlay : public ::testing::Test {
protected:
    void make(QImage backdrop, bool shown = false) {
        overlay = std::make_unique<CleaningOverlay>([this] { ++unlocks; }, std::move(backdrop));
        overlay->setAttribute(Qt::WA_TranslucentBackground);
        overlay->setGeometry(0, 0, 1000, 700);
        if (shown) {
            overlay->show();
            overlay->activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(overlay.get()));
        }
    }
    // The overlay and its children painted onto a transparent picture, as its window shows it.
    QImage picture() {
        QImage image(overlay->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        overlay->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image;
    }
    UnlockButton& button() { return *overlay->unlockButton(); }
    QPoint capsuleCentre() { return button().capsuleRect().center().toPoint(); }

    std::unique_ptr<CleaningOverlay> overlay;
    int unlocks = 0;
};

TEST_F(Overlay, DarkensTheBlurredScreenPictureOrWithoutOneIsASeeThroughLayer) {
    QImage screen(1000, 700, QImage::Format_ARGB32_Premultiplied);
    screen.fill(QColor(200, 40, 40));
    QPainter(&screen).fillRect(500, 0, 500, 700, QColor(40, 40, 200));
    make(blurredBackdrop(screen));
    QImage shot = picture();
    // Far from the seam each half keeps its hue, darker; at the seam the blur mixes both.
    const QColor left = shot.pixelColor(40, 40), right = shot.pixelColor(960, 660);
    EXPECT_TRUE(left.red() < 200 && left.red() > 3 * left.blue() && left.alpha() == 255);
    EXPECT_TRUE(right.blue() < 200 && right.blue() > 3 * right.red());
    EXPECT_TRUE(shot.pixelColor(500, 40).red() > 45 && shot.pixelColor(500, 40).blue() > 45);

    make(QImage());
    shot = picture();
    for (QPoint p : {QPoint(0, 0), QPoint(999, 699), QPoint(40, 650)}) {
        const QColor c = shot.pixelColor(p);
        EXPECT_TRUE(c.alpha() > 40 && c.alpha() < 160 && c.black() > 200) << "a dark veil";
    }
    // On a screen 420 px wide the column keeps 48 px clear at each side.
    overlay->setGeometry(0, 0, 420, 700);
    const QImage narrow = picture();
    EXPECT_EQ(strongestInk(narrow, QRect(0, 0, 48, 700), Qt::black), 0);
    EXPECT_EQ(strongestInk(narrow, QRect(420 - 48, 0, 48, 700), Qt::black), 0);
}

// Only a completed click on the capsule unlocks. (No key reaches the overlay: the lock session
// on a real X server types on the locked keyboard and sees nothing arrive anywhere.)
TEST_F(Overlay, OnlyACompletedClickOnTheCapsuleUnlocks) {
    make(QImage(), true);
    QTest::mouseClick(overlay.get(), Qt::LeftButton, {}, QPoint(30, 30));
    QTest::mouseClick(overlay.get(), Qt::LeftButton, {}, overlay->clockArea().center());
    QTest::mouseClick(&button(), Qt::LeftButton, {}, QPoint(4, 4)); // in the glow, off the capsule
    QTest::mousePress(&button(), Qt::LeftButton, {}, capsuleCentre());
    QTest::mouseRelease(&button(), Qt::LeftButton, {}, QPoint(2, 2)); // released off it
    EXPECT_EQ(unlocks, 0);
    QTest::mouseClick(&button(), Qt::LeftButton, {}, capsuleCentre());
    EXPECT_EQ(unlocks, 1);
}

const std::string locked = "log: Tolvane: keyboard lock: locked";
const std::string unlocked = "log: Tolvane: keyboard lock: unlocked";
const std::string refused = "log: Tolvane: keyboard lock: tap creation failed";
const QRect mainScreen(0, 0, 800, 800);

// A lock on the recording keyboard grab, with its changes and its log lines in one journal.
class LockTest : public AppHarness {
protected:
    void SetUp() override {
        AppHarness::SetUp();
        lock = std::make_unique<KeyboardLock>(fakes().keyboard);
        lock->onChange = [this](bool on) {
            recorder().record(std::string("onChange(") + (on ? "true" : "false") + ") with " +
                              std::to_string(overlayWindows(true).size()) + " shown");
        };
    }
    void TearDown() override {
        lock.reset();
        setOffscreenScreens({});
        AppHarness::TearDown();
    }
    const Lines& journal() { return recorder().calls; }

    std::unique_ptr<KeyboardLock> lock;
};

// A refused grab logs each time; a granted one tells once however often it is asked.
TEST_F(LockTest, LockGrabsCoversTheScreenLogsAndTellsOnceAndUnlockUndoesIt) {
    fakes().keyboard.grantable = false;
    EXPECT_FALSE(lock->lock());
    EXPECT_FALSE(lock->lock());
    lock->unlock();
    EXPECT_EQ(journal(),
              (Lines{"keyboard.grab -> false", refused, "keyboard.grab -> false", refused}));
    EXPECT_TRUE(overlayWindows().isEmpty());
    recorder().clear();
    fakes().keyboard.grantable = true;
    EXPECT_TRUE(lock->lock());
    EXPECT_TRUE(lock->lock());
    EXPECT_TRUE(lock->locked());
    EXPECT_EQ(journal(), (Lines{"keyboard.grab -> true", locked, "onChange(true) with 1 shown"}));
    const QList<CleaningOverlay*> overlays = overlayWindows();
    ASSERT_EQ(overlays.size(), 1);
    const QPointer<CleaningOverlay> overlay = overlays[0];
    EXPECT_TRUE(overlay->windowFlags().testFlags(
        Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint));
    EXPECT_TRUE(QTest::qWaitForWindowActive(overlay));

    recorder().clear();
    lock->unlock();
    lock->unlock();
    EXPECT_FALSE(lock->locked());
    EXPECT_EQ(journal(), (Lines{"keyboard.release", unlocked, "onChange(false) with 0 shown"}));
    settle();
    EXPECT_TRUE(overlay.isNull());
    ASSERT_TRUE(lock->lock()); // new windows
    EXPECT_EQ(overlayWindows(true).size(), 1);
}

// A screen that comes, goes or changes size while locked needs no log line or change told.
TEST_F(LockTest, OverlaysFollowTheScreensWhileLockedAndAnyButtonUnlocksAll) {
    ASSERT_TRUE(setOffscreenScreens({{QString(), mainScreen}, {"other", {0, 800, 640, 480}}}));
    settle();
    EXPECT_TRUE(overlayWindows().isEmpty()) << "a screen that came while unlocked";
    ASSERT_TRUE(lock->lock());
    ASSERT_EQ(overlayWindows(true).size(), 2);
    recorder().clear();
    ASSERT_TRUE(setOffscreenScreens(
        {{QString(), mainScreen}, {"other", {0, 800, 640, 480}}, {"side", {800, 0, 640, 480}}}));
    QList<CleaningOverlay*> overlays = overlayWindows(true);
    ASSERT_EQ(overlays.size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(overlays[i]->screen(), QGuiApplication::screens()[i]);
        EXPECT_EQ(overlays[i]->geometry(), QGuiApplication::screens()[i]->geometry());
    }
    const QPointer<CleaningOverlay> sideOverlay = overlays[2];
    const QRect larger(0, 0, 1280, 1024);
    ASSERT_TRUE(setOffscreenScreens({{QString(), larger}, {"other", {0, 1024, 640, 480}}}));
    settle();
    EXPECT_TRUE(sideOverlay.isNull());
    overlays = overlayWindows(true);
    ASSERT_EQ(overlays.size(), 2);
    EXPECT_EQ(overlays[0]->geometry(), larger);
    EXPECT_TRUE(lock->locked());
    EXPECT_TRUE(journal().empty());

    UnlockButton* button = overlays[1]->unlockButton();
    QTest::mouseClick(button, Qt::LeftButton, {}, button->capsuleRect().center().toPoint());
    EXPECT_FALSE(lock->locked());
    EXPECT_EQ(journal(), (Lines{"keyboard.release", unlocked, "onChange(false) with 0 shown"}));
    settle();
    EXPECT_TRUE(overlayWindows().isEmpty());
}

} // namespace
} // namespace tolvane::testing
