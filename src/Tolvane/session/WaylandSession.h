#pragma once

#include <QGuiApplication>
#include <QString>

namespace tolvane {

// True where the program is a Wayland client itself: it can neither restore nor raise its own
// windows.
inline bool isWaylandClient() {
    return QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

// True in a Wayland session, natively or through Xwayland. There the program cannot place its
// windows, learn where the pointer is, or read the screen's pixels: the compositor decides.
inline bool inWaylandSession() {
    return isWaylandClient() || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace tolvane
