#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPalette>
#include <QRect>
#include <QString>

#include <vector>

class QWidget;

namespace tolvane {
class CleaningOverlay;
}

namespace tolvane::testing {

// A panel as a light or a dark desktop theme gives it.
QPalette panel(bool dark);

// The widget at `size` (its size hint when empty), painted with its children over the panel's
// window colour, as the menu would show it.
QImage renderOnPanel(QWidget& widget, const QPalette& panel, QSize size = {});

// Largest difference of a channel from `background` in `area`: how much ink there is.
int strongestInk(const QImage& image, const QRect& area, QColor background);

// Whether every channel of `a`, alpha included, lies within `tolerance` of `b`'s.
bool closeTo(QColor a, QColor b, int tolerance);

// The screens of Qt's offscreen platform, changed while a test runs as a desktop changes them
// when a monitor is plugged in or out. A screen keeps its identity by name; the first screen
// of the platform is named "". False when the platform is not the offscreen one; an empty list
// brings back the one screen of 800 by 800 the platform starts with.
struct OffscreenScreen {
    QString name;
    QRect geometry;
};
bool setOffscreenScreens(std::vector<OffscreenScreen> screens);

// The cleaning overlay windows that exist (or only those shown), in the order of their screens.
QList<CleaningOverlay*> overlayWindows(bool shownOnly = false);

} // namespace tolvane::testing
