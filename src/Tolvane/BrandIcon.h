#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

class QPainter;

namespace tolvane::BrandIcon {

// The program's blue, shared by the tray icon and the menu.
const QColor& accent();

// The tray icon: the glyph in the accent colour while mouse scrolling is in force, else in
// the panel's text colour.
QIcon menuBar(bool active);

// What assistive software reads for the tray icon.
QString description(bool active);

// The glyph in one colour on a transparent ground, `size` pixels square.
QPixmap glyph(const QColor& color, int size = 18);

// Draws the glyph on an 18 by 18 canvas whose origin is the painter's, y growing downwards.
void drawTolvane(QPainter& painter, const QColor& color);

} // namespace tolvane::BrandIcon
