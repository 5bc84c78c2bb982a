#include "TolvaneCore/CleaningClock.h"

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace tolvane {

namespace {

// Truncates toward zero. Past what 64 bits hold (and for NaN) converting would be undefined,
// so such spans are held at the ends of the range.
std::int64_t wholeSeconds(double span) {
    if (std::isnan(span) || span <= 0) {
        return 0;
    }
    constexpr double limit = 9.2e18; // just below 2^63
    if (span >= limit) {
        return static_cast<std::int64_t>(limit);
    }
    return static_cast<std::int64_t>(span);
}

} // namespace

std::string elapsed(double fromSeconds, double toSeconds) {
    const std::int64_t total = wholeSeconds(toSeconds - fromSeconds);
    char text[48];
    std::snprintf(text, sizeof text, "%02" PRId64 ":%02" PRId64, total / 60, total % 60);
    return text;
}

} // namespace tolvane
