#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

#include <linux/input.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tolvane::kerneltest {
namespace {

using Events = std::vector<InputEvent>;
using Clock = std::chrono::steady_clock;

double microsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

Events tapped(std::uint16_t code) {
    return {{EV_KEY, code, 1}, {EV_KEY, code, 0}};
}

class KeyboardSafety : public GuestFixture {};

TEST_F(KeyboardSafety, KillingTheHoldingProcessGivesTheKeyboardBackAtOnce) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    NodeReader desktop(keyboard->path());
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        PollLoop childLoop;
        oslinux::InputLayer childLayer(childLoop);
        const char answer = childLayer.keyboard().grab() ? 'y' : 'n';
        [[maybe_unused]] auto n = ::write(ready[1], &answer, 1);
        for (;;) {
            childLoop.turn(std::chrono::milliseconds(100));
        }
    }
    char answer = 0;
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    ASSERT_EQ(answer, 'y');
    keyboard->tap(KEY_C);
    EXPECT_TRUE(desktop.readWithin(50).empty()) << "the child did not hold the keyboard";

    const auto killed = Clock::now();
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    // Its watchdog process holds a duplicate of the grab and ends with it, a moment later.
    for (int i = 0; i < 10000 && !desktop.tryGrab(); ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    keyboard->tap(KEY_D);
    EXPECT_EQ(withoutSync(desktop.readAll()), tapped(KEY_D));
    std::printf("figure: SIGKILL of the holding process to keys flowing: %.0f us\n",
                microsSince(killed));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(KeyboardSafety, TheWatchdogLetsGoOfInputLeftUnreadOnlyAndTheHoldResumesAfter) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    PollLoop stallingLoop;
    oslinux::InputLayer fastLayer(stallingLoop, "/dev", std::chrono::milliseconds(300));
    NodeReader desktop(keyboard->path());
    ASSERT_TRUE(fastLayer.keyboard().grab());

    // Typing that the loop reads, and a loop that stands still with nothing to read, are no
    // stall.
    auto lastTap = Clock::now();
    stallingLoop.turnUntil(
        [&] {
            if (microsSince(lastTap) > 100e3) {
                keyboard->tap(KEY_C);
                lastTap = Clock::now();
            }
            return false;
        },
        std::chrono::milliseconds(700));
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    EXPECT_FALSE(desktop.tryGrab()) << "released although no input was left unread";

    const auto stalled = Clock::now();
    keyboard->tap(KEY_D); // into a loop that does not turn
    while (desktop.tryGrab() == false && microsSince(stalled) < 3e6) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const double releasedAfter = microsSince(stalled);
    keyboard->tap(KEY_E);
    EXPECT_EQ(withoutSync(desktop.readAll()), tapped(KEY_E)) << "the stall left keys swallowed";
    EXPECT_GE(releasedAfter, 250e3) << "released before the timeout";
    std::printf("figure: watchdog (timeout 300 ms) released the keyboard %.0f ms after a key "
                "pressed into a stall\n",
                releasedAfter / 1000);

    EXPECT_TRUE(stallingLoop.turnUntil([&] { return !desktop.tryGrab(); }))
        << "the hold did not resume once the loop read again";
    keyboard->tap(KEY_F);
    stallingLoop.settle();
    EXPECT_TRUE(desktop.readAll().empty());
    fastLayer.keyboard().release();
}

TEST_F(KeyboardSafety, AThousandHoldsLoseNoKeyOutsideAndLetNoneThrough) {
    // Only the test keyboard, not the guest's own AT keyboard: giving a device back waits for
    // the kernel's RCU grace periods, and one device per hold keeps the figures comparable.
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    FakeDeviceRoot root;
    root.linkUinput();
    root.linkNode(keyboard->node(), keyboard->path());
    start(root.path());
    NodeReader desktop(keyboard->path());
    const std::uint16_t letters[] = {KEY_Q, KEY_W, KEY_E, KEY_R, KEY_T, KEY_Y, KEY_U,
                                     KEY_I, KEY_O, KEY_P, KEY_A, KEY_S, KEY_D};
    constexpr int cycles = 1000;
    std::vector<double> grabMicros, releaseMicros;
    int refused = 0, leakedInside = 0, lostOutside = 0;
    for (int i = 0; i < cycles; ++i) {
        const std::uint16_t code = letters[i % std::size(letters)];
        auto start = Clock::now();
        refused += !layer->keyboard().grab();
        grabMicros.push_back(microsSince(start));
        keyboard->tap(code);
        loop.turn();
        leakedInside += !desktop.readAll().empty();

        start = Clock::now();
        layer->keyboard().release();
        releaseMicros.push_back(microsSince(start));
        keyboard->tap(code);
        lostOutside += withoutSync(desktop.readAll()) != tapped(code);
    }
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(leakedInside, 0);
    EXPECT_EQ(lostOutside, 0);
    std::sort(grabMicros.begin(), grabMicros.end());
    std::sort(releaseMicros.begin(), releaseMicros.end());
    std::printf("figure: grab() to keys swallowed over %d holds of one keyboard: median %.0f us, "
                "p99 %.0f us\n",
                cycles, grabMicros[cycles / 2], grabMicros[cycles * 99 / 100]);
    std::printf("figure: release() to keys flowing over %d holds of one keyboard: median %.0f us, "
                "p99 %.0f us\n",
                cycles, releaseMicros[cycles / 2], releaseMicros[cycles * 99 / 100]);
}

} // namespace
} // namespace tolvane::kerneltest
