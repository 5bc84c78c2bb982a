#include "platform/linux/SysfsPointerDevices.h"
#include "TolvaneCore/DeviceRoles.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tolvane::testing {
namespace {

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
    const auto plug = [&](const std::string& node) {
        std::fclose(std::fopen((input + "/" + node).c_str(), "w"));
    };
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
