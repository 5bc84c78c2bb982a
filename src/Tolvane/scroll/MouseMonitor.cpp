#include "Tolvane/scroll/MouseMonitor.h"

#include "Tolvane/session/Log.h"

#include <QMetaObject>
#include <QPointer>

namespace tolvane {

MouseMonitor::MouseMonitor(platform::PointerDevices& devices) : manager(devices) {}

void MouseMonitor::start() {
    manager.open({[this](const platform::PointerDevice& d) { deviceAdded(d); },
                  [this](const platform::PointerDevice& d) { deviceRemoved(d); }});
    for (const platform::PointerDevice& device : manager.current()) {
        if (isExternalMouse(device.properties)) {
            deviceAdded(device);
        }
    }
    recompute();
}

void MouseMonitor::deviceAdded(const platform::PointerDevice& device) {
    if (!isExternalMouse(device.properties)) {
        return;
    }
    if (!mice.insert(device.id).second) {
        return;
    }
    Log::line("mouse connected: " + displayName(device.properties) + " (" +
              std::to_string(mice.size()) + " present)");
    recompute();
}

void MouseMonitor::deviceRemoved(const platform::PointerDevice& device) {
    if (mice.erase(device.id) == 0) {
        return;
    }
    Log::line("mouse disconnected: " + displayName(device.properties) + " (" +
              std::to_string(mice.size()) + " present)");
    recompute();
}

void MouseMonitor::recompute() {
    const bool present = !mice.empty();
    if (lastReported && *lastReported == present) {
        return;
    }
    lastReported = present;
    QMetaObject::invokeMethod(
        this,
        [monitor = QPointer<MouseMonitor>(this), present] {
            if (monitor && monitor->onChange) {
                monitor->onChange(present);
            }
        },
        Qt::QueuedConnection);
}

} // namespace tolvane
