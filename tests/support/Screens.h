#pragma once

#include <QList>
#include <QRect>
#include <QString>

#include <vector>

namespace tolvane {
class CleaningOverlay;
}

namespace tolvane::testing {

// The screens of Qt's offscreen platform, changed while a test runs. The platform announces
// each screen that comes or goes through QGuiApplication::screenAdded and screenRemoved, as a
// desktop does when a monitor is plugged in or out. A screen keeps its identity by name; the
// first screen of the platform is named "".
struct OffscreenScreen {
    QString name;
    QRect geometry;
};

// Replaces the screens by `screens`, in order. False when the platform is not the offscreen one.
bool setOffscreenScreens(const std::vector<OffscreenScreen>& screens);

// Back to the one screen of 800 by 800 the platform starts with.
void restoreOffscreenScreens();

// The cleaning overlay windows that exist (or only those shown), in the order of their screens.
QList<CleaningOverlay*> overlayWindows(bool shownOnly = false);

} // namespace tolvane::testing
