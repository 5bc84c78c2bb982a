#include "TolvaneCore/WheelEvents.h"

#include <limits>

namespace tolvane {

bool isWheelAxis(const InputEvent& event) {
    return event.type == code::evRel &&
           (event.code == code::relWheel || event.code == code::relHWheel ||
            event.code == code::relWheelHiRes || event.code == code::relHWheelHiRes);
}

void negateWheelAxes(InputEvent* events, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        InputEvent& event = events[i];
        if (!isWheelAxis(event)) {
            continue;
        }
        event.value = event.value == std::numeric_limits<std::int32_t>::min()
                          ? std::numeric_limits<std::int32_t>::max()
                          : -event.value;
    }
}

} // namespace tolvane
