#pragma once

#include <QColor>
#include <QRect>

namespace tolvane {

// The ink that stands out on the panel under `icon` (in global coordinates), judged from the
// panel's own pixels there; invalid where the screen's pixels cannot be read.
QColor inkAround(const QRect& icon);

} // namespace tolvane
