#include "Tolvane/MenuViews.h"
#include "support/ViewPixels.h"

#include <QTest>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

bool bluish(QColor c) {
    return c.blue() - c.red() > 90 && c.blue() > 180;
}

QRect leftPart(const QImage& image, int from, int to) {
    return QRect(from, 0, to - from, image.height());
}

TEST(MenuRows, AreThreeHundredWideAndTheCaptionIsTheLowest) {
    HeaderView header(false, false);
    CleanKeyboardRow clean(true, {});
    SectionCaption caption(QStringLiteral("Scrolling"));
    for (QWidget* row : std::initializer_list<QWidget*>{&header, &clean, &caption}) {
        EXPECT_EQ(row->sizeHint().width(), 300);
        EXPECT_GE(row->sizeHint().height(), caption.sizeHint().height());
    }
}

TEST(HeaderViewPixels, TheBadgeCarriesTheWhiteGlyphOnTheBlueGradient) {
    HeaderView header(false, false);
    const QImage image = renderOnPanel(header, lightPanel());
    const int top = 8 + (image.height() - 12 - 30) / 2;
    EXPECT_TRUE(closeTo(image.pixelColor(14 + 4, top + 4), QColor(59, 91, 255), 20));
    EXPECT_TRUE(closeTo(image.pixelColor(14 + 25, top + 25), QColor(138, 123, 255), 20));
    EXPECT_GT(countPixels(image, QRect(14, top, 30, 30),
                          [](QColor c) { return bool(closeTo(c, Qt::white, 10)); }),
              25);
    EXPECT_EQ(countPixels(image, QRect(0, 0, 13, image.height()), bluish), 0);
}

TEST(HeaderViewPixels, ThePillTurnsBlueWithAMouseAndTheSubtitleFollowsTheMode) {
    HeaderView none(false, false);
    HeaderView mouse(false, true);
    HeaderView reversed(true, false);
    const QImage noneImage = renderOnPanel(none, lightPanel());
    const QImage mouseImage = renderOnPanel(mouse, lightPanel());
    const QImage reversedImage = renderOnPanel(reversed, lightPanel());
    const QRect pill = leftPart(noneImage, 200, 300);
    EXPECT_EQ(countPixels(noneImage, pill, bluish), 0);
    EXPECT_GT(countPixels(mouseImage, pill, bluish), 30);
    EXPECT_EQ(noneImage.copy(leftPart(noneImage, 0, 150)),
              mouseImage.copy(leftPart(mouseImage, 0, 150)));
    EXPECT_NE(noneImage.copy(leftPart(noneImage, 40, 190)),
              reversedImage.copy(leftPart(reversedImage, 40, 190)));
    EXPECT_EQ(noneImage.copy(pill), reversedImage.copy(pill));
}

TEST(HeaderViewPixels, TextIsReadableOnLightAndDarkPanels) {
    for (const QPalette& panel : {lightPanel(), darkPanel()}) {
        HeaderView header(true, false);
        const QImage image = renderOnPanel(header, panel);
        const QColor window = panel.color(QPalette::Window);
        const int middle = image.height() / 2;
        EXPECT_GT(strongestInk(image, QRect(54, 0, 140, middle), window), 170) << "title";
        EXPECT_GT(strongestInk(image, QRect(54, middle + 2, 140, middle - 2), window), 90)
            << "subtitle";
        EXPECT_GT(strongestInk(image, leftPart(image, 210, 290), window), 90) << "pill";
    }
}

// A point of the card in the blank width before the chevron.
QPoint cardMiddle(const CleanKeyboardRow& row) {
    return QPoint(180, int(row.buttonRect().center().y()));
}

TEST(CleanRow, DisabledLooksFainterExplainsWhyAndIgnoresTheMouse) {
    CleanKeyboardRow off(false, {});
    const QImage offImage = renderOnPanel(off, lightPanel());
    for (bool enabled : {true, false}) {
        SCOPED_TRACE(enabled);
        CleanKeyboardRow row(enabled, {});
        row.show();
        const QImage idle = renderOnPanel(row, lightPanel());
        const int middle = idle.height() / 2;
        const QColor disc = idle.pixelColor(23, middle);
        // Faded towards the panel; same title, other explanation.
        EXPECT_EQ(bool(closeTo(disc, QColor(34, 193, 238), 30)), enabled);
        EXPECT_EQ(offImage.pixelColor(23, middle).red() > disc.red() + 60, enabled);
        EXPECT_EQ(offImage.copy(56, middle + 1, 200, middle - 1) !=
                      idle.copy(56, middle + 1, 200, middle - 1),
                  enabled);

        QTest::mouseMove(&row, QPoint(5, row.height() / 2)); // the outer margin
        EXPECT_FALSE(row.isHovering());
        QTest::mouseMove(&row, cardMiddle(row));
        EXPECT_TRUE(row.isHovering());
        const QColor hovered = renderOnPanel(row, lightPanel()).pixelColor(cardMiddle(row));
        EXPECT_EQ(hovered.blue() - hovered.red() > 15, enabled) << "tinted";
        EXPECT_LT(idle.pixelColor(cardMiddle(row)).blue() - idle.pixelColor(cardMiddle(row)).red(),
                  3);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&row, &leave);
        EXPECT_FALSE(row.isHovering());
        EXPECT_EQ(renderOnPanel(row, lightPanel()), idle);
    }
}

TEST(CleanRow, OnlyACompletedClickOnTheCardOfAnEnabledRowActs) {
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

TEST(SectionCaptionPixels, ShowsTheTextInUpperCaseBelowAGap) {
    SectionCaption mixed(QStringLiteral("Scrolling"));
    SectionCaption upper(QStringLiteral("SCROLLING"));
    SectionCaption other(QStringLiteral("Scrolled"));
    const QImage image = renderOnPanel(mixed, lightPanel());
    EXPECT_EQ(image, renderOnPanel(upper, lightPanel()));
    EXPECT_NE(image, renderOnPanel(other, lightPanel()));
    const QColor window = lightPanel().color(QPalette::Window);
    EXPECT_EQ(strongestInk(image, QRect(0, 0, 300, 4), window), 0);
    EXPECT_EQ(strongestInk(image, QRect(0, 0, 14, image.height()), window), 0);
    for (const QPalette& panel : {lightPanel(), darkPanel()}) {
        SectionCaption caption(QStringLiteral("Scrolling"));
        EXPECT_GT(strongestInk(renderOnPanel(caption, panel), QRect(14, 4, 100, 12),
                               panel.color(QPalette::Window)),
                  90);
    }
}

} // namespace
} // namespace tolvane::testing
