#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <vector>

class QScreen;

namespace tolvane {

namespace platform {
class KeyboardGrab;
}

class CleaningOverlay;

// Keeps every key from reaching anything while the keyboard is wiped, with an overlay on
// every screen whose button, pressed with the pointer, is the only way out. A screen that
// comes while locked gets its overlay at once; one that goes takes its overlay with it.
class KeyboardLock : public QObject {
public:
    explicit KeyboardLock(platform::KeyboardGrab& keyboards);
    ~KeyboardLock() override;

    // True when the lock is on, now or from before; false when the keyboards could not be
    // taken, and the lock stays off.
    bool lock();
    void unlock();

    bool locked() const { return isLocked; }

    // Told the new value after each real change.
    std::function<void(bool)> onChange;

private:
    struct Overlay {
        QScreen* screen;
        QPointer<CleaningOverlay> window;
    };

    void showOverlays();
    void hideOverlays();
    void showOverlayOn(QScreen* screen);
    void activateFirstOverlay();
    void screenAdded(QScreen* screen);
    void screenRemoved(QScreen* screen);

    platform::KeyboardGrab& keyboards;
    bool isLocked = false;
    // One for each screen, in the order of QGuiApplication::screens() at locking time, then
    // in order of arrival. Empty while unlocked.
    std::vector<Overlay> overlays;
};

} // namespace tolvane
