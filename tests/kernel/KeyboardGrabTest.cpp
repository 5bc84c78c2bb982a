#include "TolvaneCore/WheelEvents.h"
#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

#include <linux/input.h>

#include <chrono>
#include <thread>

namespace tolvane::kerneltest {
namespace {

using Events = std::vector<InputEvent>;

class KeyboardGrab : public GuestFixture {};

TEST_F(KeyboardGrab, SwallowsEveryKeyWhileHeldAndLetsKeysFlowAfterRelease) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    auto consumer = VirtualDevice::plug(consumerControl());
    start();
    NodeReader keys(keyboard->path());
    NodeReader media(consumer->path());

    ASSERT_TRUE(layer->keyboard().grab());
    for (auto code : {KEY_A, KEY_LEFTSHIFT, KEY_LEFTCTRL, KEY_F1, KEY_ESC, KEY_ENTER}) {
        keyboard->tap(code);
    }
    for (auto code : {KEY_VOLUMEUP, KEY_MUTE, KEY_BRIGHTNESSUP, KEY_PLAYPAUSE}) {
        consumer->tap(code);
    }
    loop.settle();
    EXPECT_TRUE(keys.readAll().empty()) << "a key reached another reader while held";
    EXPECT_TRUE(media.readAll().empty()) << "a media key reached another reader while held";

    layer->keyboard().release();
    loop.settle();
    keyboard->tap(KEY_B);
    consumer->tap(KEY_VOLUMEDOWN);
    EXPECT_EQ(withoutSync(keys.readAll()), (Events{{EV_KEY, KEY_B, 1}, {EV_KEY, KEY_B, 0}}));
    EXPECT_EQ(withoutSync(media.readAll()),
              (Events{{EV_KEY, KEY_VOLUMEDOWN, 1}, {EV_KEY, KEY_VOLUMEDOWN, 0}}));
}

TEST_F(KeyboardGrab, TakesAKeyboardPluggedInDuringTheHold) {
    start();
    ASSERT_TRUE(layer->keyboard().grab());
    auto keyboard = VirtualDevice::plug(usbKeyboard("Tolvane Test Late Keyboard"));
    NodeReader keys(keyboard->path());
    ASSERT_TRUE(loop.turnUntil([&] { return !keys.tryGrab(); }))
        << "the new keyboard was not taken";
    keys.readAll();
    keyboard->tap(KEY_Q);
    loop.settle();
    EXPECT_TRUE(keys.readAll().empty());
}

TEST_F(KeyboardGrab, LeavesPowerButtonLidSwitchAndPointerDelivering) {
    auto power = VirtualDevice::plug(powerButton());
    auto lid = VirtualDevice::plug(lidSwitch());
    auto mouse = VirtualDevice::plug(usbMouse());
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    start();
    NodeReader powerReader(power->path()), lidReader(lid->path()), mouseReader(mouse->path());

    ASSERT_TRUE(layer->keyboard().grab());
    power->tap(KEY_POWER);
    lid->frame({{EV_SW, SW_LID, 1}});
    mouse->frame({{EV_REL, REL_X, 4}, {EV_KEY, BTN_LEFT, 1}});
    loop.settle();
    EXPECT_EQ(withoutSync(powerReader.readAll()),
              (Events{{EV_KEY, KEY_POWER, 1}, {EV_KEY, KEY_POWER, 0}}));
    EXPECT_EQ(withoutSync(lidReader.readAll()), (Events{{EV_SW, SW_LID, 1}}));
    EXPECT_EQ(withoutSync(mouseReader.readAll()),
              (Events{{EV_REL, REL_X, 4}, {EV_KEY, BTN_LEFT, 1}}));
    EXPECT_TRUE(powerReader.tryGrab() && lidReader.tryGrab() && mouseReader.tryGrab());
}

TEST_F(KeyboardGrab, AKeyHeldAtGrabTimeEndsReleasedWithNoRepeat) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    start();
    NodeReader desktop(keyboard->path());

    keyboard->key(KEY_A, 1);
    ASSERT_TRUE(layer->keyboard().grab());
    loop.turnUntil([] { return false; }, std::chrono::milliseconds(100));
    keyboard->key(KEY_A, 0);
    ASSERT_TRUE(loop.turnUntil([&] { return !desktop.tryGrab(); })) << "never taken after release";

    const Events seen = withoutSync(desktop.readAll());
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back(), (InputEvent{EV_KEY, KEY_A, 0})) << "the desktop missed the release";
    EXPECT_FALSE(desktop.keyDown(KEY_A));

    loop.turnUntil([] { return false; }, std::chrono::milliseconds(600)); // past repeat delay
    EXPECT_TRUE(desktop.readAll().empty()) << "a repeat or key reached the desktop";
    keyboard->tap(KEY_B);
    loop.settle();
    EXPECT_TRUE(desktop.readAll().empty()) << "the keyboard is not held";
}

