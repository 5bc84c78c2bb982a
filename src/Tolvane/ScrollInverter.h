#pragma once

#include "TolvaneCore/InputEvent.h"

#include <cstddef>

namespace tolvane {

namespace platform {
class ScrollTap;
}

// The one place that touches wheel events: while `inverting` is true every wheel value that
// passes the tap leaves negated, otherwise events pass unchanged.
class ScrollInverter {
public:
    explicit ScrollInverter(platform::ScrollTap& scrollTap);

    // True when the tap exists, made now or earlier; false when making it failed.
    bool start();

    // Written directly by the owner; takes effect with the next event, tap or no tap.
    bool inverting = false;

private:
    static void handle(void* context, InputEvent* events, std::size_t count);

    platform::ScrollTap& scrollTap;
    bool tap = false;
};

} // namespace tolvane
