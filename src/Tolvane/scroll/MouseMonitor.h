#pragma once

#include "platform/PointerDevices.h"

#include <QObject>

#include <functional>
#include <optional>
#include <set>
#include <string>

namespace tolvane {

// Tells its owner whether at least one external mouse is attached: one report after start(),
// then one for each change between none and some. Reports come through the event loop, never
// from inside start() or a device callback.
class MouseMonitor : public QObject {
public:
    explicit MouseMonitor(platform::PointerDevices& devices);

    std::function<void(bool)> onChange;

    // Called once by the owner.
    void start();

private:
    void deviceAdded(const platform::PointerDevice& device);
    void deviceRemoved(const platform::PointerDevice& device);
    void recompute();

    platform::PointerDevices& manager;
    std::set<std::string> mice;
    std::optional<bool> lastReported;
};

} // namespace tolvane
