#include "TolvaneCore/ScrollState.h"

namespace tolvane {

ScrollMode opposite(ScrollMode mode) {
    return mode == ScrollMode::trackpad ? ScrollMode::mouse : ScrollMode::trackpad;
}

std::string_view modeName(ScrollMode mode) {
    return mode == ScrollMode::mouse ? "mouse" : "trackpad";
}

AppState reduce(AppState state, AppEvent event) {
    switch (event.kind) {
    case AppEvent::Kind::setAuto:
        state.autoEnabled = event.on;
        if (event.on) {
            state.mode = state.mouseConnected ? ScrollMode::mouse : ScrollMode::trackpad;
        }
        break;
    case AppEvent::Kind::mouseConnected:
        state.mouseConnected = true;
        if (state.autoEnabled) {
            state.mode = ScrollMode::mouse;
        }
        break;
    case AppEvent::Kind::mouseDisconnected:
        state.mouseConnected = false;
        if (state.autoEnabled) {
            state.mode = ScrollMode::trackpad;
        }
        break;
    case AppEvent::Kind::manualToggle:
        state.mode = opposite(state.mode);
        break;
    }
    return state;
}

bool shouldInvert(ScrollMode mode, bool baselineNatural) {
    return (mode == ScrollMode::trackpad) != baselineNatural;
}

} // namespace tolvane
