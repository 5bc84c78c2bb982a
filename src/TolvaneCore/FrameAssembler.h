#pragma once

#include "TolvaneCore/InputEvent.h"

#include <array>
#include <cstddef>
#include <span>

namespace tolvane {

// Gathers one taken device's events into frames (up to SYN_REPORT) and hands back what goes on
// to its clone: with the held keys dropped and through the wheel filter. The things easy to get
// wrong: after SYN_DROPPED the kernel has thrown events away, so the frame under way is
// incomplete and is discarded; and a frame too long for the buffer goes out in pieces, the
// last of which must go out even when it holds nothing but its SYN_REPORT.
class FrameAssembler {
public:
    static constexpr std::size_t capacity = 256;
    using Filter = void (*)(void* context, InputEvent* events, std::size_t count);

    bool dropKeys = false; // the keyboard is held
    Filter filter = nullptr;
    void* filterContext = nullptr;

    // One event read from the device. Empty unless a frame (or a full buffer) is complete.
    std::span<const InputEvent> take(const InputEvent& event);

    // SYN_DROPPED: the events of the frame under way are discarded.
    void dropped() { count = 0; }

    // The end of the state the resync reported: its frame, closed if it was not.
    std::span<const InputEvent> resynced();

private:
    std::span<const InputEvent> flush();

    std::array<InputEvent, capacity> frame{};
    std::size_t count = 0;
    bool partialSent = false; // a frame too long for the buffer went out without its end
};

} // namespace tolvane
