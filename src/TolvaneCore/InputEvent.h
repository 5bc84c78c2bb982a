#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane {

// One input event as the kernel delivers it, without its timestamp.
struct InputEvent {
    std::uint16_t type;
    std::uint16_t code;
    std::int32_t value;

    friend bool operator==(const InputEvent&, const InputEvent&) = default;
};

} // namespace tolvane
