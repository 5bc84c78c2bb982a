#pragma once

#include <QFont>

namespace tolvane::DesktopFonts {

// The desktop's user-interface font at a size in pixels and a weight.
QFont ui(int pixels, QFont::Weight weight = QFont::Normal);

// The installed face with rounded terminals, empty where there is none.
const QString& roundedFamily();

// The face of roundedFamily() where there is one, else the same as ui().
QFont rounded(int pixels, QFont::Weight weight = QFont::Normal);

// The desktop's fixed-width font, for digits that must not shift as they change.
QFont monospaced(int pixels, QFont::Weight weight = QFont::Normal);

} // namespace tolvane::DesktopFonts
