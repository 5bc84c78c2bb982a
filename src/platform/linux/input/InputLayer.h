#pragma once

#include "platform/KeyboardGrab.h"
#include "platform/PointerDevices.h"
#include "platform/ScrollTap.h"
#include "platform/linux/input/EventLoop.h"
#include "platform/linux/input/GrabWatchdog.h"
#include "platform/linux/input/InputRouter.h"
#include "platform/linux/input/NodeWatch.h"

#include <chrono>
#include <memory>
#include <string>

namespace tolvane::oslinux {

class RoutedScrollTap final : public platform::ScrollTap {
public:
    explicit RoutedScrollTap(InputRouter& router) : router(router) {}
    bool create(platform::WheelEventFilter filter, void* context) override;

private:
    InputRouter& router;
};

class RoutedPointerDevices final : public platform::PointerDevices {
public:
    explicit RoutedPointerDevices(InputRouter& router) : router(router) {}
    void open(Callbacks callbacks) override;
    std::vector<platform::PointerDevice> current() override;

private:
    InputRouter& router;
};

class RoutedKeyboardGrab final : public platform::KeyboardGrab {
public:
    explicit RoutedKeyboardGrab(InputRouter& router) : router(router) {}
    bool grab() override;
    void release() override;

private:
    InputRouter& router;
};

// The whole input layer on one loop: discovery of the nodes under deviceRoot, the router, the
// watchdog, and the three faces the application sees.
class InputLayer {
public:
    // The watchdog writes the stalls it ends to `logFile` too.
    explicit InputLayer(EventLoop& loop, const std::string& deviceRoot = "/dev",
                        std::chrono::milliseconds watchdogTimeout = std::chrono::seconds(10),
                        std::string logFile = {});

    platform::ScrollTap& scrollTap() { return tap; }
    platform::PointerDevices& pointers() { return pointerDevices; }
    platform::KeyboardGrab& keyboard() { return keyboardGrab; }
    InputRouter& router() { return routerImpl; }

    // "udev" or "inotify": how arrivals and removals are followed.
    const char* discovery() const { return discoveryName; }

private:
    GrabWatchdog watchdog;
    InputRouter routerImpl;
    std::unique_ptr<NodeWatch> nodeWatch;
    const char* discoveryName = "none";
    RoutedScrollTap tap{routerImpl};
    RoutedPointerDevices pointerDevices{routerImpl};
    RoutedKeyboardGrab keyboardGrab{routerImpl};
};

} // namespace tolvane::oslinux
