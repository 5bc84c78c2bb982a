#include "TolvaneCore/ExternalMouse.h"
#include "TolvaneCore/WheelEvents.h"
#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

namespace tolvane::kerneltest {
namespace {

using Events = std::vector<InputEvent>;
using namespace std::chrono_literals;

void invert(void*, InputEvent* events, std::size_t count) {
    negateWheelAxes(events, count);
}

// Devices that come, go or change while the tap and the hold run.
class DevicesOverTime : public GuestFixture {
protected:
    void openMonitor() {
        layer->open({[this](const platform::PointerDevice& d) { added.push_back(d); },
                     [this](const platform::PointerDevice& d) { removed.push_back(d); }});
    }
    // The one clone of `device`, named as it is.
    static std::string cloneOf(const VirtualDevice& device, const std::string& name) {
        const auto clones = nodesNamed(name, {device.path()});
        EXPECT_EQ(clones.size(), 1u) << name;
        return clones.empty() ? "" : clones[0];
    }

    std::vector<platform::PointerDevice> added, removed;
};

TEST_F(DevicesOverTime, AMouseAndAKeyboardPluggedInLaterAreTakenAndTheirUnplugDropsThem) {
    auto first = VirtualDevice::plug(usbMouse("Tolvane Test First Mouse"));
    start();
    openMonitor();
    ASSERT_TRUE(layer->create(&invert, nullptr));
    ASSERT_TRUE(layer->grab());
    loop.settle(); // the clone's own arrival is seen here
    EXPECT_TRUE(added.empty()) << "a clone or a device present at open() came as an arrival";
    NodeReader firstClone(cloneOf(*first, "Tolvane Test First Mouse"));
    EXPECT_TRUE(firstClone.tryGrab()) << "the clone was grabbed";
    EXPECT_EQ(layer->current().size(), 1u);

    auto later = VirtualDevice::plug(usbMouse("Tolvane Test Later Mouse"));
    auto keyboard = VirtualDevice::plug(usbKeyboard("Tolvane Test Late Keyboard"));
    NodeReader keys(keyboard->path());
    ASSERT_TRUE(loop.turnUntil([&] { return added.size() == 1 && !keys.tryGrab(); }))
        << "the later mouse was not reported or the later keyboard not taken";
    EXPECT_EQ(added[0].id, later->path());
    EXPECT_TRUE(isExternalMouse(added[0].properties));
    keys.readAll();
    keyboard->tap(KEY_Q);
    NodeReader laterClone(cloneOf(*later, "Tolvane Test Later Mouse"));
    later->frame({{EV_REL, REL_WHEEL, 3}});
    loop.settle();
    EXPECT_TRUE(keys.readAll().empty());
    EXPECT_EQ(withoutSync(laterClone.readAll()), (Events{{EV_REL, REL_WHEEL, -3}}));

    const std::string laterPath = later->path();
    later.reset();
    ASSERT_TRUE(loop.turnUntil([&] { return removed.size() == 1; }));
    EXPECT_EQ(removed[0].id, laterPath);
    EXPECT_TRUE(loop.turnUntil([] { return nodesNamed("Tolvane Test Later Mouse").empty(); }))
        << "the clone outlived its device";
}

// Two input layers (two users, or a second instance) on one machine.
TEST_F(DevicesOverTime, TwoLayersNeverTakeEachOthersClonesAndNegateTheWheelOnce) {
    auto mouse = VirtualDevice::plug(usbMouse());
    start();
    oslinux::InputRouter second(loop);
    ASSERT_TRUE(layer->create(&invert, nullptr) && second.create(&invert, nullptr));
    loop.turnUntil([] { return false; }, 300ms);
    NodeReader desktop(cloneOf(*mouse, usbMouse().name));
    mouse->frame({{EV_REL, REL_WHEEL, 2}});
    loop.settle();
    EXPECT_EQ(withoutSync(desktop.readAll()), (Events{{EV_REL, REL_WHEEL, -2}}));
}

TEST_F(DevicesOverTime, ANodeThatBecomesReadableOnlyLaterIsTakenAndReportedThen) {
    auto mouse = VirtualDevice::plug(usbMouse());
    FakeDeviceRoot root;
    root.linkUinput();
    root.linkNode("event50", ""); // there, but not yet an event device one can read
    start(root.path());
    openMonitor();
    EXPECT_FALSE(layer->create(&invert, nullptr));
    root.replaceNode("event50", mouse->path()); // as when udev has fixed its permissions
    ASSERT_TRUE(loop.turnUntil([&] { return added.size() == 1; }));
    EXPECT_EQ(added[0].id, root.path() + "/input/event50");
    EXPECT_TRUE(layer->create(&invert, nullptr));
    EXPECT_FALSE(NodeReader(mouse->path()).tryGrab()) << "the mouse was not taken";
}

// Keys down when the hold begins: the desktop must see them released and never repeated,
// and the hold takes the device once they are up.
TEST_F(DevicesOverTime, KeysDownWhenTheHoldBeginsEndReleasedWithNoRepeat) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    auto consumer = VirtualDevice::plug(consumerControl());
    start();
    ASSERT_TRUE(layer->create(&invert, nullptr));
    NodeReader desktop(keyboard->path()), clone(cloneOf(*consumer, consumerControl().name));
    keyboard->key(KEY_A, 1);
    consumer->key(KEY_MUTE, 1);
    loop.settle();
    EXPECT_EQ(withoutSync(clone.readAll()), (Events{{EV_KEY, KEY_MUTE, 1}}));
    ASSERT_TRUE(layer->grab());
    EXPECT_EQ(withoutSync(clone.readAll()), (Events{{EV_KEY, KEY_MUTE, 0}})) << "not at once";
    loop.turnUntil([] { return false; }, 100ms);
    keyboard->key(KEY_A, 0);
    consumer->key(KEY_MUTE, 0);
    ASSERT_TRUE(loop.turnUntil([&] { return !desktop.tryGrab(); })) << "never taken after release";
    const Events seen = withoutSync(desktop.readAll());
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back(), (InputEvent{EV_KEY, KEY_A, 0})) << "the desktop missed the release";
    EXPECT_FALSE(desktop.keyDown(KEY_A) || clone.keyDown(KEY_MUTE));
    loop.turnUntil([] { return false; }, 600ms); // past the repeat delay
    keyboard->tap(KEY_B);
    loop.settle();
    EXPECT_TRUE(desktop.readAll().empty()) << "a repeat or key reached the desktop";
    EXPECT_TRUE(withoutSync(clone.readAll()).empty());
}

