// Puts discovery, routing and the watchdog together. The thing easy to get wrong: the node
// watch must be running before the first scan, or a device plugged in between the two is never
// seen; a node reported twice is harmless because the router ignores what it already knows.
#include "platform/linux/input/InputLayer.h"

namespace tolvane::oslinux {

bool RoutedScrollTap::create(platform::WheelEventFilter filter, void* context) {
    return router.startWheelTap(filter, context);
}

void RoutedPointerDevices::open(Callbacks callbacks) {
    router.setPointerCallbacks(std::move(callbacks));
}

std::vector<platform::PointerDevice> RoutedPointerDevices::current() {
    return router.pointerDevices();
}

bool RoutedKeyboardGrab::grab() {
    return router.holdKeyboards();
}

void RoutedKeyboardGrab::release() {
    router.releaseKeyboards();
}

InputLayer::InputLayer(EventLoop& loop, const std::string& deviceRoot,
                       std::chrono::milliseconds watchdogTimeout, std::string logFile)
    : watchdog(watchdogTimeout, std::move(logFile)), routerImpl(loop, deviceRoot, watchdog) {
    NodeCallbacks callbacks{[this](const std::string& node) { routerImpl.nodeAppeared(node); },
                            [this](const std::string& node) { routerImpl.nodeVanished(node); }};
    if (deviceRoot == "/dev") {
        nodeWatch = watchNodesWithUdev(loop, callbacks);
        discoveryName = "udev";
    }
    if (!nodeWatch) {
        nodeWatch = watchNodesWithInotify(loop, deviceRoot, callbacks);
        discoveryName = nodeWatch ? "inotify" : "none";
    }
    for (const std::string& node : listEventNodes(deviceRoot)) {
        routerImpl.nodeAppeared(node);
    }
}

} // namespace tolvane::oslinux
