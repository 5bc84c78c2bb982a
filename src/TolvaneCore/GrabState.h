#pragma once

namespace tolvane {

// Where one taken input device stands. `loose`: neither grabbed nor read. `waiting`: read
// (watched) until nothing on it is down, then grabbed. `grabbed`: held exclusively and read.
// A device may only be grabbed while nothing on it is down, or the
// desktop keeps that key pressed: the key state is checked before the grab and again after it.
enum class GrabState { loose, waiting, grabbed };

// What the device's owner observed or decided.
enum class GrabEvent {
    wantedKeyDown,  // a role wants the device and something on it is down
    wantedIdle,     // a role wants the device and nothing on it is down
    grabRefused,    // EVIOCGRAB failed: another program holds the device
    grabbedKeyDown, // the grab held, but a press slipped in before it
    grabbedIdle,    // the grab held with nothing down
    unwanted,       // no role wants the device any more
};

// What the owner does for a transition, in this order.
inline constexpr unsigned grabNone = 0;
inline constexpr unsigned grabUngrab = 1U << 0;
inline constexpr unsigned grabUnwatch = 1U << 1; // stop reading the device
inline constexpr unsigned grabTryGrab = 1U << 2; // EVIOCGRAB, then report how it went
inline constexpr unsigned grabWatch = 1U << 3;   // read the device on the loop

struct GrabStep {
    GrabState next;
    unsigned actions;

    friend bool operator==(const GrabStep&, const GrabStep&) = default;
};

GrabStep grabStep(GrabState state, GrabEvent event);

} // namespace tolvane