// A release lost in an overflow of the tap's queue must not leave the button down on the
// clone, and no frame may come out of it mixed from before and after the loss.
TEST_F(DevicesOverTime, AnOverflowLeavesNoButtonDownAndNoMixedFrame) {
    auto mouse = VirtualDevice::plug(usbMouse());
    start();
    ASSERT_TRUE(layer->create(&invert, nullptr));
    NodeReader clone(cloneOf(*mouse, usbMouse().name));
    mouse->key(BTN_LEFT, 1);
    loop.settle();
    ASSERT_TRUE(clone.keyDown(BTN_LEFT));
    mouse->key(BTN_LEFT, 0); // the release and a flood behind it, while the loop stands still
    for (int i = 0; i < 3000; ++i) {
        mouse->frame({{EV_REL, REL_X, 1 + i % 3}, {EV_REL, REL_Y, 1 + i % 3}});
    }
    loop.settle();
    std::size_t motions = 0;
    Events frame;
    for (const InputEvent& e : clone.readAll()) {
        if (e.type == EV_SYN) {
            EXPECT_TRUE(frame.size() != 2 || frame[0].value == frame[1].value) << "mixed frame";
            frame.clear();
        } else if (e.type == EV_REL) {
            frame.push_back(e);
            motions += e.code == REL_X;
        }
    }
    EXPECT_FALSE(clone.keyDown(BTN_LEFT)) << "the button stayed down on the clone";
    EXPECT_LT(motions, 3000u) << "no overflow happened, the case proves nothing";
}

} // namespace
} // namespace tolvane::kerneltest
