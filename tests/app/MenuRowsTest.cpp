#include "Tolvane/gauges/RingGauge.h"
#include "Tolvane/gauges/StatsView.h"
#include "Tolvane/menu/CleanKeyboardRow.h"
#include "Tolvane/menu/HeaderView.h"
#include "Tolvane/menu/MenuPainting.h"
#include "Tolvane/menu/SectionCaption.h"
#include "support/FakePlatform.h"
#include "support/Views.h"

#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QTest>
#include <QWidgetAction>

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace tolvane::testing {
namespace {

// No row is lower than the caption, and nothing runs out of one on a light or a dark panel.
TEST(MenuRows, AreThreeHundredWideWithReadableInkInsideTheirEdges) {
    FakePlatform fakes;
    SystemStats stats(fakes.host);
    HeaderView header(false, true), reversed(true, false);
    CleanKeyboardRow clean(true, {}), off(false, {});
    SectionCaption caption(QStringLiteral("Scrolling"));
    StatsView gauges(stats);
    for (QWidget* row :
         std::initializer_list<QWidget*>{&header, &reversed, &clean, &off, &caption, &gauges}) {
        EXPECT_EQ(row->sizeHint().width(), 300);
        EXPECT_GE(row->sizeHint().height(), caption.sizeHint().height());
        for (bool dark : {false, true}) {
            const QImage image = renderOnPanel(*row, panel(dark));
            const QColor window = panel(dark).color(QPalette::Window);
            EXPECT_GT(strongestInk(image, image.rect(), window), 90) << "readable";
            EXPECT_EQ(strongestInk(image, QRect(0, 0, 4, image.height()), window), 0) << "left";
            EXPECT_EQ(strongestInk(image, QRect(296, 0, 4, image.height()), window), 0) << "right";
        }
    }
}

// The smallest rectangle that holds every pixel where `a` and `b` differ.
QRect changedArea(const QImage& a, const QImage& b) {
    QRect area;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            area |= a.pixel(x, y) != b.pixel(x, y) ? QRect(x, y, 1, 1) : QRect();
        }
    }
    return area;
}

// The pill follows the mouse and the subtitle the mode, which never runs into the pill after it.
TEST(MenuRows, TheHeaderShowsTheMouseAndTheModeSideBySide) {
    HeaderView none(false, false), mouse(false, true), reversed(true, false);
    const QImage plain = renderOnPanel(none, panel(false));
    const QRect pill = changedArea(plain, renderOnPanel(mouse, panel(false)));
    const QRect subtitle = changedArea(plain, renderOnPanel(reversed, panel(false)));
    ASSERT_FALSE(pill.isEmpty() || subtitle.isEmpty());
    EXPECT_GT(pill.left(), subtitle.right());
}

// Only the card, not the margin around it, lights up under the mouse and takes a completed click.
TEST(MenuRows, TheCleanRowsCardAloneReactsAndOnlyWhenEnabled) {
    CleanKeyboardRow off(false, {});
    const QImage offImage = renderOnPanel(off, panel(false));
    for (bool enabled : {true, false}) {
        SCOPED_TRACE(enabled);
        int clicks = 0;
        CleanKeyboardRow row(enabled, [&clicks] { ++clicks; });
        row.show();
        const QPoint card(180, int(row.buttonRect().center().y())); // before the chevron
        const QPoint margin(5, row.height() / 2);
        const QImage idle = renderOnPanel(row, panel(false));
        EXPECT_EQ(idle == offImage, !enabled);
        QTest::mouseMove(&row, margin);
        EXPECT_FALSE(row.isHovering());
        QTest::mouseMove(&row, card);
        EXPECT_TRUE(row.isHovering());
        EXPECT_EQ(renderOnPanel(row, panel(false)) != idle, enabled);

        QTest::mouseClick(&row, Qt::LeftButton, {}, card);
        QTest::mouseClick(&row, Qt::LeftButton, {},
                          row.buttonRect().topLeft().toPoint() + QPoint(2, 2)); // a corner
        EXPECT_EQ(clicks, enabled ? 2 : 0);
        QTest::mouseClick(&row, Qt::LeftButton, {}, margin);
        QTest::mouseClick(&row, Qt::RightButton, {}, card);
        QTest::mousePress(&row, Qt::LeftButton, {}, card);
        QTest::mouseRelease(&row, Qt::LeftButton, {}, QPoint(150, row.height() - 1));
        EXPECT_EQ(clicks, enabled ? 2 : 0);
    }
}

