#include "platform/linux/LinuxInput.h"
#include "platform/linux/QtEventLoop.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <unistd.h>

namespace tolvane::testing {
namespace {

bool processUntil(const std::function<bool()>& done, int limitMs = 2000) {
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() <= limitMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return done();
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
    EXPECT_TRUE(processUntil([&] { return calls == 1; }));
    EXPECT_EQ(::write(ends[1], "x", 1), 1);
    processUntil([] { return false; }, 100);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(first, 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(LinuxInputTest, RefusesTheTapAndTheHoldWhenTheDevicesCannotBeUsed) {
    QTemporaryDir root;
    ASSERT_TRUE(QDir(root.path()).mkdir(QStringLiteral("input")));
    oslinux::LinuxInput input(root.path().toStdString());
    EXPECT_FALSE(input.scrollTap().create(nullptr, nullptr)) << "no uinput under the root";
    EXPECT_TRUE(input.pointers().current().empty());

    QFile node(root.path() + QStringLiteral("/input/event0")); // no event device
    ASSERT_TRUE(node.open(QIODevice::WriteOnly));
    node.close();
    EXPECT_FALSE(input.keyboard().grab());
    input.keyboard().release();
}

} // namespace
} // namespace tolvane::testing
