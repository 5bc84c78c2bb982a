#pragma once

#include "kernel/PollLoop.h"
#include "kernel/VirtualDevices.h"
#include "platform/linux/input/InputRouter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

namespace tolvane::kerneltest {

// A test against the real kernel: a plain loop and, once started, the whole input layer on it.
class GuestFixture : public ::testing::Test {
protected:
    void start(const std::string& deviceRoot = "/dev",
               std::chrono::milliseconds watchdogTimeout = std::chrono::seconds(10)) {
        layer = std::make_unique<oslinux::InputRouter>(loop, deviceRoot, watchdogTimeout);
    }

    void TearDown() override { layer.reset(); }

    PollLoop loop;
    std::unique_ptr<oslinux::InputRouter> layer;
};

// A device directory of the test's own making, whose nodes link to real ones.
class FakeDeviceRoot {
public:
    FakeDeviceRoot();
    ~FakeDeviceRoot();

    const std::string& path() const { return root; }
    void linkNode(const std::string& node, const std::string& target);
    void linkUinput();
    // A node that exists but is no event device.
    void addBogusNode(const std::string& node);
    void removeNode(const std::string& node);
    // Puts a link to `target` in the node's place in one step, as a rename.
    void replaceNode(const std::string& node, const std::string& target);

private:
    std::string root;
};

} // namespace tolvane::kerneltest
