#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>
#include <QString>

class QPainter;

namespace tolvane::Symbols {

// The small pictures of the menu, by name: "keyboard", "cpu", "memorychip", "internaldrive",
// "computermouse", "computermouse.fill", "arrow.up.arrow.down", "chevron.right". Each is a
// one-colour vector drawing that takes the colour it is given.

// Draws the named symbol in `color`, as large as fits in `box` and centred there. An unknown
// name draws nothing.
void draw(QPainter& painter, const QString& name, const QRectF& box, const QColor& color);

// The square side at which a symbol stands beside text of `pixelSize` pixels.
qreal sideFor(qreal pixelSize);

// A menu item's image: `normal` for an idle item, `selected` for the highlighted one.
QIcon icon(const QString& name, const QColor& normal, const QColor& selected);

} // namespace tolvane::Symbols
