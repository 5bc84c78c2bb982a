#pragma once

#include "TolvaneCore/InputEvent.h"

#include <cstddef>
#include <cstdint>

namespace tolvane {

// Event type and codes of the kernel's input protocol that the wheel path looks at.
inline constexpr std::uint16_t evSyn = 0x00;
inline constexpr std::uint16_t evKey = 0x01;
inline constexpr std::uint16_t evRel = 0x02;
inline constexpr std::uint16_t relHWheel = 0x06;
inline constexpr std::uint16_t relWheel = 0x08;
inline constexpr std::uint16_t relWheelHiRes = 0x0b;
inline constexpr std::uint16_t relHWheelHiRes = 0x0c;

bool isWheelAxis(const InputEvent& event);

// Negates the vertical and horizontal wheel values, legacy and high-resolution, and leaves
// every other event as it is. The one value with no negation in 32 bits becomes the largest.
void negateWheelAxes(InputEvent* events, std::size_t count);

} // namespace tolvane
