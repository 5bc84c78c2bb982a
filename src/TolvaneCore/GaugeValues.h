#pragma once

namespace tolvane {

// What a ring gauge shows for one reading's fraction.
struct GaugeValues {
    double clamped; // the fraction held to 0...1; everything below is worked out from it
    int percent;    // clamped × 100, rounded half away from zero
    double ringEnd; // where the ring stops, never below a dot's length
    bool warning;   // at or above the warning threshold

    friend bool operator==(const GaugeValues&, const GaugeValues&) = default;
};

inline constexpr double gaugeWarningThreshold = 0.9;
inline constexpr double gaugeShortestRing = 0.005;

// A fraction that is not a number shows as zero.
GaugeValues gaugeValues(double fraction);

} // namespace tolvane
