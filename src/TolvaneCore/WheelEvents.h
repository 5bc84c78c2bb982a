#pragma once

#include "TolvaneCore/EventCodes.h"
#include "TolvaneCore/InputEvent.h"

#include <cstddef>
#include <cstdint>

namespace tolvane {

bool isWheelAxis(const InputEvent& event);

// Negates the vertical and horizontal wheel values, legacy and high-resolution, and leaves
// every other event as it is. The one value with no negation in 32 bits becomes the largest.
void negateWheelAxes(InputEvent* events, std::size_t count);

} // namespace tolvane
