#pragma once

#include <QPoint>

class QMenu;

namespace tolvane {

// Pops `menu` up at `anchor` (the pointer on the tray icon), beside the panel that holds the
// icon, inside the part of the screen that the panels leave free.
void popUpBesidePanel(QMenu* menu, QPoint anchor);

} // namespace tolvane
