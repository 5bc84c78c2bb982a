#include "Tolvane/MouseMonitor.h"
#include "support/AppHarness.h"

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

const platform::PointerDevice usbMouse{"usb-1", {1, 2, 0, "USB Mouse"}};
const platform::PointerDevice btMouse{"bt-1", {1, 2, 0, "BT Mouse"}};
const platform::PointerDevice trackpad{"bt-2", {1, 2, 0, "Magic TrackPad"}};
const platform::PointerDevice builtIn{"i8042", {1, 1, 1, "PS/2 Generic Mouse"}};

class MouseMonitorTest : public AppHarness {
protected:
    void start() {
        monitor = std::make_unique<MouseMonitor>(fakes().pointers);
        monitor->onChange = [this](bool present) { reports.push_back(present); };
        monitor->start();
    }

    std::vector<std::string> lines() { return recorder().matching("log: "); }

    std::unique_ptr<MouseMonitor> monitor;
    std::vector<bool> reports;
};

TEST_F(MouseMonitorTest, NoMouseAtStartReportsFalseOnceAfterStartReturns) {
    fakes().pointers.present = {builtIn, trackpad};
    start();
    EXPECT_TRUE(reports.empty());
    settle();
    EXPECT_EQ(reports, std::vector<bool>{false});
    EXPECT_TRUE(lines().empty());
}

TEST_F(MouseMonitorTest, EachMouseIsLoggedWithTheCountButOnlyTheFirstAndLastAreReported) {
    fakes().pointers.present = {usbMouse, btMouse};
    start();
    fakes().pointers.unplug("usb-1");
    settle();
    EXPECT_EQ(reports, std::vector<bool>{true});
    fakes().pointers.unplug("bt-1");
    settle();
    EXPECT_EQ(reports, (std::vector<bool>{true, false}));
    EXPECT_EQ(lines(),
              (std::vector<std::string>{"log: Tolvane: mouse connected: USB Mouse (1 present)",
                                        "log: Tolvane: mouse connected: BT Mouse (2 present)",
                                        "log: Tolvane: mouse disconnected: USB Mouse (1 present)",
                                        "log: Tolvane: mouse disconnected: BT Mouse (0 present)"}));
}

TEST_F(MouseMonitorTest, DeviceSeenTwiceOrRejectedChangesNothing) {
    fakes().pointers.present = {usbMouse};
    start();
    fakes().pointers.plug(usbMouse); // delivered again by the arrival callback
    fakes().pointers.plug(trackpad);
    fakes().pointers.plug(builtIn);
    fakes().pointers.unplug("bt-2"); // never a member
    settle();
    EXPECT_EQ(lines().size(), 1u);
    EXPECT_EQ(reports, std::vector<bool>{true});
}

TEST_F(MouseMonitorTest, QuickPlugAndUnplugDeliverBothReportsInOrder) {
    start();
    settle();
    fakes().pointers.plug({"usb-9", {1, 2, std::nullopt, std::nullopt}});
    fakes().pointers.unplug("usb-9");
    EXPECT_EQ(reports, std::vector<bool>{false});
    settle();
    EXPECT_EQ(reports, (std::vector<bool>{false, true, false}));
    EXPECT_EQ(lines(), (std::vector<std::string>{
                           "log: Tolvane: mouse connected: unknown device (1 present)",
                           "log: Tolvane: mouse disconnected: unknown device (0 present)"}));
}

TEST_F(MouseMonitorTest, AReportWithoutACallbackOrMonitorIsDroppedNotDeliveredLater) {
    start();
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
