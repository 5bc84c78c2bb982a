#include "TolvaneCore/GaugeValues.h"

#include <cmath>

namespace tolvane {

GaugeValues gaugeValues(double fraction) {
    double clamped = fraction;
    if (!(clamped > 0)) {
        clamped = 0;
    }
    if (clamped > 1) {
        clamped = 1;
    }
    const int percent = int(std::round(clamped * 100));
    const double ringEnd = clamped <= gaugeShortestRing ? gaugeShortestRing : clamped;
    return GaugeValues{clamped, percent, ringEnd, clamped >= gaugeWarningThreshold};
}

} // namespace tolvane
