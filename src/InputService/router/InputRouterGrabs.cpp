// Giving each device the roles that apply to it: its clone, its grab and its watch. The things
// easy to get wrong: a device may only be taken while nothing on it is down (EVIOCGKEY), or
// the desktop keeps that key or button pressed and repeats it; RoutedDevice watches a device
// with something down until it is idle and takes it then. A keyboard is opened and cloned off
// the loop (MadeClones) and taken when it comes back, unless it went or was let go of
// meanwhile; a wheel device at once, since the tap answers whether it works.
#include "InputService/router/InputRouter.h"

namespace tolvane::oslinux {

InputRouter::Outcome InputRouter::applyRoles(const std::string& node, Known& entry,
                                             std::unique_ptr<UinputClone> made) {
    if (!entry.capabilities) {
        return Outcome::done;
    }
    const bool wheelRole = tapping && takesWheel(entry);
    const bool keyRole = holding && takesKeys(entry);
    if (!entry.routed) {
        if (!wheelRole && !keyRole) {
            entry.ordered = 0; // what is being opened for it is let go of when it comes
            return Outcome::done;
        }
        // A keyboard with a clone to make: the wheel need not wait for it.
        if (!wheelRole && keyHoldFor(*entry.capabilities) != KeyHold::keysOnly) {
            if (entry.ordered == 0) {
                entry.ordered = MadeClones::order(madeClones, node, pathOf(node), root + "/uinput");
            }
            return Outcome::ordered;
        }
        auto device = EvdevDevice::open(pathOf(node));
        if (!device) {
            return Outcome::failed;
        }
        route(node, entry, std::move(device));
    }
    RoutedDevice& device = *entry.routed;
    device.setRoles(wheelRole, keyRole, filter, filterContext);
    if (device.needsClone()) {
        device.adoptClone(made ? std::move(made)
                               : UinputClone::create(device.evdev().evdev(), root + "/uinput"));
    }
    const Outcome outcome = settleRoles(entry);
    heldOrLeftOut(node, outcome);
    return outcome;
}

// The roles of a device that has the clone they need, or never will.
InputRouter::Outcome InputRouter::settleRoles(Known& entry) {
    RoutedDevice& device = *entry.routed;
    Outcome outcome = Outcome::done;
    if (device.needsClone()) {
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

void InputRouter::route(const std::string& node, Known& entry,
                        std::unique_ptr<EvdevDevice> device) {
    entry.ordered = 0;
    entry.routed = std::make_unique<RoutedDevice>(
        node, std::move(device), loop, [this](RoutedDevice& readable) { onReadable(readable); });
}

void InputRouter::takeMadeClones() {
    for (MadeClones::Arrival& arrival : madeClones->take()) {
        const auto found = known.find(arrival.node);
        // The device may have gone, or been let go of, while it was opened.
        if (found == known.end() || found->second.ordered != arrival.number) {
            continue;
        }
        if (!arrival.device) {
            found->second.ordered = 0;
            heldOrLeftOut(arrival.node, Outcome::failed);
            continue;
        }
        route(arrival.node, found->second, std::move(arrival.device));
        applyRoles(arrival.node, found->second, std::move(arrival.clone));
    }
    finishHoldIfDone();
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
    finishHoldIfDone();
}

} // namespace tolvane::oslinux
