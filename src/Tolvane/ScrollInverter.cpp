#include "Tolvane/ScrollInverter.h"

#include "TolvaneCore/WheelEvents.h"
#include "platform/ScrollTap.h"

namespace tolvane {

ScrollInverter::ScrollInverter(platform::ScrollTap& scrollTap) : scrollTap(scrollTap) {}

bool ScrollInverter::start() {
    if (tap) {
        return true;
    }
    if (!scrollTap.create(&ScrollInverter::handle, this)) {
        return false;
    }
    tap = true;
    return true;
}

void ScrollInverter::handle(void* context, InputEvent* events, std::size_t count) {
    const auto* inverter = static_cast<const ScrollInverter*>(context);
    if (!inverter->inverting) {
        return;
    }
    negateWheelAxes(events, count);
}

} // namespace tolvane