class RingGaugeTest : public ::testing::Test {
protected:
    // One gauge of the card at `fraction`, painted; `centre` is its ring's centre.
    QImage shoot(double fraction, int gauge = 0, bool dark = false) {
        StatsView view(stats);
        view.gauge(gauge)->setReading({fraction, "8 cores"});
        const QImage image = renderOnPanel(view, panel(dark));
        centre = QPointF(view.gauge(gauge)->geometry().topLeft()) +
                 view.gauge(gauge)->ringFrame().center();
        return image;
    }
    // The colour on the ring's middle line `degrees` clockwise from 12 o'clock.
    QColor at(const QImage& image, double degrees) const {
        const double radians = degrees * M_PI / 180, radius = RingGauge::size / 2;
        return image.pixelColor(int(std::lround(centre.x() + radius * std::sin(radians) - 0.5)),
                                int(std::lround(centre.y() - radius * std::cos(radians) - 0.5)));
    }
    // Part of the arc, not the grey track under it.
    bool coloured(const QImage& image, double degrees) const {
        const QColor c = at(image, degrees);
        return std::max({c.red(), c.green(), c.blue()}) - std::min({c.red(), c.green(), c.blue()}) >
               60;
    }
    FakePlatform fakes;
    SystemStats stats{fakes.host};
    QPointF centre;
};

// The arc runs clockwise from twelve over its share of the ring; its round ends may reach a
// little past it, never as far as 15 degrees.
TEST_F(RingGaugeTest, TheArcStartsAtTwelveAndCoversItsShareClockwise) {
    for (double fraction : {0.0, 0.25, 0.5, 0.85, 1.0}) {
        SCOPED_TRACE(fraction);
        const QImage shot = shoot(fraction);
        for (double degrees = 0; degrees < 360; degrees += 0.5) {
            if (degrees > 2 && degrees < fraction * 360 - 2) {
                ASSERT_TRUE(coloured(shot, degrees)) << degrees;
            } else if (degrees > fraction * 360 + 15 && degrees < 345) {
                ASSERT_FALSE(coloured(shot, degrees)) << degrees;
            }
        }
    }
}

// Below ninety percent each gauge keeps colours of its own.
TEST_F(RingGaugeTest, EveryGaugeTurnsToTheWarningColoursFromNinetyPercentOn) {
    for (double degrees : {20.0, 160.0, 300.0}) {
        SCOPED_TRACE(degrees);
        const QColor cpu = at(shoot(0.9, 0), degrees);
        EXPECT_GT(cpu.red(), std::max(cpu.green(), cpu.blue()) + 100) << "red";
        for (int gauge : {0, 1, 2}) {
            EXPECT_TRUE(closeTo(at(shoot(0.9, gauge), degrees), cpu, 4)) << gauge;
            EXPECT_FALSE(closeTo(at(shoot(0.8999999, gauge), degrees), cpu, 30)) << gauge;
        }
    }
}

// GNOME's Cantarell has proportional digits: drawn at their own advances, "11%" is narrower
// than "88%" and the sign and the detail's end shift sideways as the numbers change.
TEST_F(RingGaugeTest, ThePercentageAndDetailKeepTheirPlaceAsTheirDigitsChange) {
    const struct Restore {
        QFont font = QApplication::font();
        ~Restore() { QApplication::setFont(font); }
    } restore;
    QApplication::setFont(QFont(QStringLiteral("Cantarell")));
    StatsView view(stats);
    const QFontMetricsF font(MenuPainting::font(*view.gauge(0), 16, QFont::DemiBold, true));
    ASSERT_NE(font.horizontalAdvance('1'), font.horizontalAdvance('8')) << "needs fonts-cantarell";
    const auto rightmostInk = [](const QImage& image, const QRect& area) {
        int x = area.right();
        while (x >= area.left() && strongestInk(image, QRect(x, area.top(), 1, area.height()),
                                                panel(false).color(QPalette::Window)) <= 40) {
            --x;
        }
        return x < area.left() ? -1 : x;
    };
    std::set<int> percentEnds, detailEnds;
    for (int d = 1; d <= 9; ++d) {
        view.gauge(0)->setReading(
            {d * 0.11, QStringLiteral("%1.%1 GB / %1%1.%1 GB").arg(d).toStdString()});
        const QImage image = renderOnPanel(view, panel(false));
        const QRect gauge = view.gauge(0)->geometry();
        const QRect ring = view.gauge(0)->ringFrame().toRect().translated(gauge.topLeft());
        percentEnds.insert(rightmostInk(image, ring.adjusted(12, 12, -12, -12)));
        detailEnds.insert(rightmostInk(
            image, QRect(QPoint(gauge.left(), ring.bottom() + 8), gauge.bottomRight())));
    }
    EXPECT_FALSE(percentEnds.contains(-1) || detailEnds.contains(-1)) << "nothing drawn";
    EXPECT_EQ(percentEnds.size(), 1u);
    EXPECT_EQ(detailEnds.size(), 1u);
}

