#include "TolvaneCore/DeviceRoles.h"
#include "platform/linux/QtEventLoop.h"
#include "platform/linux/SysfsPointerDevices.h"
#include "platform/linux/devices/NodeWatch.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
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
TEST(InotifyNodeWatchTest, AnnouncesEventNodesAsTheyComeChangeAndGo) {
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
        std::vector<std::string> got;
        got.swap(seen);
        return got;
    };

    ASSERT_EQ(::mkdir(input.c_str(), 0755), 0); // the first input device makes the directory
    touch(input + "/event3");
    EXPECT_EQ(settle(), std::vector<std::string>{"+event3"});

    touch(input + "/event4");
    touch(input + "/mouse0"); // not an event node
    EXPECT_EQ(settle(), std::vector<std::string>{"+event4"});

    ASSERT_EQ(::chmod((input + "/event3").c_str(), 0600), 0); // as when udev fixes permissions
    EXPECT_EQ(settle(), std::vector<std::string>{"+event3"});

    touch(input + "/staging");
    ASSERT_EQ(::rename((input + "/staging").c_str(), (input + "/event5").c_str()), 0);
    EXPECT_EQ(settle(), std::vector<std::string>{"+event5"});
    ASSERT_EQ(::chmod((input + "/event5").c_str(), 0600), 0);
    EXPECT_EQ(settle(), std::vector<std::string>{"+event5"});

    ASSERT_EQ(::unlink((input + "/event4").c_str()), 0);
    const std::vector<std::string> gone = settle();
    ASSERT_FALSE(gone.empty());
    EXPECT_EQ(gone.back(), "-event4");
    EXPECT_EQ(std::count(gone.begin(), gone.end(), "-event4"), 1);
}

// A USB mouse as sysfs shows it, `identity` its device's sysfs path.
oslinux::SysfsDevice mouse(const std::string& identity, const std::string& name,
                           const std::string& phys = "usb-1/input0") {
    oslinux::SysfsDevice device{identity, {}};
    device.capabilities.name = name;
    device.capabilities.phys = phys;
    device.capabilities.busType = code::busUsb;
    device.capabilities.rel = codeSet<code::relCount>({code::relX, code::relY});
    device.capabilities.key = codeSet<code::keyCount>({code::btnLeft});
    return device;
}

// Nodes of a stand-in device root, described by a stand-in sysfs; arrivals come through the
// directory watch, or are announced by the test where their order matters.
TEST(SysfsPointerDevicesTest, FollowsPointersBySysfsIdentityThroughReusedNodesAndLostNews) {
    QTemporaryDir dir;
    const std::string input = dir.path().toStdString() + "/input";
    ASSERT_EQ(::mkdir(input.c_str(), 0755), 0);
    std::map<std::string, oslinux::SysfsDevice> sysfs{
        {"event1", mouse("/sys/input1", "USB Mouse")},
        {"event2", mouse("/sys/input2", "Keyboard")},
        {"event3", mouse("/sys/input3", "Clone", markedPhys("usb-1/input0"))}};
    sysfs["event2"].capabilities.rel.reset(); // no pointer
    const auto plug = [&](const std::string& node) { touch(input + "/" + node); };
    for (const char* node : {"event1", "event2", "event3", "event4"}) { // event4: not in sysfs
        plug(node);
    }
    oslinux::SysfsPointerDevices devices(dir.path().toStdString(), [&](const std::string& path) {
        const auto found = sysfs.find(path.substr(path.rfind('/') + 1));
        return found == sysfs.end() ? std::nullopt : std::optional(found->second);
    });
    ASSERT_EQ(devices.current().size(), 1u);
    EXPECT_EQ(devices.current()[0].id, input + "/event1");
    std::vector<std::string> seen;
    const auto told = [&](const char* sign) {
        return [&seen, sign](const platform::PointerDevice& d) {
            seen.push_back(sign + d.id.substr(d.id.rfind('/') + 1) + " " +
                           displayName(d.properties));
        };
    };
    devices.open({told("+"), told("-")});
    const auto news = [&] { return std::exchange(seen, {}); };

    sysfs["event5"] = mouse("/sys/input5", "BT Mouse");
    plug("event5");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !seen.empty(); }));
    EXPECT_EQ(news(), std::vector<std::string>{"+event5 BT Mouse"});

    sysfs["event1"] = mouse("/sys/input6", "Trackball"); // its name reused by a new device
    devices.nodeAppeared("event1");
    devices.nodeVanished("event1"); // the old device's removal, announced late
    devices.nodeAppeared("event5"); // announced again
    EXPECT_EQ(news(), (std::vector<std::string>{"-event1 USB Mouse", "+event1 Trackball"}));

    // Lost announcements: event5 went, event2 is a mouse now and event6 came.
    ASSERT_EQ(::unlink((input + "/event5").c_str()), 0);
    sysfs.erase("event5");
    sysfs["event2"] = mouse("/sys/input7", "Pen Mouse");
    sysfs["event6"] = mouse("/sys/input8", "Wireless Mouse");
    plug("event6");
    devices.reconcile();
    EXPECT_EQ(news(), (std::vector<std::string>{"-event5 BT Mouse", "+event2 Pen Mouse",
                                                "+event6 Wireless Mouse"}));
    // The watch's own news of the same changes add nothing.
    EXPECT_FALSE(QTest::qWaitFor([&] { return !seen.empty(); }, 100)) << seen.front();
    EXPECT_EQ(devices.current().size(), 3u);
}

} // namespace
} // namespace tolvane::testing
