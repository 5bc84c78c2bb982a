#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class QPainter;
class QPointF;
class QWidget;

namespace tolvane::MenuPainting {

// Every rich row of the menu is this wide; its height comes from its content.
inline constexpr int rowWidth = 300;

// The desktop's UI font at `pixelSize` logical pixels (fractions kept) and `weight`. With
// `rounded`, a rounded face where one is installed, else the UI font.
QFont font(const QWidget& widget, qreal pixelSize, QFont::Weight weight = QFont::Normal,
           bool rounded = false);

// The panel's text colour at `opacity`: what the rows call primary.
QColor primary(const QWidget& widget, qreal opacity = 1.0);
// The second and third levels of the foreground, for explanations and marks.
QColor secondary(const QWidget& widget);
QColor tertiary(const QWidget& widget);

// Draws one line of text with the top of its line box at `top`, starting at `left`.
void drawLine(QPainter& painter, const QString& text, qreal left, qreal top, const QFont& font,
              const QColor& color);

// Height of one line of `font`, and the width of `text` in it.
qreal lineHeight(const QFont& font);
qreal textWidth(const QString& text, const QFont& font);

} // namespace tolvane::MenuPainting
