// The keyboards are held through platform::KeyboardGrab; this side owns the overlay windows.
// The easy thing to get wrong is the unlock: it runs inside the click of a button that lives
// in one of the windows it takes away, so windows are hidden at once and deleted later.
#include "Tolvane/lock/KeyboardLock.h"

#include "Tolvane/lock/CleaningOverlay.h"
#include "Tolvane/lock/ScreenBackdrop.h"
#include "Tolvane/session/Log.h"
#include "Tolvane/session/WaylandSession.h"
#include "platform/KeyboardGrab.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace tolvane {

KeyboardLock::KeyboardLock(platform::KeyboardGrab& keyboards) : keyboards(keyboards) {
    if (qGuiApp) {
        connect(qGuiApp, &QGuiApplication::screenAdded, this, &KeyboardLock::screenAdded);
        connect(qGuiApp, &QGuiApplication::screenRemoved, this, &KeyboardLock::screenRemoved);
    }
}

// Nothing here runs inside an overlay's own event, so its windows can go at once.
KeyboardLock::~KeyboardLock() {
    for (const Overlay& overlay : overlays) {
        delete overlay.window.data();
    }
}

bool KeyboardLock::lock() {
    if (isLocked) {
        return true;
    }
    if (!keyboards.grab()) {
        Log::line("keyboard lock: tap creation failed");
        return false;
    }
    isLocked = true;
    showOverlays();
    Log::line("keyboard lock: locked");
    if (onChange) {
        onChange(true);
    }
    return true;
}

void KeyboardLock::unlock() {
    if (!isLocked) {
        return;
    }
    keyboards.release();
    isLocked = false;
    hideOverlays();
    Log::line("keyboard lock: unlocked");
    if (onChange) {
        onChange(false);
    }
}

void KeyboardLock::showOverlays() {
    for (QScreen* screen : QGuiApplication::screens()) {
        showOverlayOn(screen);
    }
    activateFirstOverlay();
}

// The program comes to the front with one of its overlays as the active window, so that
// whatever key might still arrive meets an overlay, which drops it.
void KeyboardLock::activateFirstOverlay() {
    if (!overlays.empty() && overlays.front().window) {
        overlays.front().window->activateWindow();
    }
}

// A frameless window above all others that the window manager leaves alone, so it cannot be
// moved, minimised or closed; see-through where the overlay does not paint. A Wayland
// compositor places windows itself and keeps the screen's pixels to itself: there the overlay
// asks to fill its screen, and has only the darkening layer.
void KeyboardLock::showOverlayOn(QScreen* screen) {
    const bool wayland = inWaylandSession();
    // The picture is taken before the window stands on the screen, or it would be in it.
    QImage backdrop = wayland ? QImage() : blurredScreenPicture(screen);
    QPointer<KeyboardLock> weak(this);
    auto* window = new CleaningOverlay(
        [weak] {
            if (weak) {
                weak->unlock();
            }
        },
        std::move(backdrop));
    window->setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           (wayland ? Qt::WindowFlags() : Qt::X11BypassWindowManagerHint));
    window->setAttribute(Qt::WA_TranslucentBackground);
    window->setWindowTitle(QStringLiteral("Tolvane"));
    window->setScreen(screen);
    window->setGeometry(screen->geometry());
    // A screen whose resolution or place changes while locked stays covered.
    connect(screen, &QScreen::geometryChanged, window,
            [window](const QRect& geometry) { window->setGeometry(geometry); });
    if (wayland) {
        window->showFullScreen();
    } else {
        window->show();
    }
    window->raise();
    overlays.push_back({screen, window});
}

// Hidden at once, deleted once the event loop is back: the click that asked for this may
// still be running inside one of these windows.
void KeyboardLock::hideOverlays() {
    std::vector<Overlay> leaving;
    leaving.swap(overlays);
    for (const Overlay& overlay : leaving) {
        if (overlay.window) {
            overlay.window->hide();
        }
    }
    for (const Overlay& overlay : leaving) {
        if (overlay.window) {
            overlay.window->deleteLater();
        }
    }
}

void KeyboardLock::screenAdded(QScreen* screen) {
    if (!isLocked) {
        return;
    }
    showOverlayOn(screen);
}

void KeyboardLock::screenRemoved(QScreen* screen) {
    const auto gone = std::find_if(overlays.begin(), overlays.end(),
                                   [screen](const Overlay& o) { return o.screen == screen; });
    if (gone == overlays.end()) {
        return;
    }
    const bool wasActive = gone->window && gone->window->isActiveWindow();
    if (gone->window) {
        gone->window->hide();
        gone->window->deleteLater();
    }
    overlays.erase(gone);
    if (wasActive) {
        activateFirstOverlay();
    }
}

} // namespace tolvane
