#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

#include <linux/input.h>

#include <chrono>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tolvane::kerneltest {
namespace {

using Events = std::vector<InputEvent>;
using namespace std::chrono_literals;

Events tapped(std::uint16_t code) {
    return {{EV_KEY, code, 1}, {EV_KEY, code, 0}};
}

// Whatever happens to the program, the keyboard must come back.
class KeyboardSafety : public GuestFixture {};

TEST_F(KeyboardSafety, KillingTheHoldingProcessGivesTheKeyboardBackAtOnce) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    NodeReader desktop(keyboard->path());
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        PollLoop childLoop;
        oslinux::InputRouter childLayer(childLoop);
        const char answer = childLayer.grab() ? 'y' : 'n';
        [[maybe_unused]] auto n = ::write(ready[1], &answer, 1);
        for (;;) {
            childLoop.turn(100ms);
        }
    }
    char answer = 0;
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    ASSERT_EQ(answer, 'y');
    keyboard->tap(KEY_C);
    EXPECT_TRUE(desktop.readWithin(50).empty()) << "the child did not hold the keyboard";
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    // Its watchdog process holds a duplicate of the grab and ends with it, a moment later.
    for (int i = 0; i < 10000 && !desktop.tryGrab(); ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    keyboard->tap(KEY_D);
    EXPECT_EQ(withoutSync(desktop.readAll()), tapped(KEY_D));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(KeyboardSafety, TheWatchdogLetsGoOfInputLeftUnreadOnlyAndTheHoldResumesAfter) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    start("/dev", 300ms);
    NodeReader desktop(keyboard->path());
    ASSERT_TRUE(layer->grab());

    // Typing that the loop reads, and a loop that stands still with nothing to read, are no
    // stall.
    for (int i = 0; i < 7; ++i) {
        keyboard->tap(KEY_C);
        loop.turnUntil([] { return false; }, 100ms);
    }
    std::this_thread::sleep_for(700ms);
    EXPECT_FALSE(desktop.tryGrab()) << "released although no input was left unread";

    const auto stalled = std::chrono::steady_clock::now();
    keyboard->tap(KEY_D); // into a loop that does not turn
    while (!desktop.tryGrab() && std::chrono::steady_clock::now() - stalled < 3s) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_GE(std::chrono::steady_clock::now() - stalled, 250ms) << "released before the timeout";
    keyboard->tap(KEY_E);
    EXPECT_EQ(withoutSync(desktop.readAll()), tapped(KEY_E)) << "the stall left keys swallowed";

    EXPECT_TRUE(loop.turnUntil([&] { return !desktop.tryGrab(); }))
        << "the hold did not resume once the loop read again";
    keyboard->tap(KEY_F);
    loop.settle();
    EXPECT_TRUE(desktop.readAll().empty());
}

TEST_F(KeyboardSafety, ManyHoldsLoseNoKeyOutsideAndLetNoneThrough) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    FakeDeviceRoot root; // only the test keyboard, not the guest's own
    root.linkUinput();
    root.linkNode(keyboard->node(), keyboard->path());
    start(root.path());
    NodeReader desktop(keyboard->path());
    const std::uint16_t letters[] = {KEY_Q, KEY_W, KEY_E, KEY_R, KEY_T, KEY_Y, KEY_U};
    int refused = 0, leakedInside = 0, lostOutside = 0;
    for (int i = 0; i < 300; ++i) {
        const std::uint16_t code = letters[i % std::size(letters)];
        refused += !layer->grab();
        keyboard->tap(code);
        loop.turn();
        leakedInside += !desktop.readAll().empty();
        layer->release();
        keyboard->tap(code);
        lostOutside += withoutSync(desktop.readAll()) != tapped(code);
    }
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(leakedInside, 0);
    EXPECT_EQ(lostOutside, 0);
}

} // namespace
} // namespace tolvane::kerneltest
