#include "bench/wheel/WheelLatency.h"

#include <gtest/gtest.h>

namespace tolvane::kerneltest {
namespace {

using bench::WheelFigures;
using bench::WheelSubject;

// The wheel benchmark's programs, built with it, are in /bin of the guest.
const WheelSubject floorPath{"floor", 1, false, "exec /bin/wheel-floor \"$BENCH_DEVICE\""};
const WheelSubject tolvanePath{"tolvane", 1, true, "exec /bin/tolvane-wheel"};

void expectEveryFrameThrough(const WheelFigures& figures, int frames, int devices) {
    EXPECT_EQ(figures.error, "");
    EXPECT_EQ(figures.sent, frames);
    EXPECT_EQ(figures.arrived, frames);
    EXPECT_EQ(figures.wrong, 0);
    EXPECT_EQ(figures.grabbed, devices) << "not every mouse was taken";
    EXPECT_EQ(figures.micros.size(), std::size_t(frames));
}

TEST(WheelBench, EveryFrameComesThroughTheFloorAsItIsAndThroughTolvaneNegated) {
    WheelSubject eightMice = tolvanePath;
    eightMice.devices = 8;
    const auto figures = bench::measureWheelPath({floorPath, tolvanePath, eightMice}, 300, 2);
    ASSERT_EQ(figures.size(), 3u);
    expectEveryFrameThrough(figures[0], 300, 1);
    expectEveryFrameThrough(figures[1], 300, 1);
    expectEveryFrameThrough(figures[2], 300, 8);
}

TEST(WheelBench, CountsFramesThatComeOutWithTheWrongSign) {
    // The floor passes values on as they are, so a floor said to negate gets every frame back
    // with the wrong sign, and Tolvane said to pass them on unchanged as well.
    WheelSubject floorSaidToNegate = floorPath;
    floorSaidToNegate.negates = true;
    WheelSubject tolvaneSaidNotTo = tolvanePath;
    tolvaneSaidNotTo.negates = false;
    const auto figures = bench::measureWheelPath({floorSaidToNegate, tolvaneSaidNotTo}, 50, 1);
    for (const WheelFigures& f : figures) {
        EXPECT_EQ(f.error, "");
        EXPECT_EQ(f.sent, 50);
        EXPECT_EQ(f.wrong, 50);
        EXPECT_EQ(f.arrived, 0);
        EXPECT_TRUE(f.micros.empty());
    }
}

TEST(WheelBench, ASubjectThatNeverMakesItsDeviceEndsItsRoundsWithAReason) {
    const auto figures = bench::measureWheelPath({{"broken", 1, true, "exit 3"}}, 50, 2);
    ASSERT_EQ(figures.size(), 1u);
    EXPECT_EQ(figures[0].error, "the subject ended with status 3 before its device appeared");
    EXPECT_EQ(figures[0].sent, 0);
}

TEST(WheelBench, PercentileIsTheNearestRank) {
    EXPECT_EQ(bench::percentile({}, 0.5), 0);
    EXPECT_EQ(bench::percentile({7}, 0.99), 7);
    EXPECT_EQ(bench::percentile({4, 1, 3, 2}, 0.5), 2);
    std::vector<double> hundred;
    for (int i = 100; i >= 1; --i) {
        hundred.push_back(i);
    }
    EXPECT_EQ(bench::percentile(hundred, 0.99), 99);
    EXPECT_EQ(bench::percentile(hundred, 1.0), 100);
}

} // namespace
} // namespace tolvane::kerneltest
