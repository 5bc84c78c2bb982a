#include "Tolvane/scroll/MouseMonitor.h"
#include "support/AppHarness.h"

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

const platform::PointerDevice usbMouse{"usb-1", {1, 2, 0, "USB Mouse"}};
const platform::PointerDevice btMouse{"bt-1", {1, 2, 0, "BT Mouse"}};
const platform::PointerDevice trackpad{"bt-2", {1, 2, 0, "Magic TrackPad"}};
const platform::PointerDevice builtIn{"i8042", {1, 1, 1, "PS/2 Generic Mouse"}};

// Reports come through the event loop, one after start and one for each change between no
// mouse and some; every mouse that comes or goes is logged with the count.
class MouseMonitorTest : public AppHarness {
protected:
    void start(std::vector<platform::PointerDevice> present) {
        fakes().pointers.present = std::move(present);
        monitor = std::make_unique<MouseMonitor>(fakes().pointers);
        monitor->onChange = [this](bool present) { reports.push_back(present); };
        monitor->start();
        EXPECT_TRUE(reports.empty()) << "reported from inside start()";
        settle();
    }

    std::unique_ptr<MouseMonitor> monitor;
    std::vector<bool> reports;
};

TEST_F(MouseMonitorTest, ReportsOnlyChangesBetweenNoMouseAndSome) {
    start({usbMouse, btMouse, trackpad, builtIn});
    fakes().pointers.unplug("usb-1");
    settle();
    EXPECT_EQ(reports, std::vector<bool>{true});
    fakes().pointers.plug(btMouse); // delivered again by the arrival callback
    fakes().pointers.plug(trackpad);
    fakes().pointers.unplug("bt-2"); // never a member
    fakes().pointers.unplug("bt-1");
    fakes().pointers.plug({"usb-9", {1, 2, std::nullopt, std::nullopt}});
    fakes().pointers.unplug("usb-9");
    EXPECT_EQ(reports, std::vector<bool>{true}) << "reported from inside a device callback";
    settle();
    EXPECT_EQ(reports, (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(recorder().matching("log: "),
              (Lines{"log: Tolvane: mouse connected: USB Mouse (1 present)",
                     "log: Tolvane: mouse connected: BT Mouse (2 present)",
                     "log: Tolvane: mouse disconnected: USB Mouse (1 present)",
                     "log: Tolvane: mouse disconnected: BT Mouse (0 present)",
                     "log: Tolvane: mouse connected: unknown device (1 present)",
                     "log: Tolvane: mouse disconnected: unknown device (0 present)"}));
}

// A report whose monitor is gone, or that comes before a callback is set, is dropped.
TEST_F(MouseMonitorTest, NoMouseAtStartIsReportedOnceUnloggedAndNoReportIsDeliveredLate) {
    start({builtIn, trackpad});
    EXPECT_EQ(reports, std::vector<bool>{false});
    EXPECT_TRUE(recorder().matching("log: ").empty());
    reports.clear();
    monitor = std::make_unique<MouseMonitor>(fakes().pointers);
    monitor->start();
    monitor.reset(); // its report is queued
    monitor = std::make_unique<MouseMonitor>(fakes().pointers);
    monitor->start();
    settle();
    monitor->onChange = [this](bool present) { reports.push_back(present); };
    settle();
    EXPECT_TRUE(reports.empty());
}

} // namespace
} // namespace tolvane::testing
