#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

class QPainter;

namespace tolvane::BrandIcon {

// The tray icon: the glyph in Theme::cobalt() while mouse scrolling is in force, else in
// `ink`, the colour that stands out on the panel where the program paints the icon itself.
// Where the icon theme holds Tolvane's installed icons, the icon also carries their name
// (the inactive one symbolic), so that a tray host that draws icons by name tints the
// inactive form to its panel; pixels stay the fallback for hosts that find no such name.
QIcon menuBar(bool active, const QColor& ink);

// Of black and white, the one that stands out more on `background`.
QColor inkOn(const QColor& background);

// A grey that stands out on black and on white panels alike, for hosts that show pixels as
// they come.
QColor neutralInk();

// What assistive software reads for the tray icon.
QString description(bool active);

// The glyph in one colour on a transparent ground, `size` pixels square.
QPixmap glyph(const QColor& color, int size = 18);

// Draws the glyph on an 18 by 18 canvas whose origin is the painter's, y growing downwards.
void drawTolvane(QPainter& painter, const QColor& color);

} // namespace tolvane::BrandIcon
