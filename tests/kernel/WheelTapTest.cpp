#include "TolvaneCore/WheelEvents.h"
#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

#include <linux/input.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace tolvane::kerneltest {
namespace {

using Events = std::vector<InputEvent>;
constexpr InputEvent syn{EV_SYN, SYN_REPORT, 0};

// The application's filter in small: negate the wheel axes while inverting.
struct Inversion {
    bool inverting = false;
    static void filter(void* context, InputEvent* events, std::size_t count) {
        if (static_cast<Inversion*>(context)->inverting) {
            negateWheelAxes(events, count);
        }
    }
};

class WheelTap : public GuestFixture {
protected:
    // Plugs a mouse, starts the tap and opens a reader on the mouse's clone.
    void startWithMouse(const DeviceRecipe& recipe = usbMouse()) {
        mouse = VirtualDevice::plug(recipe);
        ASSERT_TRUE(mouse);
        start();
        ASSERT_TRUE(layer->scrollTap().create(&Inversion::filter, &inversion));
        const auto clones = nodesNamed(recipe.name, {mouse->path()});
        ASSERT_EQ(clones.size(), 1u);
        clone = std::make_unique<NodeReader>(clones[0]);
    }

    Inversion inversion;
    std::unique_ptr<VirtualDevice> mouse;
    std::unique_ptr<NodeReader> clone;
};

TEST_F(WheelTap, NegatesLegacyAndHighResolutionWheelsOnlyWhileInverting) {
    startWithMouse();
    NodeReader original(mouse->path());
    const Events vertical{{EV_REL, REL_WHEEL, 1}, {EV_REL, REL_WHEEL_HI_RES, 120}};
    const Events horizontal{{EV_REL, REL_HWHEEL, -2}, {EV_REL, REL_HWHEEL_HI_RES, -240}};

    inversion.inverting = true;
    mouse->frame(vertical);
    mouse->frame(horizontal);
    loop.settle();
    EXPECT_EQ(clone->readAll(), (Events{{EV_REL, REL_WHEEL, -1},
                                        {EV_REL, REL_WHEEL_HI_RES, -120},
                                        syn,
                                        {EV_REL, REL_HWHEEL, 2},
                                        {EV_REL, REL_HWHEEL_HI_RES, 240},
                                        syn}));

    inversion.inverting = false;
    mouse->frame(vertical);
    mouse->frame(horizontal);
    loop.settle();
    EXPECT_EQ(clone->readAll(),
              (Events{vertical[0], vertical[1], syn, horizontal[0], horizontal[1], syn}));
    EXPECT_TRUE(original.readAll().empty()) << "the grabbed mouse reached another reader";
}

TEST_F(WheelTap, PassesMotionAndButtonsUnchangedAndInOrder) {
    startWithMouse();
    inversion.inverting = true;
    const std::vector<Events> frames{{{EV_REL, REL_X, 5}, {EV_REL, REL_Y, -3}},
                                     {{EV_KEY, BTN_LEFT, 1}},
                                     {{EV_REL, REL_X, -7}, {EV_REL, REL_WHEEL, 2}},
                                     {{EV_KEY, BTN_LEFT, 0}, {EV_KEY, BTN_RIGHT, 1}},
                                     {{EV_KEY, BTN_RIGHT, 0}, {EV_REL, REL_Y, 9}}};
    Events expected;
    for (const Events& f : frames) {
        mouse->frame(f);
        for (InputEvent e : f) {
            e.value = e.code == REL_WHEEL && e.type == EV_REL ? -e.value : e.value;
            expected.push_back(e);
        }
        expected.push_back(syn);
    }
    loop.settle();
    EXPECT_EQ(clone->readAll(), expected);
}

TEST_F(WheelTap, SynDroppedLeavesNoButtonStuck) {
    startWithMouse();
    mouse->key(BTN_LEFT, 1);
    loop.settle();
    clone->readAll();
    ASSERT_TRUE(clone->keyDown(BTN_LEFT));

    // The release and a flood behind it arrive while the loop is not turning: the tap's
    // buffer overflows and the release is lost from its queue.
    mouse->key(BTN_LEFT, 0);
    for (int i = 0; i < 3000; ++i) {
        mouse->frame({{EV_REL, REL_X, 1 + i % 3}});
    }
    loop.settle();
    std::size_t motions = 0;
    for (const InputEvent& e : clone->readAll()) {
        motions += e.type == EV_REL && e.code == REL_X;
    }
    EXPECT_FALSE(clone->keyDown(BTN_LEFT)) << "the button stayed down on the clone";
    EXPECT_LT(motions, 3000u) << "no overflow happened, the case proves nothing";
}

TEST_F(WheelTap, TenThousandFramesLoseNoneAndShowTheirLatency) {
    startWithMouse();
    inversion.inverting = true;
    constexpr int frames = 10000;
    std::vector<double> micros;
    micros.reserve(frames);
    int lost = 0;
    for (int i = 0; i < frames; ++i) {
        const int value = 1 + i % 5;
        const auto start = std::chrono::steady_clock::now();
        mouse->frame({{EV_REL, REL_WHEEL, value}});
        loop.turn();
        const Events got = clone->readAll();
        micros.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
                .count());
        lost += got != Events{{EV_REL, REL_WHEEL, -value}, syn};
    }
    EXPECT_EQ(lost, 0);
    std::sort(micros.begin(), micros.end());
    std::printf("figure: wheel frame write-to-clone-read latency over %d frames: median %.0f us, "
                "p99 %.0f us\n",
                frames, micros[frames / 2], micros[frames * 99 / 100]);
}

TEST_F(WheelTap, CreateFailsWithNothingTakenWhenUinputOrANodeCannotBeOpened) {
    mouse = VirtualDevice::plug(usbMouse());
    ASSERT_TRUE(mouse);
    FakeDeviceRoot root;
    root.linkNode(mouse->node(), mouse->path());
    NodeReader original(mouse->path());

    start(root.path());
    EXPECT_FALSE(layer->scrollTap().create(&Inversion::filter, &inversion)) << "no uinput";
    EXPECT_TRUE(original.tryGrab()) << "the mouse was taken although creation failed";

    root.linkUinput();
    root.addBogusNode("event999");
    EXPECT_FALSE(layer->scrollTap().create(&Inversion::filter, &inversion)) << "unreadable node";
    EXPECT_TRUE(original.tryGrab());

    root.removeNode("event999");
    loop.settle();
    EXPECT_TRUE(layer->scrollTap().create(&Inversion::filter, &inversion));
    EXPECT_FALSE(original.tryGrab()) << "the mouse was not taken";
}

} // namespace
} // namespace tolvane::kerneltest
