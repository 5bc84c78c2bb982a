// Giving each device the roles that apply to it: its clone, its grab and its watch. The thing
// easy to get wrong: a device may only be taken while nothing on it is down (EVIOCGKEY), or
// the desktop keeps that key or button pressed and repeats it; RoutedDevice watches a device
// with something down until it is idle and takes it then.
#include "InputService/router/InputRouter.h"

namespace tolvane::oslinux {

InputRouter::Outcome InputRouter::applyRoles(const std::string& node, Known& entry) {
    if (!entry.capabilities) {
        return Outcome::done;
    }
    const bool wheelRole = tapping && takesWheel(entry);
    const bool keyRole = holding && takesKeys(entry);
    if (!entry.routed) {
        if (!wheelRole && !keyRole) {
            return Outcome::done;
        }
        auto device = EvdevDevice::open(pathOf(node));
        if (!device) {
            return Outcome::failed;
        }
        entry.routed = std::make_unique<RoutedDevice>(
            node, std::move(device), loop,
            [this](RoutedDevice& readable) { onReadable(readable); });
    }
    RoutedDevice& device = *entry.routed;
    device.setRoles(wheelRole, keyRole, filter, filterContext);
    Outcome outcome = Outcome::done;
    if (!device.makeClone(root + "/uinput")) {
        if (log) {
            log("input device not taken, uinput will not clone it: " + device.capabilities().name);
        }
        outcome = Outcome::unclonable;
    } else if (!device.settle()) {
        outcome = Outcome::refused;
    }
    if (outcome != Outcome::done || !device.wantsGrab()) {
        entry.routed.reset();
    }
    return outcome;
}

void InputRouter::onReadable(RoutedDevice& device) {
    // A copy, not a reference: dropping the device destroys the name with it.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const std::string node = device.node();
    if (device.readPendingEvents() == RoutedDevice::ReadResult::vanished) {
        drop(node);
    } else if (device.state() == GrabState::waiting && !device.settle()) {
        known[node].routed.reset(); // destroys `device`
    }
}

} // namespace tolvane::oslinux
