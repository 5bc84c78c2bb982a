// Giving each device the roles that apply to it: its clone, its grab and its watch. The thing
// easy to get wrong: a device may only be taken while nothing on it is down (EVIOCGKEY), or
// the desktop keeps that key or button pressed and repeats it; RoutedDevice watches a device
// with something down until it is idle and takes it then.
#include "InputService/router/InputRouter.h"

#include <libevdev/libevdev.h>

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
    device.wheelRole = wheelRole;
    device.keyRole = keyRole;
    device.frames.dropKeys = keyRole;
    device.frames.filter = wheelRole ? filter : nullptr;
    device.frames.filterContext = filterContext;
    Outcome outcome = Outcome::done;
    if (device.wantsClone() && !device.clone) {
        device.clone = UinputClone::create(device.evdev().evdev(), root + "/uinput");
        libevdev* source = device.evdev().evdev();
        if (device.clone &&
            (libevdev_has_event_type(source, EV_LED) || libevdev_has_event_type(source, EV_SND))) {
            // Only then: uinput echoes every EV_MSC written to a clone back to its maker too.
            device.clone->passOutputsTo(loop, device.evdev().fd());
        } else if (!device.clone) {
            if (log) {
                log("input device not taken, uinput will not clone it: " +
                    device.capabilities().name);
            }
            outcome = Outcome::unclonable;
        }
    }
    if (outcome == Outcome::done && !device.settle()) {
        outcome = Outcome::refused;
    }
    if (outcome != Outcome::done || !device.wantsGrab()) {
        entry.routed.reset();
    } else if (!device.wantsClone()) {
        device.clone.reset();
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
