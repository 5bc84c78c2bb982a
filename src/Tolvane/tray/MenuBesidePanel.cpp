// Qt keeps a popup inside the whole screen where the platform theme asks for that (Plasma's
// does), over the panel; so the place is chosen here from the screen's free area. That area is
// kept a little smaller than the panels leave it: Plasma 6 draws a floating panel a few pixels
// beyond the room it reserves. A menu shown taller than its size hint said (its frame) is
// placed once more at its real size.
#include "Tolvane/tray/MenuBesidePanel.h"

#include "TolvaneCore/MenuPlacement.h"

#include <QGuiApplication>
#include <QMenu>
#include <QScreen>

namespace tolvane {

void popUpBesidePanel(QMenu* menu, QPoint anchor) {
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    if (!screen) {
        menu->popup(anchor);
        return;
    }
    const int clearance = menuClearance;
    const QRect free =
        screen->availableGeometry().adjusted(clearance, clearance, -clearance, -clearance);
    const auto place = [&](QSize size) {
        const ScreenPoint at = menuPlacement({anchor.x(), anchor.y()}, size.width(), size.height(),
                                             {free.x(), free.y(), free.width(), free.height()});
        return QPoint(at.x, at.y);
    };
    const QSize hinted = menu->sizeHint();
    menu->popup(place(hinted));
    if (menu->size() != hinted) {
        menu->move(place(menu->size()));
    }
}

} // namespace tolvane
