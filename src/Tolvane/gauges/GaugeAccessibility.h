#pragma once

namespace tolvane {

// Lets screen readers read a ring gauge as a progress bar: its name ("CPU 75 percent, 2 cores")
// and its percent as the value, from 0 to 100. Installing twice does nothing more.
void installGaugeAccessibility();

} // namespace tolvane
