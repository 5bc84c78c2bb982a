#pragma once

#include "support/ViewPixels.h"

#include <QColor>
#include <QImage>
#include <QList>

class QWidget;

namespace tolvane {
class CleaningOverlay;
}

namespace tolvane::testing {

// Looks at what the cleaning overlays put on the screens, for app tests.

// Every overlay window that exists, shown or not, in the order of the screens they stand on.
QList<CleaningOverlay*> overlayWindows();
QList<CleaningOverlay*> visibleOverlayWindows();

// Runs the event loop for `ms` milliseconds, then delivers pending deletions.
void spinEventLoop(int ms);

// The widget and its children painted onto a transparent picture, as its window shows it.
QImage renderedPicture(QWidget& widget);


// For failure messages: "rgba(1, 2, 3, 255)".
std::string describe(QColor colour);

} // namespace tolvane::testing
