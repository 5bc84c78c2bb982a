#include "Tolvane/MenuPainting.h"
#include "Tolvane/MenuViews.h"
#include "support/FakePlatform.h"
#include "support/ViewPixels.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace tolvane::testing {
namespace {

// A reading's ring as the stats card draws it, read along the ring's middle line.
struct RingShot {
    QImage image;
    QPointF centre;

    // The colour `degrees` clockwise from 12 o'clock.
    QColor at(double degrees) const {
        const double radians = degrees * M_PI / 180, radius = RingGauge::size / 2;
        return image.pixelColor(int(std::lround(centre.x() + radius * std::sin(radians) - 0.5)),
                                int(std::lround(centre.y() - radius * std::cos(radians) - 0.5)));
    }
    // Part of the arc, not the grey track under it.
    bool coloured(double degrees) const {
        const QColor c = at(degrees);
        return std::max({c.red(), c.green(), c.blue()}) - std::min({c.red(), c.green(), c.blue()}) >
               60;
    }
    double coveredShare() const {
        int covered = 0;
        for (int step = 0; step < 720; ++step) {
            covered += coloured(step / 2.0) ? 1 : 0;
        }
        return covered / 720.0;
    }
    // The largest square within the ring, where the percentage stands.
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

    FakePlatform fakes;
    SystemStats stats{fakes.host};
};

// Half the line's width beyond each end of the arc is the round cap, in degrees.
const double cap = (RingGauge::line / 2) / (RingGauge::size / 2) * 180 / M_PI;

TEST_F(RingGaugeTest, TheArcStartsAtTwelveAndCoversItsShareClockwise) {
    for (double fraction : {0.0, 0.25, 0.5, 0.85, 1.0}) {
        SCOPED_TRACE(fraction);
        const RingShot shot = shoot(fraction);
        for (double degrees = 2; degrees < fraction * 360 - 2; degrees += 1) {
            ASSERT_TRUE(shot.coloured(degrees)) << degrees;
        }
        for (double degrees = fraction * 360 + cap + 3; degrees < 360 - cap - 3; degrees += 1) {
            ASSERT_FALSE(shot.coloured(degrees)) << degrees;
        }
        EXPECT_NEAR(shot.coveredShare(), std::min(1.0, fraction + 2 * cap / 360), 0.02);
    }
    EXPECT_EQ(shoot(-0.4).image, shoot(0.0).image) << "below nothing is nothing";
    EXPECT_EQ(shoot(3.5).image, shoot(1.0).image) << "above full is full";
}

// The three gauges keep gradients of their own below ninety percent and share the red
// warning gradient from there on.
TEST_F(RingGaugeTest, EveryGaugeTurnsToTheWarningColoursFromNinetyPercentOn) {
    for (double degrees : {20.0, 160.0, 300.0}) {
        SCOPED_TRACE(degrees);
        const QColor cpu = shoot(0.9, 0).at(degrees);
        EXPECT_GT(cpu.red(), std::max(cpu.green(), cpu.blue()) + 100) << "red";
        EXPECT_TRUE(closeTo(shoot(0.9, 1).at(degrees), cpu, 4));
        EXPECT_TRUE(closeTo(shoot(0.9, 2).at(degrees), cpu, 4));
        for (int gauge : {0, 1, 2}) {
            EXPECT_FALSE(closeTo(shoot(0.8999999, gauge).at(degrees), cpu, 30)) << gauge;
        }
    }
}

TEST_F(RingGaugeTest, TheTrackAndTheRoundedPercentageShowOnALightAndADarkPanel) {
    for (const QPalette& panel : {lightPanel(), darkPanel()}) {
        const RingShot shot = shoot(0.42, 0, panel);
        const QColor window = panel.color(QPalette::Window);
        EXPECT_GT(std::abs(shot.at(200).lightness() - window.lightness()), 10) << "track";
        EXPECT_GT(strongestInk(shot.inside(), shot.inside().rect(), window), 150) << "percentage";
    }
    EXPECT_EQ(shoot(0.125).inside(), shoot(0.13).inside()); // "13"
    EXPECT_NE(shoot(0.125).inside(), shoot(0.12).inside());
    EXPECT_EQ(shoot(0.895).inside(), shoot(0.9).inside()); // "90", yet below the warning
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

// The ease is driven through its clock, twice per frame interval, with no waiting.
TEST_F(RingGaugeTest, AVisibleMoveEasesOverItsDurationWithFramesForItsLength) {
    StatsView view(stats);
    RingGauge& gauge = *view.gauge(1);
    view.show();
    struct : QObject {
        int paints = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            paints += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } counter;
    gauge.installEventFilter(&counter);
    const auto ease = [&](double from, double to, double* half = nullptr) {
        gauge.setReading({from, "x"});
        gauge.easeClock().setCurrentTime(RingGauge::animationMs);
        QCoreApplication::processEvents();
        gauge.setReading({to, "x"});
        EXPECT_TRUE(gauge.isAnimating());
        EXPECT_NEAR(gauge.ringEnd(), from, 0.02) << "the ring jumped";
        counter.paints = 0;
        for (int ms = 0; ms <= RingGauge::animationMs; ms += RingGauge::frameMs / 2) {
            gauge.easeClock().setCurrentTime(ms);
            QCoreApplication::processEvents();
            if (half && ms == RingGauge::animationMs / 2) {
                *half = gauge.ringEnd();
            }
        }
        gauge.easeClock().setCurrentTime(RingGauge::animationMs);
        QCoreApplication::processEvents();
        EXPECT_DOUBLE_EQ(gauge.ringEnd(), to);
        return counter.paints;
    };
    double half = 0;
    EXPECT_GE(ease(0.25, 0.75, &half), 10) << "half the ring eases over many frames";
    EXPECT_NEAR(half, 0.5, 0.05);
    const int small = ease(0.30, 0.30 + 2 / (M_PI * RingGauge::size));
    EXPECT_GE(small, 1);
    EXPECT_LE(small, 4) << "a two-pixel move needs no more than a frame per pixel";

    ease(0.30, 0.5);
    gauge.setReading({0.5000001, "8.1 GB / 16.0 GB"});
    EXPECT_FALSE(gauge.isAnimating()) << "an invisible move jumps";
    EXPECT_DOUBLE_EQ(gauge.ringEnd(), 0.5000001);
}

TEST_F(RingGaugeTest, TheCardFollowsTheSamplerAndANewPanelOrWidth) {
    fakes.host.ticks = platform::CpuTicks{125, 1000};
    StatsView shown(stats);
    stats.sample();
    QCoreApplication::processEvents();
    EXPECT_EQ(shown.gauge(0)->values().percent, 13);
    EXPECT_EQ(shown.gauge(1)->values().percent, 38);
    EXPECT_EQ(shown.gauge(2)->values().percent, 50);

    // The card under the rings is drawn once and kept; it must still look as a new one does.
    renderOnPanel(shown, lightPanel());
    StatsView fresh(stats);
    EXPECT_EQ(renderOnPanel(shown, darkPanel()), renderOnPanel(fresh, darkPanel()));
    const QSize wider = shown.sizeHint() + QSize(60, 0);
    EXPECT_EQ(renderOnPanel(shown, darkPanel(), 1.0, wider),
              renderOnPanel(fresh, darkPanel(), 1.0, wider));
}

} // namespace
} // namespace tolvane::testing
