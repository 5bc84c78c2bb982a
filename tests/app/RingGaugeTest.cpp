#include "Tolvane/MenuPainting.h"
#include "Tolvane/MenuViews.h"
#include "support/FakePlatform.h"
#include "support/ViewPixels.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace tolvane::testing {
namespace {

const QColor warningRed(255, 59, 48);

// A reading's ring as the stats card draws it, and where the ring's centre lies.
struct RingShot {
    QImage image;
    QPointF centre;

    // The colour on the ring's middle line, `degrees` clockwise from 12 o'clock.
    QColor at(double degrees) const {
        const double radians = degrees * M_PI / 180, radius = RingGauge::size / 2;
        return image.pixelColor(int(std::lround(centre.x() + radius * std::sin(radians) - 0.5)),
                                int(std::lround(centre.y() - radius * std::cos(radians) - 0.5)));
    }
    // A pixel that belongs to a gradient: every palette's track is grey.
    bool coloured(double degrees) const {
        const QColor c = at(degrees);
        return std::max({c.red(), c.green(), c.blue()}) - std::min({c.red(), c.green(), c.blue()}) >
               60;
    }
    // The share of the circle the ring covers, from samples every half degree.
    double coveredShare() const {
        int covered = 0;
        for (int step = 0; step < 720; ++step) {
            covered += coloured(step / 2.0) ? 1 : 0;
        }
        return covered / 720.0;
    }
    // The largest square within the ring's inner edge, where the percentage stands.
    QImage inside() const {
        const int half = int((RingGauge::size / 2 - RingGauge::line / 2) / std::sqrt(2.0)) - 1;
        return image.copy(int(centre.x()) - half, int(centre.y()) - half, 2 * half, 2 * half);
    }
};

class RingGaugeTest : public ::testing::Test {
protected:
    RingShot shoot(double fraction, int gauge = 0, const QPalette& panel = lightPanel()) {
        StatsView view(stats);
        view.gauge(gauge)->setReading({fraction, "8 cores"});
        RingShot shot{renderOnPanel(view, panel), {}};
        shot.centre = QPointF(view.gauge(gauge)->geometry().topLeft()) +
                      view.gauge(gauge)->ringFrame().center();
        return shot;
    }
    // Sets `to` once `from` has settled, then follows the ease to its end.
    struct Ease {
        int paints = 0;
        qint64 ms = 0;
        double atThreeTenths = 0; // where the ring end stood 0.3 s in
    };
    Ease ease(RingGauge& gauge, double from, double to) {
        gauge.setReading({from, "x"});
        QTest::qWait(RingGauge::animationMs + 100);
        struct : QObject {
            int paints = 0;
            bool eventFilter(QObject*, QEvent* event) override {
                paints += event->type() == QEvent::Paint ? 1 : 0;
                return false;
            }
        } counter;
        gauge.installEventFilter(&counter);
        gauge.setReading({to, "x"});
        EXPECT_TRUE(gauge.isAnimating());
        EXPECT_NEAR(gauge.ringEnd(), from, 0.02);
        Ease ease;
        QElapsedTimer clock;
        clock.start();
        while (gauge.isAnimating() && clock.elapsed() < 2000) {
            QTest::qWait(5);
            ease.atThreeTenths = clock.elapsed() <= 300 ? gauge.ringEnd() : ease.atThreeTenths;
        }
        ease.ms = clock.elapsed();
        QTest::qWait(50);
        EXPECT_DOUBLE_EQ(gauge.ringEnd(), to);
        gauge.removeEventFilter(&counter);
        ease.paints = counter.paints;
        return ease;
    }

