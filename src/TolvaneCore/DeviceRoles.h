#pragma once

#include "TolvaneCore/DeviceCapabilities.h"
#include "TolvaneCore/ExternalMouse.h"
#include "TolvaneCore/InputEvent.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tolvane {

// The properties the mouse monitor judges, derived from what the device can send: a relative
// pointer with a left button is a mouse (usage 2), an absolute pointer with a left button that
// is neither touchpad, tablet nor touchscreen is a pointer (usage 1), anything else has no
// pointer usage. Built-in follows the bus; the product is the device's name.
DeviceProperties pointerPropertiesOf(const DeviceCapabilities& device);

// Every virtual device Tolvane makes carries a mark in its `phys`, so that no Tolvane (this one,
// another user's, a second instance) ever takes one: two that took each other's clones would
// clone without end and negate every wheel event once per clone in the chain.
std::string markedPhys(std::string_view phys);
bool isTolvaneClone(const DeviceCapabilities& device);

// The scroll tap takes every device with a vertical or horizontal wheel.
bool hasWheel(const DeviceCapabilities& device);

// A key the keyboard lock swallows on a device it holds: keyboard and media keys, but neither
// power, sleep and wake keys (they pass, as the system's own events do) nor any pointer,
// joystick or pad button.
bool isSwallowedKey(std::uint16_t keyCode);

// How the keyboard lock treats a device. A device with keyboard or media keys is taken; one
// whose only keys are power, sleep or wake is not. When a taken device also sends something
// else (pointer motion, buttons, switches, a power key), that part goes on through a clone.
enum class KeyHold { none, keysOnly, keysAndPassThrough };
KeyHold keyHoldFor(const DeviceCapabilities& device);

// Removes swallowed keys and their scan codes from a frame while the keyboard is held, keeping
// everything else in order. Returns the new count.
std::size_t dropSwallowedKeys(InputEvent* events, std::size_t count);

// Whether a frame carries anything beyond synchronisation: a frame of EV_MSC alone (a touchpad's
// timestamp) goes on, the SYN_REPORT left of a swallowed key does not.
bool carriesInput(const InputEvent* events, std::size_t count);

} // namespace tolvane
