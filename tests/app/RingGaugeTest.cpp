#include "Tolvane/MenuViews.h"
#include "support/FakePlatform.h"
#include "support/ViewPixels.h"

#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>

namespace tolvane::testing {
namespace {

// A reading's ring as the stats card draws it, and where the ring's centre lies.
struct RingShot {
    QImage image;
    QPointF centre;

    // The colour on the ring's middle line, `degrees` clockwise from 12 o'clock.
    QColor at(double degrees) const {
        const double radians = degrees * M_PI / 180;
        const double radius = RingGauge::size / 2;
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

    // The inside of the ring, where the percentage stands.
    QImage inside() const {
        // The largest square within the ring's inner edge.
        const int half = int((RingGauge::size / 2 - RingGauge::line / 2) / std::sqrt(2.0)) - 1;
        return image.copy(
            QRect(int(centre.x()) - half, int(centre.y()) - half, 2 * half, 2 * half));
    }
};

class RingGaugePixels : public ::testing::Test {
protected:
    RingShot shoot(double fraction, int gauge = 0, const QPalette& panel = lightPanel()) {
        StatsView view(stats);
        view.gauge(gauge)->setReading({fraction, "8 cores"});
        RingShot shot{renderOnPanel(view, panel), {}};
        shot.centre = QPointF(view.gauge(gauge)->geometry().topLeft()) +
                      view.gauge(gauge)->ringFrame().center();
        if (::testing::Test::HasFailure()) {
            keepImage(shot.image, QStringLiteral("ring-%1-%2").arg(gauge).arg(fraction));
        }
        return shot;
    }

