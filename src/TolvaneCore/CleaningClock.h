#pragma once

#include <string>

namespace tolvane {

// The running clock of the cleaning overlay: the whole seconds from `fromSeconds` to
// `toSeconds` as "mm:ss". Fractions are cut off, never rounded up; a time before the start
// reads "00:00". There is no hours field: minutes go on counting past two digits, so an hour
// reads "60:00".
std::string elapsed(double fromSeconds, double toSeconds);

} // namespace tolvane
