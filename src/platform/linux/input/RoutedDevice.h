#pragma once

#include "TolvaneCore/DeviceRoles.h"
#include "platform/ScrollTap.h"
#include "platform/linux/input/EvdevDevice.h"
#include "platform/linux/input/UinputClone.h"

#include <array>
#include <memory>

namespace tolvane::oslinux {

// One opened device and what the program does with it: taken for its wheel (every frame goes
// on to its clone through the wheel filter), taken for its keys (keys are dropped, the rest
// goes on to its clone when it has one), or only watched until no key is down so it can be
// taken without leaving a key pressed.
class RoutedDevice {
public:
    RoutedDevice(std::string node, std::unique_ptr<EvdevDevice> device);

    enum class ReadResult { drained, vanished };

    // Reads everything pending and routes it frame by frame. No allocation, no logging.
    ReadResult readPendingEvents();

    const std::string& node() const { return nodeName; }
    EvdevDevice& evdev() { return *device; }
    const DeviceCapabilities& capabilities() const { return device->capabilities(); }

    // What the roles ask for, and what is in place.
    bool wheelRole = false;
    bool keyRole = false;
    bool grabbed = false;
    bool waitingForIdle = false;
    bool watched = false;
    std::unique_ptr<UinputClone> clone;

    platform::WheelEventFilter filter = nullptr;
    void* filterContext = nullptr;

    bool wantsGrab() const { return wheelRole || keyRole; }
    bool wantsClone() const {
        return wheelRole || (keyRole && keyHoldFor(capabilities()) == KeyHold::keysAndPassThrough);
    }

private:
    void take(const input_event& event);
    void flushFrame();

    std::string nodeName;
    std::unique_ptr<EvdevDevice> device;
    bool wheel;
    std::array<InputEvent, UinputClone::frameCapacity> frame{};
    std::size_t count = 0;
    bool partialSent = false; // a frame too long for the buffer went out without its end
};

} // namespace tolvane::oslinux
