#pragma once

#include "TolvaneCore/FrameAssembler.h"
#include "platform/linux/devices/EventLoop.h"

#include <linux/input.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

struct libevdev;
struct libevdev_uinput;

namespace tolvane::oslinux {

// A virtual twin of a grabbed device, made through uinput with the same name, ids, event codes
// and axis ranges, so the desktop treats it as the device itself.
class UinputClone {
public:
    static constexpr std::size_t frameCapacity = FrameAssembler::capacity;

    // Absent when uinput refuses.
    static std::unique_ptr<UinputClone> create(libevdev* original, const std::string& uinputPath);
    ~UinputClone();

    UinputClone(const UinputClone&) = delete;
    UinputClone& operator=(const UinputClone&) = delete;

    // Sends up to frameCapacity events in one write.
    void writeFrame(const InputEvent* events, std::size_t count);

    // Lets go of every key the twin has been told is down, as `state` records it.
    void releaseKeysDown(const libevdev* state, bool (*which)(std::uint16_t keyCode));

    // From now on, passes what programs write to the twin for the device (its LEDs, its bell)
    // on to the device, through `deviceFd`, each time the loop finds some.
    void passOutputsTo(EventLoop& loop, int deviceFd);

private:
    UinputClone(libevdev_uinput* device, int uinputFd);
    void passOutputs();

    libevdev_uinput* device;
    int uinputFd;
    EventLoop* outputLoop = nullptr;
    int outputFd = -1;
    std::array<input_event, frameCapacity> out{};
};

} // namespace tolvane::oslinux
