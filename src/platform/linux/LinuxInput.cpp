// Qt owns the main loop, so the input layer's descriptors go on it through QtEventLoop. The thing
// easy to get wrong: the layer must be destroyed before its loop, because letting go of devices
// unwatches their descriptors.
#include "platform/linux/LinuxInput.h"

#include "platform/linux/QtEventLoop.h"
#include "platform/linux/input/InputLayer.h"

namespace tolvane::oslinux {

LinuxInput::LinuxInput(const std::string& deviceRoot)
    : loop(std::make_unique<QtEventLoop>()),
      layer(std::make_unique<InputLayer>(*loop, deviceRoot)) {}

LinuxInput::~LinuxInput() {
    layer.reset();
    loop.reset();
}

platform::ScrollTap& LinuxInput::scrollTap() {
    return layer->scrollTap();
}

platform::PointerDevices& LinuxInput::pointers() {
    return layer->pointers();
}

platform::KeyboardGrab& LinuxInput::keyboard() {
    return layer->keyboard();
}

} // namespace tolvane::oslinux
