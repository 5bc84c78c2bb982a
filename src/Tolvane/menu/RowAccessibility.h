#pragma once

namespace tolvane {

// Lets screen readers reach the menu's rows. Qt reads a menu item from its action, and an item
// that shows a widget in place of a title has no text of its own: it would be read as nothing.
// Installed, each such item speaks for the widget it shows, with the widget's role, name,
// description, state, value and children, and each row tells its role and whether it can be
// used. Installing twice does nothing more.
void installRowAccessibility();

} // namespace tolvane
