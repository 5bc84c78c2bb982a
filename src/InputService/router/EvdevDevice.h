#pragma once

#include "TolvaneCore/DeviceCapabilities.h"

#include <memory>
#include <string>

struct libevdev;

namespace tolvane::oslinux {

// One opened input event node: its descriptor, libevdev's view of it and what it can send.
class EvdevDevice {
public:
    // Absent when the node cannot be opened or is not an event device; errno tells why. Opened
    // for reading and writing where allowed, else for reading.
    static std::unique_ptr<EvdevDevice> open(const std::string& path);
    ~EvdevDevice();

    EvdevDevice(const EvdevDevice&) = delete;
    EvdevDevice& operator=(const EvdevDevice&) = delete;

    int fd() const { return descriptor; }
    libevdev* evdev() const { return dev; }
    const DeviceCapabilities& capabilities() const { return caps; }

    // Exclusive hold: no other reader gets events until ungrab() or close.
    bool grab();
    void ungrab();

    // Whether the kernel sees any key or button down on the device now (EVIOCGKEY, which also
    // drops the key events still queued for this descriptor).
    bool anyKeyDown() const;

    // Writes a release of every key and button down into the device, for every reader of it,
    // as if they had been let go of. False when the node is not open for writing.
    bool releaseKeysDown();

private:
    EvdevDevice(int fd, libevdev* dev);

    int descriptor;
    libevdev* dev;
    DeviceCapabilities caps;
};

DeviceCapabilities readCapabilities(const libevdev* dev);

} // namespace tolvane::oslinux
