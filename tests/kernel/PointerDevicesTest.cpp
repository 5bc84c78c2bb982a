#include "TolvaneCore/ExternalMouse.h"
#include "TolvaneCore/WheelEvents.h"
#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

#include <linux/input.h>

#include <optional>

namespace tolvane::kerneltest {
namespace {

class PointerDevices : public GuestFixture {
protected:
    void openMonitor() {
        layer->pointers().open(
            {[this](const platform::PointerDevice& d) { added.push_back(d); },
             [this](const platform::PointerDevice& d) { removed.push_back(d); }});
    }

    std::optional<platform::PointerDevice> current(const std::string& path) {
        for (const auto& device : layer->pointers().current()) {
            if (device.id == path) {
                return device;
            }
        }
        return std::nullopt;
    }

    static void invert(void*, InputEvent* events, std::size_t count) {
        negateWheelAxes(events, count);
    }

    std::vector<platform::PointerDevice> added, removed;
};

TEST_F(PointerDevices, UsbMouseIsExternalWhileBuiltInPointerAndKeyboardNodesAreNot) {
    auto usb = VirtualDevice::plug(usbMouse());
    auto trackpoint = VirtualDevice::plug(builtInPointer());
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    auto consumer = VirtualDevice::plug(consumerControl());
    start();
    openMonitor();

    const auto mouse = current(usb->path());
    ASSERT_TRUE(mouse);
    EXPECT_EQ(mouse->properties.primaryUsage, usageMouse);
    EXPECT_EQ(mouse->properties.builtIn, 0);
    EXPECT_EQ(mouse->properties.product, std::optional<std::string>("Tolvane Test USB Mouse"));
    EXPECT_TRUE(isExternalMouse(mouse->properties));

    const auto builtIn = current(trackpoint->path());
    ASSERT_TRUE(builtIn) << "a built-in pointer is still a pointer";
    EXPECT_EQ(builtIn->properties.builtIn, 1);
    EXPECT_FALSE(isExternalMouse(builtIn->properties));

    EXPECT_FALSE(current(keyboard->path()));
    EXPECT_FALSE(current(consumer->path())) << "a consumer-control node is no mouse";
    loop.settle();
    EXPECT_TRUE(added.empty()) << "devices present at open() came again as arrivals";
}

TEST_F(PointerDevices, AMousePluggedInLaterIsTakenAndReportedAndItsUnplugDropsIt) {
    auto first = VirtualDevice::plug(usbMouse("Tolvane Test First Mouse"));
    start();
    openMonitor();
    ASSERT_TRUE(layer->scrollTap().create(&PointerDevices::invert, nullptr));
    EXPECT_TRUE(added.empty()) << "an arrival came from inside the calls";

    auto later = VirtualDevice::plug(usbMouse("Tolvane Test Later Mouse"));
    ASSERT_TRUE(loop.turnUntil([&] { return added.size() == 1; }));
    EXPECT_EQ(added[0].id, later->path());
    EXPECT_TRUE(isExternalMouse(added[0].properties));
    const auto clones = nodesNamed("Tolvane Test Later Mouse", {later->path()});
    ASSERT_EQ(clones.size(), 1u) << "the later mouse got no clone";
    NodeReader clone(clones[0]);
    NodeReader original(later->path());
    EXPECT_FALSE(original.tryGrab()) << "the later mouse was not taken";
    later->frame({{EV_REL, REL_WHEEL, 3}});
    loop.settle();
    EXPECT_EQ(withoutSync(clone.readAll()), (std::vector<InputEvent>{{EV_REL, REL_WHEEL, -3}}));

    const std::string laterPath = later->path();
    later.reset();
    ASSERT_TRUE(loop.turnUntil([&] { return removed.size() == 1; }));
    EXPECT_EQ(removed[0].id, laterPath);
    EXPECT_EQ(removed[0].properties.product, added[0].properties.product);
    EXPECT_TRUE(loop.turnUntil([] { return nodesNamed("Tolvane Test Later Mouse").empty(); }))
        << "the clone outlived its device";

    // The first mouse goes on through its own clone.
    const auto firstClones = nodesNamed("Tolvane Test First Mouse", {first->path()});
    ASSERT_EQ(firstClones.size(), 1u);
    NodeReader firstClone(firstClones[0]);
    first->frame({{EV_REL, REL_WHEEL, 1}});
    loop.settle();
    EXPECT_EQ(withoutSync(firstClone.readAll()),
              (std::vector<InputEvent>{{EV_REL, REL_WHEEL, -1}}));
}

TEST_F(PointerDevices, ACloneKeepsTheIdentityAndIsNeverTakenNorCounted) {
    auto mouse = VirtualDevice::plug(usbMouse());
    start();
    openMonitor();
    ASSERT_TRUE(layer->scrollTap().create(&PointerDevices::invert, nullptr));
    loop.settle(); // the clone's own arrival is seen here
    const auto clones = nodesNamed("Tolvane Test USB Mouse", {mouse->path()});
    ASSERT_EQ(clones.size(), 1u);

    EXPECT_TRUE(added.empty()) << "the clone was reported as a new pointer";
    EXPECT_FALSE(current(clones[0]));
    EXPECT_TRUE(current(mouse->path()));
    NodeReader clone(clones[0]);
    EXPECT_TRUE(clone.tryGrab()) << "the clone was grabbed";
    const input_id cloneId = clone.id(), originalId = NodeReader(mouse->path()).id();
    EXPECT_EQ(cloneId.bustype, originalId.bustype);
    EXPECT_EQ(cloneId.vendor, originalId.vendor);
    EXPECT_EQ(cloneId.product, originalId.product);
    EXPECT_EQ(nodesNamed("Tolvane Test USB Mouse", {mouse->path()}).size(), 1u)
        << "a clone of the clone was made";
}

TEST_F(PointerDevices, ANodeThatBecomesReadableOnlyLaterIsTakenAndReportedThen) {
    auto mouse = VirtualDevice::plug(usbMouse());
    FakeDeviceRoot root;
    root.linkUinput();
    root.addBogusNode("event50"); // there, but not yet an event device one can read
    start(root.path());
    openMonitor();
    EXPECT_FALSE(layer->scrollTap().create(&PointerDevices::invert, nullptr));

    root.replaceNode("event50", mouse->path()); // as when udev has fixed its permissions
    ASSERT_TRUE(loop.turnUntil([&] { return added.size() == 1; }));
    EXPECT_EQ(added[0].id, root.path() + "/input/event50");
    EXPECT_TRUE(layer->scrollTap().create(&PointerDevices::invert, nullptr));
    EXPECT_FALSE(NodeReader(mouse->path()).tryGrab()) << "the mouse was not taken";
}

} // namespace
} // namespace tolvane::kerneltest
