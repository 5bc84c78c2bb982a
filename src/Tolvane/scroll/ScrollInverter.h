#pragma once

namespace tolvane {

namespace platform {
class ScrollTap;
}

// The one place that turns the wheel: while `inverting` is true the input service negates every
// wheel value of this session's tap, otherwise wheel events pass unchanged.
class ScrollInverter {
public:
    // A flag the owner writes directly; once the tap exists each write reaches it.
    class Inversion {
    public:
        Inversion& operator=(bool value);
        operator bool() const { return value; }

    private:
        friend class ScrollInverter;
        bool value = false;
        platform::ScrollTap* tap = nullptr; // set once the tap exists
    };

    explicit ScrollInverter(platform::ScrollTap& scrollTap);

    // True when the tap exists, made now or earlier; false when making it failed. The tap
    // starts with the value `inverting` has then, written before or not.
    bool start();

    Inversion inverting;

private:
    platform::ScrollTap& scrollTap;
};

} // namespace tolvane
