#include "kernel/GuestFixture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <thread>

namespace tolvane::kerneltest {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

class KeyboardHold : public GuestFixture {};

// How many of this process's descriptors are open on `path`.
int descriptorsOn(const std::string& path) {
    int count = 0;
    for (const auto& fd : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        count += std::filesystem::read_symlink(fd.path(), error) == path;
    }
    return count;
}

// Catches a user switched away from whose Tolvane goes on holding and reading the devices.
TEST_F(KeyboardHold, AnInactiveSessionHoldsAndKeepsOpenNoDeviceAndAnActiveOneTakesThemAgain) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    auto mouse = VirtualDevice::plug(usbMouse());
    start();
    ASSERT_TRUE(layer->create([](void*, InputEvent*, std::size_t) {}, nullptr) && layer->grab());
    NodeReader keys(keyboard->path()), wheel(mouse->path());
    EXPECT_FALSE(keys.tryGrab() || wheel.tryGrab());
    layer->setSessionActive(false);
    EXPECT_TRUE(keys.tryGrab() && wheel.tryGrab());
    const auto open = [&] {
        return descriptorsOn(keyboard->path()) + descriptorsOn(mouse->path());
    };
    for (const auto start = Clock::now(); open() > 2 && msSince(start) < 2000;) {
        std::this_thread::sleep_for(5ms); // closed in the background
    }
    EXPECT_EQ(open(), 2) << "descriptors kept open besides the test's own readers";
    layer->setSessionActive(true);
    EXPECT_FALSE(keys.tryGrab() || wheel.tryGrab());
}

} // namespace
} // namespace tolvane::kerneltest
