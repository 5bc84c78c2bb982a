#pragma once

#include <string_view>

namespace tolvane {

// The wanted scroll direction: trackpad is the natural one, mouse its reverse.
enum class ScrollMode { trackpad, mouse };

ScrollMode opposite(ScrollMode mode);

// The case name, as log lines and the stored setting spell it.
std::string_view modeName(ScrollMode mode);

struct AppState {
    bool autoEnabled;
    bool mouseConnected;
    ScrollMode mode;

    friend bool operator==(const AppState&, const AppState&) = default;
};

struct AppEvent {
    enum class Kind { setAuto, mouseConnected, mouseDisconnected, manualToggle };

    Kind kind;
    bool on = false; // payload of setAuto only

    static AppEvent setAuto(bool on) { return {Kind::setAuto, on}; }
    static AppEvent mouseConnected() { return {Kind::mouseConnected}; }
    static AppEvent mouseDisconnected() { return {Kind::mouseDisconnected}; }
    static AppEvent manualToggle() { return {Kind::manualToggle}; }

    friend bool operator==(const AppEvent& a, const AppEvent& b) {
        return a.kind == b.kind && (a.kind != Kind::setAuto || a.on == b.on);
    }
};

AppState reduce(AppState state, AppEvent event);

// True exactly when the wanted direction differs from what the desktop gives by itself.
bool shouldInvert(ScrollMode mode, bool baselineNatural);

} // namespace tolvane
