#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QSizeF>

namespace tolvane::OverlaySymbols {

// The three pictograms of the cleaning overlay, drawn in code as filled outlines so that they
// take any brush (the keyboard takes the clean gradient). Each comes with the size it has
// beside text of a given pixel size, like a glyph of that font, and is drawn to fill `box`.

QSizeF keyboardSize(qreal fontPixels);
QPainterPath keyboard(const QRectF& box);

QSizeF sparklesSize(qreal fontPixels);
QPainterPath sparkles(const QRectF& box);

QSizeF openLockSize(qreal fontPixels);
QPainterPath openLock(const QRectF& box);

} // namespace tolvane::OverlaySymbols
