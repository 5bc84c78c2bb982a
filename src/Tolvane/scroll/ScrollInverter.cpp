#include "Tolvane/scroll/ScrollInverter.h"

#include "platform/ScrollTap.h"

namespace tolvane {

ScrollInverter::Inversion& ScrollInverter::Inversion::operator=(bool newValue) {
    value = newValue;
    if (tap) {
        tap->setInverting(value);
    }
    return *this;
}

ScrollInverter::ScrollInverter(platform::ScrollTap& scrollTap) : scrollTap(scrollTap) {}

bool ScrollInverter::start() {
    if (inverting.tap) {
        return true;
    }
    if (!scrollTap.create(inverting.value)) {
        return false;
    }
    inverting.tap = &scrollTap;
    return true;
}

} // namespace tolvane
