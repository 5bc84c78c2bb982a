#pragma once

#include "platform/KeyboardGrab.h"
#include "platform/PointerDevices.h"
#include "platform/ScrollTap.h"

#include <memory>
#include <string>

namespace tolvane::oslinux {

class QtEventLoop;
class InputLayer;

// The input devices of this machine on Qt's event loop: the wheel tap, the pointer devices
// and the keyboard grab, sharing one discovery of the event nodes under deviceRoot/input.
class LinuxInput {
public:
    explicit LinuxInput(const std::string& deviceRoot = "/dev");
    ~LinuxInput();

    LinuxInput(const LinuxInput&) = delete;
    LinuxInput& operator=(const LinuxInput&) = delete;

    platform::ScrollTap& scrollTap();
    platform::PointerDevices& pointers();
    platform::KeyboardGrab& keyboard();

private:
    std::unique_ptr<QtEventLoop> loop;
    std::unique_ptr<InputLayer> layer;
};

} // namespace tolvane::oslinux
