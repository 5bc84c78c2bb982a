#pragma once

#include <QPoint>

#include <optional>

namespace tolvane::HostClicks {

// Starts noting where a StatusNotifierItem host says its icon was clicked.
void watch();

// The screen point of the host's last click on the icon; nothing before the first.
std::optional<QPoint> last();

} // namespace tolvane::HostClicks
