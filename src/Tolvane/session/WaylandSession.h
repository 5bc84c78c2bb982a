#pragma once

#include <QGuiApplication>
#include <QString>

namespace tolvane {

// True in a Wayland session, natively or through Xwayland. There the program cannot place its
// windows, learn where the pointer is, or read the screen's pixels: the compositor decides.
inline bool inWaylandSession() {
    return QGuiApplication::platformName().startsWith(QStringLiteral("wayland")) ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace tolvane
