#include "bench/wheel/WheelLatency.h"

#include <gtest/gtest.h>

namespace tolvane::kerneltest {
namespace {

using bench::WheelFigures;
using bench::WheelSubject;

// The wheel benchmark's programs, built with it, are in /bin of the guest. The floor passes
// values on as they are, so a floor said to negate gets every frame back with the wrong sign,
// and Tolvane said to pass them on unchanged as well.
TEST(WheelBench, CountsFramesThroughEachSubjectAndThoseWithTheWrongSign) {
    const WheelSubject floor{"floor", 1, false, "exec /bin/wheel-floor \"$BENCH_DEVICE\""};
    const WheelSubject tolvane{"tolvane", 1, true, "exec /bin/tolvane-wheel"};
    struct Case {
        WheelSubject subject;
        int arrived, wrong;
    };
    const Case cases[] = {{floor, 300, 0},
                          {tolvane, 300, 0},
                          {{"tolvane", 8, true, tolvane.command}, 300, 0},
                          {{"floor", 1, true, floor.command}, 0, 300},
                          {{"tolvane", 1, false, tolvane.command}, 0, 300}};
    std::vector<WheelSubject> subjects;
    for (const Case& c : cases) {
        subjects.push_back(c.subject);
    }
    const auto figures = bench::measureWheelPath(subjects, 300, 1);
    ASSERT_EQ(figures.size(), std::size(cases));
    for (std::size_t i = 0; i < figures.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(figures[i].error, "");
        EXPECT_EQ(figures[i].sent, 300);
        EXPECT_EQ(figures[i].arrived, cases[i].arrived);
        EXPECT_EQ(figures[i].wrong, cases[i].wrong);
        EXPECT_EQ(figures[i].micros.size(), std::size_t(cases[i].arrived));
        if (cases[i].arrived > 0) {
            EXPECT_EQ(figures[i].grabbed, cases[i].subject.devices) << "not every mouse taken";
        }
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
    EXPECT_EQ(bench::percentile({5, 1, 4, 2, 3}, 1.0), 5);
}

} // namespace
} // namespace tolvane::kerneltest
