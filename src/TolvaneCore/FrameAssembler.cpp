#include "TolvaneCore/FrameAssembler.h"

#include "TolvaneCore/DeviceRoles.h"
#include "TolvaneCore/WheelEvents.h"

namespace tolvane {

std::span<const InputEvent> FrameAssembler::take(const InputEvent& event) {
    frame[count++] = event;
    if ((event.type == code::evSyn && event.code == code::synReport) || count == frame.size()) {
        return flush();
    }
    return {};
}

std::span<const InputEvent> FrameAssembler::resynced() {
    return count > 0 ? take({code::evSyn, code::synReport, 0}) : std::span<const InputEvent>{};
}

std::span<const InputEvent> FrameAssembler::flush() {
    std::size_t n = count;
    count = 0;
    if (dropKeys) {
        n = dropSwallowedKeys(frame.data(), n);
    }
    if (filter) {
        filter(filterContext, frame.data(), n);
    }
    const bool ends =
        n > 0 && frame[n - 1].type == code::evSyn && frame[n - 1].code == code::synReport;
    if (!carriesInput(frame.data(), n) && !(partialSent && ends)) {
        return {};
    }
    partialSent = !ends;
    return {frame.data(), n};
}

} // namespace tolvane