// The ease is driven through its clock, at several spacings of its frames, with no waiting; a
// frame as the window shows it must be what a whole repaint draws.
TEST_F(RingGaugeTest, AVisibleMoveEasesInFramesForItsLengthEachShowingTheWholeRing) {
    QMenu menu;
    auto* view = new StatsView(stats);
    menu.addAction(hostedMenuItem(view, &menu));
    menu.popup(QPoint());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    RingGauge& gauge = *view->gauge(1);
    struct : QObject {
        int paints = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            paints += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } counter;
    gauge.installEventFilter(&counter);
    int torn = 0;
    const auto ease = [&](double from, double to, int step, double* half = nullptr) {
        gauge.setReading({from, "x"});
        gauge.easeClock().setCurrentTime(RingGauge::animationMs);
        QCoreApplication::processEvents();
        gauge.setReading({to, "x"});
        EXPECT_TRUE(gauge.isAnimating());
        EXPECT_NEAR(gauge.ringEnd(), from, 0.02) << "the ring jumped";
        gauge.easeClock().setPaused(true);
        int frames = 0;
        for (int ms = 0; ms < RingGauge::animationMs + step; ms += step) {
            gauge.easeClock().setCurrentTime(std::min(ms, RingGauge::animationMs));
            const int before = counter.paints; // a grab below paints too
            QCoreApplication::processEvents();
            frames += counter.paints - before;
            QImage shown = menu.screen()->grabWindow(menu.winId()).toImage();
            QPainter difference(&shown);
            difference.setCompositionMode(QPainter::CompositionMode_Difference);
            difference.drawImage(0, 0, menu.grab().toImage());
            difference.end();
            torn += strongestInk(shown.convertToFormat(QImage::Format_RGB32), shown.rect(),
                                 Qt::black) > 8;
            if (half && ms == RingGauge::animationMs / 2) {
                *half = gauge.ringEnd();
            }
        }
        EXPECT_DOUBLE_EQ(gauge.ringEnd(), to);
        return frames;
    };
    double half = 0;
    EXPECT_GE(ease(0.25, 0.75, RingGauge::frameMs / 2, &half), 10) << "many frames for half";
    EXPECT_NEAR(half, 0.5, 0.05);
    const int small = ease(0.30, 0.30 + 2 / (M_PI * RingGauge::size), RingGauge::frameMs / 2);
    EXPECT_GE(small, 1);
    EXPECT_LE(small, 4) << "a two-pixel move needs no more than a frame per pixel";
    for (const auto& [from, to, step] : {std::tuple{0.9, 0.1, 7}, {0.1, 0.97, 53}, {0.6, 0.5, 3}}) {
        ease(from, to, step);
    }
    EXPECT_EQ(torn, 0) << "frames that differ from a whole repaint";
    gauge.setReading({0.5000001, "8.1 GB / 16.0 GB"});
    EXPECT_FALSE(gauge.isAnimating()) << "an invisible move jumps";
    EXPECT_DOUBLE_EQ(gauge.ringEnd(), 0.5000001);
}

// The card under the rings is drawn once and kept; it must still look as a new one does on a
// new panel or at a new width.
TEST_F(RingGaugeTest, TheCardFollowsTheSamplerAndANewPanelOrWidth) {
    fakes.host.ticks = TickPair{125, 1000};
    StatsView shown(stats);
    stats.sample();
    QCoreApplication::processEvents();
    EXPECT_EQ(shown.gauge(0)->values().percent, 13);
    EXPECT_EQ(shown.gauge(1)->values().percent, 38);
    EXPECT_EQ(shown.gauge(2)->values().percent, 50);
    renderOnPanel(shown, panel(false));
    StatsView fresh(stats);
    EXPECT_EQ(renderOnPanel(shown, panel(true)), renderOnPanel(fresh, panel(true)));
    const QSize wider = shown.sizeHint() + QSize(60, 0);
    EXPECT_EQ(renderOnPanel(shown, panel(true), wider), renderOnPanel(fresh, panel(true), wider));
}

} // namespace
} // namespace tolvane::testing
