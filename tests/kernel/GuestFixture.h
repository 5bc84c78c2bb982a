#pragma once

#include "InputService/SdEventLoop.h"
#include "InputService/router/BackgroundWork.h"
#include "InputService/router/InputRouter.h"
#include "kernel/VirtualDevices.h"

#include <gtest/gtest.h>
#include <systemd/sd-event.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tolvane::kerneltest {

// The service's own loop, turned by the test.
class GuestLoop {
public:
    GuestLoop() { sd_event_unref(event); } // the router's loop keeps its own reference
    // Turns until nothing is ready any more and nothing is being made or destroyed in the
    // background: the twins let go of are gone, and those made are taken.
    void settle() {
        do {
            for (int i = 0; i < 10000 && router.turn(0) > 0; ++i) {
            }
            oslinux::finishBackgroundWork();
        } while (router.turn(0) > 0);
    }
    // Turns until `done` or the time is up; returns done().
    bool turnUntil(const std::function<bool()>& done,
                   std::chrono::milliseconds limit = std::chrono::milliseconds(2000)) {
        for (const auto end = std::chrono::steady_clock::now() + limit;
             !done() && std::chrono::steady_clock::now() < end;) {
            router.turn(5);
        }
        return done();
    }

    sd_event* event = [] {
        sd_event* made = nullptr;
        sd_event_new(&made);
        return made;
    }();
    inputd::SdEventLoop router{event};
};

// A test against the real kernel: the service's loop and, once started, the router on it.
class GuestFixture : public ::testing::Test {
protected:
    void start(const std::string& deviceRoot = "/dev") {
        layer = std::make_unique<oslinux::InputRouter>(loop.router, deviceRoot);
    }
    void TearDown() override { layer.reset(); }
    // The keyboard hold, as its caller gets the answer: whether it stands, once the router says.
    bool hold() {
        auto held = std::make_shared<std::optional<bool>>();
        layer->hold([held](bool stands) { *held = stands; });
        loop.turnUntil([&] { return held->has_value(); }, std::chrono::seconds(10));
        return held->value_or(false);
    }

    GuestLoop loop;
    std::unique_ptr<oslinux::InputRouter> layer;
};

// A device directory of the test's own making, whose nodes link to real ones, with uinput
// unless told otherwise.
class FakeDeviceRoot {
public:
    explicit FakeDeviceRoot(bool uinput = true) : root(::mkdtemp(pattern)) {
        ::mkdir((root + "/input").c_str(), 0755);
        [[maybe_unused]] int rc = uinput ? ::symlink("/dev/uinput", (root + "/uinput").c_str()) : 0;
    }
    ~FakeDeviceRoot() { [[maybe_unused]] int rc = std::system(("rm -rf " + root).c_str()); }

    const std::string& path() const { return root; }
    // Replaces what the node was; an empty target makes a node that is no event device.
    void linkNode(const std::string& node, const std::string& target) {
        const std::string at = root + "/input/" + node;
        ::unlink(at.c_str());
        [[maybe_unused]] int rc = target.empty() ? ::close(::creat(at.c_str(), 0644))
                                                 : ::symlink(target.c_str(), at.c_str());
    }

private:
    char pattern[32] = "/tmp/tolvane-root.XXXXXX"; // before `root`, which is made from it
    std::string root;
};

} // namespace tolvane::kerneltest
