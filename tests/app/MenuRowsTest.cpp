#include "Tolvane/MenuViews.h"
#include "support/FakePlatform.h"
#include "support/ViewPixels.h"

#include <QTest>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

QImage part(const QImage& image, int from, int to) {
    return image.copy(QRect(from, 0, to - from, image.height()));
}

// Every row is 300 wide, no lower than the caption, with its ink readable on a light and a
// dark panel and inside its edges: nothing runs out of the row.
TEST(MenuRows, AreThreeHundredWideWithReadableInkInsideTheirEdges) {
    FakePlatform fakes;
    SystemStats stats(fakes.host);
    HeaderView header(false, true);
    HeaderView reversed(true, false);
    CleanKeyboardRow clean(true, {});
    CleanKeyboardRow off(false, {});
    SectionCaption caption(QStringLiteral("Scrolling"));
    StatsView gauges(stats);
    for (QWidget* row :
         std::initializer_list<QWidget*>{&header, &reversed, &clean, &off, &caption, &gauges}) {
        EXPECT_EQ(row->sizeHint().width(), 300);
        EXPECT_GE(row->sizeHint().height(), caption.sizeHint().height());
        for (const QPalette& panel : {lightPanel(), darkPanel()}) {
            const QImage image = renderOnPanel(*row, panel);
            const QColor window = panel.color(QPalette::Window);
            EXPECT_GT(strongestInk(image, image.rect(), window), 90) << "readable";
            EXPECT_EQ(strongestInk(image, QRect(0, 0, 4, image.height()), window), 0) << "left";
            EXPECT_EQ(strongestInk(image, QRect(296, 0, 4, image.height()), window), 0) << "right";
        }
    }
}

TEST(MenuRows, TheHeaderPillFollowsTheMouseAndTheSubtitleTheMode) {
    HeaderView none(false, false), mouse(false, true), reversed(true, false);
    const QImage noneImage = renderOnPanel(none, lightPanel());
    const QImage mouseImage = renderOnPanel(mouse, lightPanel());
    const QImage reversedImage = renderOnPanel(reversed, lightPanel());
    EXPECT_NE(part(noneImage, 200, 300), part(mouseImage, 200, 300));
    EXPECT_EQ(part(noneImage, 0, 150), part(mouseImage, 0, 150));
    EXPECT_NE(part(noneImage, 40, 190), part(reversedImage, 40, 190));
    EXPECT_EQ(part(noneImage, 200, 300), part(reversedImage, 200, 300));
}

// A point of the card in the blank width before the chevron.
QPoint cardMiddle(const CleanKeyboardRow& row) {
    return QPoint(180, int(row.buttonRect().center().y()));
}

TEST(MenuRows, TheCleanRowLightsUpUnderTheMouseOnlyWhenEnabled) {
    CleanKeyboardRow off(false, {});
    const QImage offImage = renderOnPanel(off, lightPanel());
    for (bool enabled : {true, false}) {
        SCOPED_TRACE(enabled);
        CleanKeyboardRow row(enabled, {});
        row.show();
        const QImage idle = renderOnPanel(row, lightPanel());
        EXPECT_EQ(idle == offImage, !enabled);
        QTest::mouseMove(&row, QPoint(5, row.height() / 2)); // the outer margin
        EXPECT_FALSE(row.isHovering());
        QTest::mouseMove(&row, cardMiddle(row));
        EXPECT_TRUE(row.isHovering());
        EXPECT_EQ(renderOnPanel(row, lightPanel()) != idle, enabled);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&row, &leave);
        EXPECT_FALSE(row.isHovering());
        EXPECT_EQ(renderOnPanel(row, lightPanel()), idle);
    }
}

TEST(MenuRows, OnlyACompletedClickOnTheCardOfAnEnabledCleanRowActs) {
    int clicks = 0;
    CleanKeyboardRow row(true, [&clicks] { ++clicks; });
    row.show();
    QTest::mouseClick(&row, Qt::LeftButton, {}, cardMiddle(row));
    EXPECT_EQ(clicks, 1);
    QTest::mouseClick(&row, Qt::LeftButton, {},
                      row.buttonRect().topLeft().toPoint() + QPoint(2, 2));
    EXPECT_EQ(clicks, 2) << "the corners outside the rounded card still count";
    QTest::mouseClick(&row, Qt::LeftButton, {}, QPoint(5, row.height() / 2));
    QTest::mouseClick(&row, Qt::LeftButton, {}, QPoint(150, 1));
    QTest::mouseClick(&row, Qt::RightButton, {}, cardMiddle(row));
    QTest::mousePress(&row, Qt::LeftButton, {}, cardMiddle(row));
    QTest::mouseRelease(&row, Qt::LeftButton, {}, QPoint(150, row.height() - 1));
    EXPECT_EQ(clicks, 2);

    CleanKeyboardRow off(false, [&clicks] { ++clicks; });
    off.show();
    QTest::mouseClick(&off, Qt::LeftButton, {}, cardMiddle(off));
    EXPECT_EQ(clicks, 2);
}

TEST(MenuRows, TheSectionCaptionShowsItsTextInUpperCase) {
    SectionCaption mixed(QStringLiteral("Scrolling")), upper(QStringLiteral("SCROLLING")),
        other(QStringLiteral("Scrolled"));
    const QImage image = renderOnPanel(mixed, lightPanel());
    EXPECT_EQ(image, renderOnPanel(upper, lightPanel()));
    EXPECT_NE(image, renderOnPanel(other, lightPanel()));
}

} // namespace
} // namespace tolvane::testing
