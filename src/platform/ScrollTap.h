#pragma once

namespace tolvane::platform {

// This session's wheel tap, which the input service keeps: every wheel device taken, and its
// wheel values negated while the tap is inverting.
class ScrollTap {
public:
    virtual ~ScrollTap() = default;

    // Asks for the tap with its first setting. False when the service is absent, does not
    // answer or refuses this session; the caller keeps whether it succeeded.
    virtual bool create(bool inverting) = 0;

    // A new setting for the tap that exists; returns without waiting for the service.
    virtual void setInverting(bool inverting) = 0;
};

} // namespace tolvane::platform
