#pragma once

#include "InputService/router/InputRouter.h"
#include "kernel/PollLoop.h"
#include "kernel/VirtualDevices.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <linux/capability.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tolvane::kerneltest {

// A test against the real kernel: a plain loop and, once started, the whole input layer on it.
class GuestFixture : public ::testing::Test {
protected:
    void start(const std::string& deviceRoot = "/dev") {
        layer = std::make_unique<oslinux::InputRouter>(loop, deviceRoot);
    }
    void TearDown() override { layer.reset(); }

    PollLoop loop;
    std::unique_ptr<oslinux::InputRouter> layer;
};

// While it lives, this process opens nodes as a user would: root's override of file modes is off.
struct WithoutAccess {
    WithoutAccess() { override(false); }
    ~WithoutAccess() { override(true); }
    static void override(bool on) {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct caps[2]{};
        ::syscall(SYS_capget, &header, caps);
        const unsigned bits = 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH;
        caps[0].effective = on ? caps[0].effective | bits : caps[0].effective & ~bits;
        ::syscall(SYS_capset, &header, caps);
    }
};

// A device directory of the test's own making, whose nodes link to real ones.
class FakeDeviceRoot {
public:
    FakeDeviceRoot() : root(::mkdtemp(pattern)) { ::mkdir((root + "/input").c_str(), 0755); }
    ~FakeDeviceRoot() { [[maybe_unused]] int rc = std::system(("rm -rf " + root).c_str()); }

    const std::string& path() const { return root; }
    // An empty target makes a node that exists but is no event device.
    void linkNode(const std::string& node, const std::string& target) {
        const std::string at = root + "/input/" + node;
        [[maybe_unused]] int rc = target.empty() ? ::close(::creat(at.c_str(), 0644))
                                                 : ::symlink(target.c_str(), at.c_str());
    }
    void linkUinput() {
        [[maybe_unused]] int rc = ::symlink("/dev/uinput", (root + "/uinput").c_str());
    }

private:
    char pattern[32] = "/tmp/tolvane-root.XXXXXX"; // before `root`, which is made from it
    std::string root;
};

} // namespace tolvane::kerneltest
