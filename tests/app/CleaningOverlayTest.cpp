#include "Tolvane/CleaningOverlay.h"
#include "Tolvane/ScreenBackdrop.h"
#include "Tolvane/UnlockButton.h"
#include "support/AppHarness.h"
#include "support/ViewPixels.h"

#include <QPainter>
#include <QShortcut>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace tolvane::testing {
namespace {

QImage filled(QSize size, QColor colour) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

// The widget and its children painted onto a transparent picture, as its window shows it.
QImage renderedPicture(QWidget& widget) {
    QImage picture = filled(widget.size(), Qt::transparent);
    widget.render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
    return picture;
}

// One overlay of 1000 by 700 counting its unlock calls, shown as a window of its own.
class Overlay : public ::testing::Test {
protected:
    void make(QImage backdrop) {
        overlay = std::make_unique<CleaningOverlay>([this] { ++unlocks; }, std::move(backdrop));
        overlay->setAttribute(Qt::WA_TranslucentBackground);
        overlay->setGeometry(0, 0, 1000, 700);
    }
    void showAndActivate() {
        overlay->show();
        overlay->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(overlay.get()));
    }
    UnlockButton& button() { return *overlay->unlockButton(); }
    QPoint capsuleCentre() { return button().capsuleRect().center().toPoint(); }
    // A point of the capsule in the overlay's coordinates.
    QPoint onCapsule(qreal dx, qreal dy) {
        const QRectF c = button().capsuleRect();
        return button()
            .mapTo(overlay.get(), QPointF(c.center().x() + dx, c.center().y() + dy))
            .toPoint();
    }

    std::unique_ptr<CleaningOverlay> overlay;
    int unlocks = 0;
};

TEST_F(Overlay, DarkensTheBlurredScreenPictureOrWithoutOneIsASeeThroughLayer) {
    QImage screen = filled(QSize(1000, 700), QColor(200, 40, 40));
    QPainter(&screen).fillRect(500, 0, 500, 700, QColor(40, 40, 200));
    make(blurredBackdrop(screen));
    QImage picture = renderedPicture(*overlay);
    // Far from the seam each half keeps its hue, darker; at the seam the blur mixes both.
    const QColor left = picture.pixelColor(40, 40), right = picture.pixelColor(960, 660);
    EXPECT_TRUE(left.red() < 200 && left.red() > 3 * left.blue() && left.alpha() == 255);
    EXPECT_TRUE(right.blue() < 200 && right.blue() > 3 * right.red());
    EXPECT_GT(picture.pixelColor(500, 40).red(), 45);
    EXPECT_GT(picture.pixelColor(500, 40).blue(), 45);

    make(QImage());
    picture = renderedPicture(*overlay);
    for (QPoint p : {QPoint(0, 0), QPoint(999, 699), QPoint(40, 650)}) {
        const QColor c = picture.pixelColor(p);
        EXPECT_TRUE(c.alpha() > 40 && c.alpha() < 160 && c.black() > 200) << "a dark veil";
    }
}

// On a screen 420 px wide the column keeps 48 px clear at each side: its texts wrap, and
// nothing of them is lost.
TEST_F(Overlay, OnANarrowScreenTheColumnKeepsClearOfTheSidesAndItsTextsWrap) {
    make(QImage());
    const auto ink = [](const QImage& picture, const QRect& area) {
        return countPixels(picture, area, [](QColor c) {
            return std::max({std::abs(c.alpha() - 89), c.red(), c.green(), c.blue()}) > 1;
        });
    };
    const int wide = ink(renderedPicture(*overlay), overlay->rect());
    overlay->setGeometry(0, 0, 420, 700);
    const QImage narrow = renderedPicture(*overlay);
    EXPECT_EQ(ink(narrow, QRect(0, 0, 48, 700)), 0);
    EXPECT_EQ(ink(narrow, QRect(420 - 48, 0, 48, 700)), 0);
    EXPECT_NEAR(ink(narrow, narrow.rect()), wide, wide / 20);
}

