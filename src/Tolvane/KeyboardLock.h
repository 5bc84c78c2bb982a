#pragma once

#include <QObject>

#include <functional>

namespace tolvane {

namespace platform {
class KeyboardGrab;
}

// Keeps every key from reaching anything while the keyboard is wiped, with an overlay on
// every screen whose button, pressed with the pointer, is the only way out.
class KeyboardLock : public QObject {
public:
    explicit KeyboardLock(platform::KeyboardGrab& keyboards);

    // True when the lock is on, now or from before; false when the keyboards could not be
    // taken, and the lock stays off.
    bool lock();
    void unlock();

    bool locked() const { return isLocked; }

    // Told the new value after each real change.
    std::function<void(bool)> onChange;

private:
    void showOverlays();
    void hideOverlays();

    platform::KeyboardGrab& keyboards;
    bool isLocked = false;
};

} // namespace tolvane