    FakePlatform fakes;
    SystemStats stats{fakes.host};
};

// Half the line's width beyond each end of the arc is the round cap, in degrees.
const double cap = (RingGauge::line / 2) / (RingGauge::size / 2) * 180 / M_PI;

TEST_F(RingGaugePixels, TheArcStartsAtTwelveAndCoversItsShareClockwise) {
    for (double fraction : {0.25, 0.5, 0.7, 0.85}) {
        SCOPED_TRACE(fraction);
        const RingShot shot = shoot(fraction);
        const double end = fraction * 360;
        for (double degrees = 2; degrees < end - 2; degrees += 1) {
            ASSERT_TRUE(shot.coloured(degrees)) << degrees;
        }
        for (double degrees = end + cap + 3; degrees < 360 - cap - 3; degrees += 1) {
            ASSERT_FALSE(shot.coloured(degrees)) << degrees;
        }
        EXPECT_NEAR(shot.coveredShare(), fraction + 2 * cap / 360, 0.02);
    }
}

TEST_F(RingGaugePixels, NothingShowsADotAtTwelveAndTooMuchAClosedRing) {
    for (double fraction : {0.0, -0.4}) {
        const RingShot dot = shoot(fraction);
        EXPECT_TRUE(dot.coloured(0));
        EXPECT_NEAR(dot.coveredShare(), 2 * cap / 360, 0.015);
        EXPECT_EQ(dot.image, shoot(0.0).image);
    }
    const RingShot full = shoot(1.0);
    EXPECT_DOUBLE_EQ(full.coveredShare(), 1.0);
    EXPECT_EQ(shoot(3.5).image, full.image);
}

TEST_F(RingGaugePixels, TheGradientRunsFromTheLeftSideToTheRight) {
    // Storage runs from amber to coral; turned with the ring, amber is at the left side,
    // coral at the right, and 12 and 6 o'clock share the colour halfway between.
    const RingShot shot = shoot(0.85, 2);
    EXPECT_TRUE(closeTo(shot.at(270), QColor(245, 158, 11), 12))
        << shot.at(270).name().toStdString();
    EXPECT_TRUE(closeTo(shot.at(90), QColor(249, 115, 98), 12)) << shot.at(90).name().toStdString();
    EXPECT_TRUE(closeTo(shot.at(0), shot.at(180), 8));
    EXPECT_TRUE(closeTo(shot.at(0), QColor(247, 136, 54), 12)) << shot.at(0).name().toStdString();
    // The gradient spans the ring's frame, not the arc: a shorter arc keeps the same colours.
    const RingShot shorter = shoot(0.6, 2);
    EXPECT_TRUE(closeTo(shot.at(45), shorter.at(45), 6));
    EXPECT_TRUE(closeTo(shot.at(180), shorter.at(180), 6));
}

TEST_F(RingGaugePixels, TheWarningColoursAppearFromNinetyPercentOnForEveryGauge) {
    for (int gauge : {0, 1, 2}) {
        SCOPED_TRACE(gauge);
        const RingShot below = shoot(0.8999999, gauge);
        const RingShot at = shoot(0.9, gauge);
        EXPECT_FALSE(closeTo(below.at(90), QColor(255, 59, 48), 40))
            << below.at(90).name().toStdString();
        EXPECT_TRUE(closeTo(at.at(90), QColor(255, 59, 48), 30)) << at.at(90).name().toStdString();
        EXPECT_TRUE(closeTo(at.at(300), QColor(255, 95, 109), 40))
            << at.at(300).name().toStdString();
    }
}

TEST_F(RingGaugePixels, ThePercentageRoundsHalfAwayFromZeroWhileTheThresholdDoesNot) {
    EXPECT_EQ(shoot(0.125).inside(), shoot(0.13).inside()); // "13"
    EXPECT_NE(shoot(0.125).inside(), shoot(0.12).inside()); // not "12"
    const RingShot justBelow = shoot(0.895);
    EXPECT_EQ(justBelow.inside(), shoot(0.9).inside()); // "90" in both
    EXPECT_FALSE(closeTo(justBelow.at(90), QColor(255, 59, 48), 60));
}

TEST_F(RingGaugePixels, TheRingAndItsTextShowOnALightAndADarkPanel) {
    for (const QPalette& panel : {lightPanel(), darkPanel()}) {
        const RingShot shot = shoot(0.42, 0, panel);
        EXPECT_TRUE(shot.coloured(45));
        EXPECT_FALSE(shot.coloured(200));
        const QColor track = shot.at(200);
        const QColor window = panel.color(QPalette::Window);
        EXPECT_GT(std::abs(track.lightness() - window.lightness()), 10) << "track must show";
        EXPECT_GT(strongestInk(shot.inside(), shot.inside().rect(), window), 150) << "percentage";
    }
}

class RingGaugeMotion : public RingGaugePixels {};

TEST_F(RingGaugeMotion, TheRingEndEasesToANewValueInSixTenthsOfASecond) {
    StatsView view(stats);
    RingGauge& gauge = *view.gauge(0);
    gauge.setReading({0.25, "8 cores"});
    view.show();
    gauge.setReading({0.75, "8 cores"});
    EXPECT_TRUE(gauge.isAnimating());
    EXPECT_DOUBLE_EQ(gauge.values().clamped, 0.75);
    EXPECT_NEAR(gauge.ringEnd(), 0.25, 0.02);

    QElapsedTimer clock;
    clock.start();
    double seenMiddle = 0;
    while (gauge.isAnimating() && clock.elapsed() < 2000) {
        QTest::qWait(10);
        if (clock.elapsed() > 250 && clock.elapsed() < 350) {
            seenMiddle = gauge.ringEnd();
        }
    }
    EXPECT_GT(seenMiddle, 0.3);
    EXPECT_LT(seenMiddle, 0.7);
    EXPECT_NEAR(clock.elapsed(), RingGauge::animationMs, 150);
    EXPECT_DOUBLE_EQ(gauge.ringEnd(), 0.75);
}

TEST_F(RingGaugeMotion, NothingMovesWhenTheFractionStaysOrTheMoveIsTooSmallToSee) {
    StatsView view(stats);
    RingGauge& gauge = *view.gauge(1);
    gauge.setReading({0.5, "8.0 GB / 16.0 GB"});
    view.show();
    gauge.setReading({0.5, "8.1 GB / 16.0 GB"});
    EXPECT_FALSE(gauge.isAnimating());
    gauge.setReading({0.5000001, "8.1 GB / 16.0 GB"});
    EXPECT_FALSE(gauge.isAnimating());
    EXPECT_DOUBLE_EQ(gauge.ringEnd(), 0.5000001);
    gauge.setReading({7.0, "x"});
    gauge.setReading({1.0, "x"}); // the same clamped value as 7.0
    EXPECT_TRUE(gauge.isAnimating());
    QTest::qWait(RingGauge::animationMs + 100);
    EXPECT_FALSE(gauge.isAnimating());
    EXPECT_DOUBLE_EQ(gauge.ringEnd(), 1.0);
}

// Counts the paints a widget receives.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget& widget) { widget.installEventFilter(this); }
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

int paintsWhileEasing(RingGauge& gauge, double from, double to) {
    gauge.setReading({from, "x"});
    QTest::qWait(RingGauge::animationMs + 100);
    PaintCounter counter(gauge);
    gauge.setReading({to, "x"});
    EXPECT_TRUE(gauge.isAnimating());
    QElapsedTimer clock;
    clock.start();
    while (gauge.isAnimating() && clock.elapsed() < 2000) {
        QTest::qWait(5);
    }
    QTest::qWait(50);
    EXPECT_DOUBLE_EQ(gauge.ringEnd(), to);
    return counter.paints;
}

TEST_F(RingGaugeMotion, ASmallMoveDrawsAFewFramesAndALargeOneEasesSmoothly) {
    StatsView view(stats);
    view.show();
    RingGauge& gauge = *view.gauge(0);
    const double twoPixels = 2 / (M_PI * RingGauge::size);
    const int small = paintsWhileEasing(gauge, 0.30, 0.30 + twoPixels);
    const int large = paintsWhileEasing(gauge, 0.25, 0.75);
    EXPECT_GE(small, 1);
    EXPECT_LE(small, 4) << "a two-pixel move needs no more than a frame per pixel";
    EXPECT_GE(large, 10) << "half the ring eases over many frames";
}

TEST_F(RingGaugeMotion, TheCardFollowsTheSamplerByItself) {
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
TEST_F(RingGaugePixels, TheCardFollowsANewPanelAndWidth) {
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