TEST_F(Overlay, HoverGrowsTheCapsuleAndItsGlowAndLeavingRestoresTheRestingLook) {
    make(filled(QSize(100, 70), Qt::black));
    showAndActivate();
    const QRectF capsule = button().capsuleRect();
    const QRect around = QRect(onCapsule(-capsule.width() / 2 - 24, -capsule.height() / 2 - 24),
                               onCapsule(capsule.width() / 2 + 24, capsule.height() / 2 + 24));
    const QImage resting = renderedPicture(*overlay).copy(around);

    QTest::mouseMove(&button(), capsuleCentre());
    settle(300);
    ASSERT_TRUE(button().hovering());
    const QImage hovered = renderedPicture(*overlay).copy(around);
    EXPECT_NE(hovered, resting);
    // The capsule grows past its resting right end.
    const QPoint pastEnd = onCapsule(capsule.width() / 2 + 2, 0) - around.topLeft();
    EXPECT_GT(hovered.pixelColor(pastEnd).blue(), resting.pixelColor(pastEnd).blue() + 60);

    QTest::mouseMove(overlay.get(), QPoint(20, 20));
    settle(300);
    EXPECT_FALSE(button().hovering());
    EXPECT_EQ(renderedPicture(*overlay).copy(around), resting);
}

TEST_F(Overlay, ClockStartsAtZeroAndTheWindowShowsItMoveAfterASecond) {
    make(QImage());
    showAndActivate();
    EXPECT_EQ(overlay->clockText(), "00:00");
    settle(50);
    auto shownClock = [this] {
        return overlay->screen()->grabWindow(overlay->winId()).toImage().copy(overlay->clockArea());
    };
    const QImage atZero = shownClock();
    EXPECT_TRUE(QTest::qWaitFor([&] { return shownClock() != atZero; }, 3000));
    EXPECT_EQ(overlay->clockText(), "00:01");
}

TEST_F(Overlay, OnlyACompletedClickOnTheCapsuleUnlocksAndNoKeyOrShortcutDoesAnything) {
    QWidget elsewhere;
    int quits = 0;
    QShortcut quit(QKeySequence(QStringLiteral("Ctrl+Q")), &elsewhere);
    quit.setContext(Qt::ApplicationShortcut);
    QObject::connect(&quit, &QShortcut::activated, [&quits] { ++quits; });
    elsewhere.show();
    elsewhere.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&elsewhere));
    QTest::keyClick(&elsewhere, Qt::Key_Q, Qt::ControlModifier);
    ASSERT_EQ(quits, 1) << "the shortcut works outside the overlay";

    make(QImage());
    showAndActivate();
    for (QWidget* target :
         {static_cast<QWidget*>(overlay.get()), static_cast<QWidget*>(&button())}) {
        for (Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Escape,
                            Qt::Key_Tab, Qt::Key_U, Qt::Key_VolumeUp}) {
            QTest::keyClick(target, key);
        }
        QTest::keyClick(target, Qt::Key_Q, Qt::ControlModifier);
        QTest::keyClick(target, Qt::Key_F4, Qt::AltModifier);
    }
    EXPECT_EQ(quits, 1);
    EXPECT_TRUE(overlay->isVisible());
    EXPECT_FALSE(button().hasFocus());

    QTest::mouseClick(overlay.get(), Qt::LeftButton, {}, QPoint(30, 30));
    QTest::mouseClick(overlay.get(), Qt::LeftButton, {}, overlay->clockArea().center());
    QTest::mouseClick(&button(), Qt::LeftButton, {}, QPoint(4, 4)); // in the glow, off the capsule
    QTest::mousePress(&button(), Qt::LeftButton, {}, capsuleCentre());
    QTest::mouseRelease(&button(), Qt::LeftButton, {}, QPoint(2, 2)); // released off it
    EXPECT_EQ(unlocks, 0);
    QTest::mouseClick(&button(), Qt::LeftButton, {}, capsuleCentre());
    EXPECT_EQ(unlocks, 1);
}

} // namespace
} // namespace tolvane::testing
