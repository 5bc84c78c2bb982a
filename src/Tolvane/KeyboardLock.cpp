#include "Tolvane/KeyboardLock.h"

#include "Tolvane/Log.h"
#include "platform/KeyboardGrab.h"

namespace tolvane {

KeyboardLock::KeyboardLock(platform::KeyboardGrab& keyboards) : keyboards(keyboards) {}

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
    // UNFINISHED: the overlay windows come with the cleaning overlay.
}

void KeyboardLock::hideOverlays() {}

} // namespace tolvane
