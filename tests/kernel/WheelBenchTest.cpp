#include "bench/wheel/WheelLatency.h"

#include <gtest/gtest.h>

namespace tolvane::kerneltest {
namespace {

using bench::WheelSubject;

// The wheel benchmark's programs, built with it, are in /bin of the guest. The floor passes
// values on as they are, so a floor said to negate gets every frame back with the wrong sign,
// and Tolvane said to pass them on unchanged as well; a subject that never makes its device
// ends its rounds with the reason.
TEST(WheelBench, CountsFramesThroughEachSubjectAndThoseWithTheWrongSign) {
    const char* floor = "exec /bin/wheel-floor \"$BENCH_DEVICE\"";
    const char* tolvane = "exec /bin/tolvane-wheel";
    struct Case {
        WheelSubject subject;
        int arrived, wrong;
        const char* error;
    };
    const char* broken = "the subject ended with status 3 before its device appeared";
    const Case cases[] = {{{"floor", 1, false, floor}, 300, 0, ""},
                          {{"tolvane", 8, true, tolvane}, 300, 0, ""},
                          {{"floor", 1, true, floor}, 0, 300, ""},
                          {{"tolvane", 1, false, tolvane}, 0, 300, ""},
                          {{"broken", 1, true, "exit 3"}, 0, 0, broken}};
    std::vector<WheelSubject> subjects;
    for (const Case& c : cases) {
        subjects.push_back(c.subject);
    }
    const auto figures = bench::measureWheelPath(subjects, 300, 1);
    ASSERT_EQ(figures.size(), std::size(cases));
    for (std::size_t i = 0; i < figures.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(figures[i].error, cases[i].error);
        EXPECT_EQ(figures[i].arrived, cases[i].arrived);
        EXPECT_EQ(figures[i].wrong, cases[i].wrong);
        EXPECT_EQ(figures[i].micros.size(), std::size_t(cases[i].arrived));
        EXPECT_TRUE(cases[i].arrived == 0 || figures[i].grabbed == cases[i].subject.devices);
    }
}

} // namespace
} // namespace tolvane::kerneltest
