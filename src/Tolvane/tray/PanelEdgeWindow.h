#pragma once

#include <QPoint>

class QWidget;

namespace tolvane {

// Makes `window`, not shown yet, a surface that the compositor lays against the screen edge
// nearest `click` (where the tray icon was clicked), beside the panel there. False where the
// compositor or this build cannot; the window is then left as it was.
bool layBesidePanel(QWidget* window, QPoint click);

} // namespace tolvane