    FakePlatform fakes;
    SystemStats stats{fakes.host};
};

// Half the line's width beyond each end of the arc is the round cap, in degrees.
const double cap = (RingGauge::line / 2) / (RingGauge::size / 2) * 180 / M_PI;

TEST_F(RingGaugeTest, TheArcStartsAtTwelveAndCoversItsShareClockwise) {
    for (double fraction : {0.25, 0.5, 0.85}) {
        SCOPED_TRACE(fraction);
        const RingShot shot = shoot(fraction);
        for (double degrees = 2; degrees < fraction * 360 - 2; degrees += 1) {
            ASSERT_TRUE(shot.coloured(degrees)) << degrees;
        }
        for (double degrees = fraction * 360 + cap + 3; degrees < 360 - cap - 3; degrees += 1) {
            ASSERT_FALSE(shot.coloured(degrees)) << degrees;
        }
        EXPECT_NEAR(shot.coveredShare(), fraction + 2 * cap / 360, 0.02);
    }
    // Nothing, or less, shows a dot at twelve; too much a closed ring.
    const RingShot dot = shoot(0.0);
    EXPECT_TRUE(dot.coloured(0));
    EXPECT_NEAR(dot.coveredShare(), 2 * cap / 360, 0.015);
    EXPECT_EQ(shoot(-0.4).image, dot.image);
    const RingShot full = shoot(1.0);
    EXPECT_DOUBLE_EQ(full.coveredShare(), 1.0);
    EXPECT_EQ(shoot(3.5).image, full.image);
}

TEST_F(RingGaugeTest, TheGradientRunsAcrossTheFrameFromTheLeftSideToTheRight) {
    // Storage runs from amber at the left side to coral at the right; 12 and 6 o'clock share
    // the colour halfway between, and a shorter arc keeps the same colours.
    const RingShot shot = shoot(0.85, 2);
    EXPECT_TRUE(closeTo(shot.at(270), QColor(245, 158, 11), 12));
    EXPECT_TRUE(closeTo(shot.at(90), QColor(249, 115, 98), 12));
    EXPECT_TRUE(closeTo(shot.at(0), QColor(247, 136, 54), 12));
    EXPECT_TRUE(closeTo(shot.at(0), shot.at(180), 8));
    const RingShot shorter = shoot(0.6, 2);
    EXPECT_TRUE(closeTo(shot.at(45), shorter.at(45), 6));
    EXPECT_TRUE(closeTo(shot.at(180), shorter.at(180), 6));
}

TEST_F(RingGaugeTest, EveryGaugeTurnsToTheWarningColoursFromNinetyPercentOn) {
    for (int gauge : {0, 1, 2}) {
        SCOPED_TRACE(gauge);
        const RingShot at = shoot(0.9, gauge);
        EXPECT_FALSE(closeTo(shoot(0.8999999, gauge).at(90), warningRed, 40));
        EXPECT_TRUE(closeTo(at.at(90), warningRed, 30));
        EXPECT_TRUE(closeTo(at.at(300), QColor(255, 95, 109), 40));
    }
}

TEST_F(RingGaugeTest, TheRingTrackAndRoundedPercentageShowOnALightAndADarkPanel) {
    for (const QPalette& panel : {lightPanel(), darkPanel()}) {
        const RingShot shot = shoot(0.42, 0, panel);
        EXPECT_TRUE(shot.coloured(45));
        EXPECT_FALSE(shot.coloured(200));
        const QColor window = panel.color(QPalette::Window);
        EXPECT_GT(std::abs(shot.at(200).lightness() - window.lightness()), 10) << "track";
        EXPECT_GT(strongestInk(shot.inside(), shot.inside().rect(), window), 150) << "percentage";
    }
    EXPECT_EQ(shoot(0.125).inside(), shoot(0.13).inside()); // "13"
    EXPECT_NE(shoot(0.125).inside(), shoot(0.12).inside());
    EXPECT_EQ(shoot(0.895).inside(), shoot(0.9).inside()); // "90", below the warning
    EXPECT_FALSE(closeTo(shoot(0.895).at(90), warningRed, 60));
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
    auto rightmostInk = [](const QImage& image, const QRect& area) {
        for (int x = area.right(); x >= area.left(); --x) {
            if (strongestInk(image, QRect(x, area.top(), 1, area.height()), QColor(246, 246, 246)) >
                40) {
                return x;
            }
        }
        return -1;
    };
    std::set<int> percentEnds, detailEnds;
    for (int d = 1; d <= 9; ++d) {
        view.gauge(0)->setReading(
            {d * 0.11, QStringLiteral("%1.%1 GB / %1%1.%1 GB").arg(d).toStdString()});
        const QImage image = renderOnPanel(view, lightPanel());
        const QRect gauge = view.gauge(0)->geometry();
        const QRect ring = view.gauge(0)->ringFrame().toRect().translated(gauge.topLeft());
        percentEnds.insert(rightmostInk(image, ring.adjusted(12, 12, -12, -12)));
        detailEnds.insert(rightmostInk(
            image, QRect(QPoint(gauge.left(), ring.bottom() + 8), gauge.bottomRight())));
    }
    EXPECT_EQ(percentEnds.size(), 1u);
    EXPECT_EQ(detailEnds.size(), 1u);
}

TEST_F(RingGaugeTest, AVisibleMoveEasesInSixTenthsOfASecondWithFramesForItsLength) {
    StatsView view(stats);
    RingGauge& gauge = *view.gauge(1);
    view.show();
    const Ease large = ease(gauge, 0.25, 0.75);
    EXPECT_GT(large.atThreeTenths, 0.3);
    EXPECT_LT(large.atThreeTenths, 0.7);
    EXPECT_NEAR(large.ms, RingGauge::animationMs, 150);
    EXPECT_GE(large.paints, 10) << "half the ring eases over many frames";
    const Ease small = ease(gauge, 0.30, 0.30 + 2 / (M_PI * RingGauge::size));
    EXPECT_GE(small.paints, 1);
    EXPECT_LE(small.paints, 4) << "a two-pixel move needs no more than a frame per pixel";

    gauge.setReading({0.5, "8.0 GB / 16.0 GB"});
    QTest::qWait(RingGauge::animationMs + 100);
    gauge.setReading({0.5, "8.1 GB / 16.0 GB"});
    gauge.setReading({0.5000001, "8.1 GB / 16.0 GB"});
    EXPECT_FALSE(gauge.isAnimating());
    EXPECT_DOUBLE_EQ(gauge.ringEnd(), 0.5000001);
    EXPECT_DOUBLE_EQ(gauge.values().clamped, 0.5000001);
}

TEST_F(RingGaugeTest, TheCardFollowsTheSamplerByItself) {
    fakes.host.ticks = platform::CpuTicks{125, 1000};
    StatsView view(stats);
    EXPECT_DOUBLE_EQ(view.gauge(0)->values().clamped, 0.0);
    stats.sample();
    QCoreApplication::processEvents();
    EXPECT_EQ(view.gauge(0)->values().percent, 13);
    EXPECT_EQ(view.gauge(1)->values().percent, 38);
    EXPECT_EQ(view.gauge(2)->values().percent, 50);
}

// The card under the rings is drawn once and kept; a view shown on another panel or at another
// width must still look as a new one does.
TEST_F(RingGaugeTest, TheCardFollowsANewPanelAndWidth) {
    StatsView shown(stats);
    renderOnPanel(shown, lightPanel());
    StatsView dark(stats);
    EXPECT_EQ(renderOnPanel(shown, darkPanel()), renderOnPanel(dark, darkPanel()));
    const QSize wider = shown.sizeHint() + QSize(60, 0);
    StatsView wide(stats);
    EXPECT_EQ(renderOnPanel(shown, darkPanel(), 1.0, wider),
              renderOnPanel(wide, darkPanel(), 1.0, wider));
}

} // namespace
} // namespace tolvane::testing
