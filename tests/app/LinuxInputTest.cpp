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
    while (!done()) {
        if (clock.elapsed() > limitMs) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

class Pipe {
public:
    Pipe() { EXPECT_EQ(::pipe(ends), 0); }
    ~Pipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    int readEnd() const { return ends[0]; }
    void put() { EXPECT_EQ(::write(ends[1], "x", 1), 1); }
    void drain() {
        char buffer[16];
        EXPECT_GT(::read(ends[0], buffer, sizeof buffer), 0);
    }

private:
    int ends[2];
};

TEST(QtEventLoopTest, CallsBackOnReadableAndStopsWhenUnwatchedFromItsOwnCallback) {
    oslinux::QtEventLoop loop;
    Pipe pipe;
    int calls = 0;
    loop.watchReadable(pipe.readEnd(), [&] {
        ++calls;
        pipe.drain();
        loop.unwatch(pipe.readEnd());
    });
    pipe.put();
    ASSERT_TRUE(processUntil([&] { return calls == 1; }));
    pipe.put();
    processUntil([] { return false; }, 100);
    EXPECT_EQ(calls, 1);
}

TEST(QtEventLoopTest, ReplacesAWatchOnTheSameDescriptor) {
    oslinux::QtEventLoop loop;
    Pipe pipe;
    int first = 0, second = 0;
    loop.watchReadable(pipe.readEnd(), [&] { ++first; });
    loop.watchReadable(pipe.readEnd(), [&] {
        ++second;
        pipe.drain();
    });
    pipe.put();
    ASSERT_TRUE(processUntil([&] { return second == 1; }));
    EXPECT_EQ(first, 0);
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
