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

// Waits up to `ms` until `free` says whether nobody holds the device.
bool becomes(NodeReader& desktop, bool free, int ms = 3000) {
    for (const auto start = Clock::now(); desktop.tryGrab() != free;
         std::this_thread::sleep_for(1ms)) {
        if (msSince(start) > ms) {
            return false;
        }
    }
    return true;
}

// A program that holds the keyboard through the input layer, with a 300 ms watchdog.
pid_t startHolder(const std::string& logFile) {
    int ready[2];
    if (::pipe(ready) != 0) {
        return -1;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpgid(0, 0); // a group of its own with a parent outside: SIGTSTP may stop it
        PollLoop loop;
        oslinux::InputRouter layer(loop, "/dev", 300ms, logFile);
        const char answer = layer.grab() ? 'y' : 'n';
        [[maybe_unused]] auto n = ::write(ready[1], &answer, 1);
        for (;;) {
            loop.turn(100ms);
        }
    }
    char answer = 0;
    const bool held = ::read(ready[0], &answer, 1) == 1 && answer == 'y';
    ::close(ready[0]);
    ::close(ready[1]);
    return held ? child : -1;
}

// Catches a stopped or killed program that leaves the keyboard dead: SIGTSTP lets go before
// the stop, SIGSTOP (which a debugger's stop resembles) within the watchdog's timeout of the
// first key left unread, never while the loop reads or has nothing to read; on SIGCONT the
// keyboard is taken back, and SIGKILL gives it back at once.
TEST(KeyboardSafety, AStoppedOrKilledHolderGivesTheKeyboardBack) {
    auto keyboard = VirtualDevice::plug(usbKeyboard());
    NodeReader desktop(keyboard->path());
    for (int stop : {SIGTSTP, SIGSTOP}) {
        SCOPED_TRACE(stop == SIGSTOP ? "SIGSTOP" : "SIGTSTP");
        const std::string log = "/holder.log";
        std::remove(log.c_str());
        const pid_t holder = startHolder(log);
        ASSERT_GT(holder, 0);
        for (int i = 0; i < 4; ++i, std::this_thread::sleep_for(100ms)) {
            keyboard->tap(KEY_C); // read by the holder: no stall
        }
        std::this_thread::sleep_for(500ms); // nothing to read: no stall either
        EXPECT_TRUE(desktop.readAll().empty() && !desktop.tryGrab()) << "not held throughout";

        const auto stopped = Clock::now();
        ::kill(holder, stop);
        int status = 0;
        ASSERT_EQ(::waitpid(holder, &status, WUNTRACED), holder);
        ASSERT_TRUE(WIFSTOPPED(status));
        const auto pressed = Clock::now();
        keyboard->tap(KEY_D); // into the stopped program
        EXPECT_TRUE(becomes(desktop, true)) << "the keyboard stayed held while stopped";
        const double released = msSince(pressed);
        keyboard->tap(KEY_E);
        EXPECT_EQ(withoutSync(desktop.readAll()).size(), stop == SIGTSTP ? 4u : 2u)
            << "keys after the stop were lost";
        std::printf("figure: %s of the holding program to keys flowing: %.0f ms (watchdog "
                    "timeout 300 ms, %.0f ms after the first key left unread)\n",
                    stop == SIGSTOP ? "SIGSTOP" : "SIGTSTP", msSince(stopped), released);
        EXPECT_TRUE(stop == SIGTSTP ? released < 150 : released > 250 && released < 600)
            << released << " ms";

        std::string line;
        for (const auto start = Clock::now(); line.empty() && msSince(start) < 500;) {
            std::this_thread::sleep_for(5ms); // written after letting go
            std::ifstream written(log);
            line.assign(std::istreambuf_iterator<char>(written), {});
        }
        EXPECT_EQ(line.find("Z input loop stalled, released "),
                  stop == SIGSTOP ? 19u : std::string::npos)
            << "the log file says: " << line;

        ::kill(holder, SIGCONT);
        EXPECT_TRUE(becomes(desktop, false)) << "the keyboard was not taken back on SIGCONT";
        ::kill(holder, SIGKILL);
        ::waitpid(holder, nullptr, 0);
        ASSERT_TRUE(becomes(desktop, true, 1000)); // the watchdog process ends with the program
        keyboard->tap(KEY_F);
        EXPECT_EQ(withoutSync(desktop.readAll()).size(), 2u) << "a key lost after the kill";
    }
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
