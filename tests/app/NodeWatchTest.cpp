#include "platform/linux/devices/NodeWatch.h"
#include "platform/linux/QtEventLoop.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tolvane::testing {
namespace {

void touch(const std::string& path) {
    std::fclose(std::fopen(path.c_str(), "w"));
}

TEST(QtEventLoopTest, CallsTheLastWatchOnReadableAndStopsWhenUnwatchedFromItsOwnCallback) {
    oslinux::QtEventLoop loop;
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    int first = 0, calls = 0;
    loop.watchReadable(ends[0], [&] { ++first; }); // replaced by the next watch
    loop.watchReadable(ends[0], [&] {
        char buffer[16];
        EXPECT_GT(::read(ends[0], buffer, sizeof buffer), 0);
        ++calls;
        loop.unwatch(ends[0]);
    });
    EXPECT_EQ(::write(ends[1], "x", 1), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls == 1; }));
    EXPECT_EQ(::write(ends[1], "x", 1), 1);
    EXPECT_FALSE(QTest::qWaitFor([&] { return calls > 1; }, 100));
    EXPECT_EQ(first, 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

// The directory watch used where no udevd runs, on a plain directory standing in for /dev.
TEST(InotifyNodeWatchTest, AnnouncesEventNodesAsTheyComeAndGo) {
    QTemporaryDir dir;
    const std::string root = dir.path().toStdString(), input = root + "/input";
    oslinux::QtEventLoop loop;
    std::vector<std::string> seen;
    auto watch = oslinux::watchNodesWithInotify(
        loop, root,
        {[&](const std::string& node) { seen.push_back("+" + node); },
         [&](const std::string& node) { seen.push_back("-" + node); },
         {}});
    ASSERT_NE(watch, nullptr);
    // The kernel queues a change's events before its call returns: once the first is read, the
    // rest are there to read too.
    const auto settle = [&] {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !seen.empty(); }));
        QCoreApplication::processEvents();
        return std::exchange(seen, {});
    };

    ASSERT_EQ(::mkdir(input.c_str(), 0755), 0); // the first input device makes the directory
    touch(input + "/event3");
    EXPECT_EQ(settle(), std::vector<std::string>{"+event3"});

    touch(input + "/event4");
    touch(input + "/mouse0"); // not an event node
    EXPECT_EQ(settle(), std::vector<std::string>{"+event4"});

    touch(input + "/staging");
    ASSERT_EQ(::rename((input + "/staging").c_str(), (input + "/event5").c_str()), 0);
    EXPECT_EQ(settle(), std::vector<std::string>{"+event5"});

    ASSERT_EQ(::unlink((input + "/event4").c_str()), 0);
    const std::vector<std::string> gone = settle();
    ASSERT_FALSE(gone.empty());
    EXPECT_EQ(gone.back(), "-event4");
    EXPECT_EQ(std::count(gone.begin(), gone.end(), "-event4"), 1);
}

} // namespace
} // namespace tolvane::testing
