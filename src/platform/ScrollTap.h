#pragma once

#include "TolvaneCore/InputEvent.h"

namespace tolvane::platform {

// Called on the main thread with the events of one wheel device read since the last call,
// in order, before they are re-emitted. It may change values in place; it must not block,
// allocate or log.
using WheelEventFilter = void (*)(void* context, InputEvent* events, std::size_t count);

// Input grab and re-emit for every wheel device, present and future.
class ScrollTap {
public:
    virtual ~ScrollTap() = default;

    // Takes every wheel device, and follows arrivals from then on. False, with nothing taken,
    // when the input devices cannot be opened. Called again after a success it must not be:
    // the caller keeps that state.
    virtual bool create(WheelEventFilter filter, void* context) = 0;
};

} // namespace tolvane::platform
