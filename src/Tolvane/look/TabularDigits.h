#pragma once

#include <QFont>
#include <QPointF>
#include <QString>

class QPainter;

namespace tolvane::TabularDigits {

// Numbers that change in place (the gauges' percentage and detail line) must not shift
// sideways as their digits change. Qt 6.4 cannot ask a font for its tabular figures, so each
// digit is drawn centred in a cell as wide as the font's widest digit; every other character
// keeps its own advance.

// The width of `text` drawn that way in `font`.
qreal width(const QString& text, const QFont& font);

// `text` cut at the end with an ellipsis until its width() fits `room`.
QString elided(const QString& text, const QFont& font, qreal room);

// Draws `text` in `font` with the painter's pen, its baseline starting at `origin`.
void draw(QPainter& painter, const QString& text, QPointF origin, const QFont& font);

} // namespace tolvane::TabularDigits