TEST_F(KeyboardGrab, ACombinedKeyboardAndTouchpadKeepsItsPointerThroughAClone) {
    auto combined = VirtualDevice::plug(keyboardWithTouchpad());
    start();
    NodeReader original(combined->path());
    ASSERT_TRUE(layer->keyboard().grab());
    const auto clones = nodesNamed("Tolvane Test Keyboard with Touchpad", {combined->path()});
    ASSERT_EQ(clones.size(), 1u);
    NodeReader clone(clones[0]);

    combined->frame({{EV_KEY, BTN_TOUCH, 1}, {EV_KEY, BTN_TOOL_FINGER, 1}, {EV_ABS, ABS_X, 100}});
    combined->tap(KEY_K);
    combined->frame({{EV_ABS, ABS_X, 200}, {EV_KEY, KEY_L, 1}});
    combined->frame({{EV_KEY, BTN_TOUCH, 0}, {EV_KEY, BTN_TOOL_FINGER, 0}, {EV_KEY, KEY_L, 0}});
    loop.settle();
    EXPECT_TRUE(original.readAll().empty());
    EXPECT_EQ(withoutSync(clone.readAll()), (Events{{EV_KEY, BTN_TOUCH, 1},
                                                    {EV_KEY, BTN_TOOL_FINGER, 1},
                                                    {EV_ABS, ABS_X, 100},
                                                    {EV_ABS, ABS_X, 200},
                                                    {EV_KEY, BTN_TOUCH, 0},
                                                    {EV_KEY, BTN_TOOL_FINGER, 0}}));

    layer->keyboard().release();
    EXPECT_TRUE(loop.turnUntil([] {
        return nodesNamed("Tolvane Test Keyboard with Touchpad").size() == 1;
    })) << "the clone outlived the hold";
}

TEST_F(KeyboardGrab, FailsWithNothingHeldWhenANodeCannotBeOpenedOrAKeyboardIsTaken) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    auto other = VirtualDevice::plug(usbKeyboard("Tolvane Test Other Keyboard"));
    FakeDeviceRoot root;
    root.linkUinput();
    root.linkNode(keyboard->node(), keyboard->path());
    root.linkNode(other->node(), other->path());
    root.addBogusNode("event998");
    start(root.path());
    NodeReader desktop(keyboard->path());
    NodeReader otherProgram(other->path());

    EXPECT_FALSE(layer->keyboard().grab()) << "a node that is no event device";
    EXPECT_TRUE(desktop.tryGrab()) << "a partial hold was left in place";

    root.removeNode("event998");
    loop.settle();
    ASSERT_TRUE(otherProgram.grab());
    EXPECT_FALSE(layer->keyboard().grab()) << "a keyboard another program holds";
    EXPECT_TRUE(desktop.tryGrab()) << "a partial hold was left in place";

    otherProgram.ungrab();
    EXPECT_TRUE(layer->keyboard().grab());
    EXPECT_FALSE(desktop.tryGrab());
}

TEST_F(KeyboardGrab, AWheelDeviceWithMediaKeysKeepsItsWheelAndLosesItsKeysWhileHeld) {
    auto consumer = VirtualDevice::plug(consumerControl());
    start();
    ASSERT_TRUE(layer->scrollTap().create(
        [](void*, InputEvent* events, std::size_t count) { negateWheelAxes(events, count); },
        nullptr));
    const auto clones = nodesNamed(consumerControl().name, {consumer->path()});
    ASSERT_EQ(clones.size(), 1u);
    NodeReader clone(clones[0]);

    // Down on the clone when the hold begins: the hold lets go of it there. (Events are read
    // before asking for key state, since EVIOCGKEY drops a reader's queued key events.)
    consumer->key(KEY_VOLUMEUP, 1);
    loop.settle();
    EXPECT_EQ(withoutSync(clone.readAll()), (Events{{EV_KEY, KEY_VOLUMEUP, 1}}));
    ASSERT_TRUE(layer->keyboard().grab());
    EXPECT_EQ(withoutSync(clone.readAll()), (Events{{EV_KEY, KEY_VOLUMEUP, 0}}));
    EXPECT_FALSE(clone.keyDown(KEY_VOLUMEUP)) << "a key stayed down on the clone";

    consumer->key(KEY_VOLUMEUP, 0);
    consumer->tap(KEY_MUTE);
    consumer->frame({{EV_REL, REL_HWHEEL, 2}});
    loop.settle();
    EXPECT_EQ(withoutSync(clone.readAll()), (Events{{EV_REL, REL_HWHEEL, -2}}));

    layer->keyboard().release();
    consumer->tap(KEY_MUTE);
    loop.settle();
    EXPECT_EQ(withoutSync(clone.readAll()), (Events{{EV_KEY, KEY_MUTE, 1}, {EV_KEY, KEY_MUTE, 0}}));
}

TEST_F(KeyboardGrab, AMouseAnotherProgramHoldsStopsNeitherTheTapNorTheHold) {
    auto mouse = VirtualDevice::plug(usbMouse());
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    NodeReader otherProgram(mouse->path());
    ASSERT_TRUE(otherProgram.grab());
    start();
    EXPECT_TRUE(layer->scrollTap().create([](void*, InputEvent*, std::size_t) {}, nullptr));
    EXPECT_TRUE(layer->keyboard().grab());
    NodeReader desktop(keyboard->path());
    EXPECT_FALSE(desktop.tryGrab()) << "the keyboard was not taken";
    otherProgram.ungrab();
}

} // namespace
} // namespace tolvane::kerneltest
