#pragma once

namespace tolvane {

// Lets screen readers read the cleaning overlay whole. Its heading, instruction and clock are
// painted, not widgets, so Qt alone offers only the window's title and the unlock button;
// installed, the overlay has a static text child for each, before the button, and the clock's
// text is read as it stands at the moment it is asked for. Installing twice does nothing more.
void installOverlayAccessibility();

} // namespace tolvane
