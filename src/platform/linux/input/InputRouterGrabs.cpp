// Taking and giving back one device: grab, clone, watch, and the watchdog's list. The thing
// easy to get wrong: a device may only be taken while nothing on it is down (EVIOCGKEY), or
// the desktop keeps that key or button pressed and repeats it; a device with something down
// is watched until it is idle and taken then.
#include "platform/linux/input/InputRouter.h"

#include <algorithm>

namespace tolvane::oslinux {

InputRouter::Outcome InputRouter::applyRoles(const std::string& node, Known& entry) {
    if (!entry.capabilities) {
        return Outcome::done;
    }
    const bool wheelRole = sessionActive && tapping && hasWheel(*entry.capabilities);
    const bool keyRole =
        sessionActive && holding && keyHoldFor(*entry.capabilities) != KeyHold::none;
    if (!entry.routed) {
        if (!wheelRole && !keyRole) {
            return Outcome::done;
        }
        auto device = EvdevDevice::open(pathOf(node));
        if (!device) {
            return Outcome::failed;
        }
        entry.routed = std::make_unique<RoutedDevice>(node, std::move(device));
    }
    RoutedDevice& device = *entry.routed;
    device.wheelRole = wheelRole;
    device.keyRole = keyRole;
    device.filter = wheelRole ? filter : nullptr;
    device.filterContext = filterContext;
    const Outcome outcome = settle(device);
    if (outcome != Outcome::done || !device.wantsGrab()) {
        letGo(device);
        entry.routed.reset();
    }
    return outcome;
}

InputRouter::Outcome InputRouter::settle(RoutedDevice& device) {
    if (!device.wantsGrab()) {
        return Outcome::done;
    }
    const bool needsClone = device.wantsClone() && !device.clone;
    if (needsClone) {
        device.clone = UinputClone::create(device.evdev().evdev(), root + "/uinput");
        if (!device.clone) {
            return Outcome::failed;
        }
        cloneNodes.insert(device.clone->nodeName());
    } else if (!device.wantsClone() && device.clone) {
        dropClone(device);
    }
    if (device.grabbed) {
        if (device.keyRole && device.clone) {
            device.clone->releaseKeysDown(device.evdev().evdev(), &isSwallowedKey);
        }
        return Outcome::done;
    }
    if (device.evdev().anyKeyDown()) {
        takeWhenIdle(device);
        return Outcome::done;
    }
    if (!device.evdev().grab()) {
        dropClone(device);
        return Outcome::refused;
    }
    if (device.evdev().anyKeyDown()) {
        // A press slipped in between the check and the grab: give it back and wait.
        device.evdev().ungrab();
        takeWhenIdle(device);
        return Outcome::done;
    }
    device.grabbed = true;
    device.waitingForIdle = false;
    watchdog.track(device.evdev().fd());
    watch(device);
    return Outcome::done;
}

void InputRouter::takeWhenIdle(RoutedDevice& device) {
    device.waitingForIdle = true;
    watch(device);
}

void InputRouter::letGo(RoutedDevice& device) {
    const int fd = device.evdev().fd();
    if (device.watched) {
        loop.unwatch(fd);
        device.watched = false;
    }
    if (device.grabbed) {
        watchdog.untrack(fd);
        device.evdev().ungrab();
        device.grabbed = false;
    }
    device.waitingForIdle = false;
    dropClone(device);
}

void InputRouter::dropClone(RoutedDevice& device) {
    if (device.clone) {
        cloneNodes.erase(device.clone->nodeName());
        device.clone.reset();
    }
}

void InputRouter::watch(RoutedDevice& device) {
    if (device.watched) {
        return;
    }
    device.watched = true;
    loop.watchReadable(device.evdev().fd(), [this, &device] { onReadable(device); });
}

void InputRouter::onReadable(RoutedDevice& device) {
    if (watchdog.hasReleased()) {
        // Taking the devices back may destroy this one; if it stays, its next call reads it.
        recoverFromStall(watchdog.takeReleased());
        return;
    }
    watchdog.noteRead();
    if (device.readPendingEvents() == RoutedDevice::ReadResult::vanished) {
        // A copy, not a reference: nodeVanished() destroys `device` and the name with it.
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
        const std::string node = device.node();
        nodeVanished(node);
        return;
    }
    if (!device.waitingForIdle || device.evdev().anyKeyDown()) {
        return;
    }
    device.waitingForIdle = false;
    if (settle(device) != Outcome::done) {
        const std::string node = device.node();
        letGo(device);
        known[node].routed.reset(); // destroys `device`
    }
}

void InputRouter::recoverFromStall(const std::vector<int>& released) {
    // The watchdog let go of these grabs while the loop stood still; it reads again, so take
    // them back, each once nothing on it is down. What came in meanwhile reached the desktop.
    for (auto& [node, entry] : known) {
        RoutedDevice* device = entry.routed.get();
        if (!device || !device->grabbed ||
            std::find(released.begin(), released.end(), device->evdev().fd()) == released.end()) {
            continue;
        }
        device->grabbed = false;
        applyRoles(node, entry);
    }
}

} // namespace tolvane::oslinux
