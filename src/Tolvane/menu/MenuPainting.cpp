#include "Tolvane/menu/MenuPainting.h"
#include "Tolvane/look/DesktopFonts.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QWidget>

namespace tolvane::MenuPainting {

QFont font(const QWidget& widget, qreal pixelSize, QFont::Weight weight, bool rounded) {
    QFont result = QApplication::font();
    if (rounded && !DesktopFonts::roundedFamily().isEmpty()) {
        result.setFamily(DesktopFonts::roundedFamily());
    }
    // Point sizes keep the fraction that pixel sizes would drop (12.5, 10.5, 9.5).
    result.setPointSizeF(pixelSize * 72.0 / widget.logicalDpiY());
    result.setWeight(weight);
    return result;
}

QColor primary(const QWidget& widget, qreal opacity) {
    QColor color = widget.palette().color(QPalette::Active, QPalette::WindowText);
    color.setAlphaF(float(color.alphaF() * opacity));
    return color;
}

QColor secondary(const QWidget& widget) {
    return primary(widget, 0.6);
}

QColor tertiary(const QWidget& widget) {
    return primary(widget, 0.35);
}

void drawLine(QPainter& painter, const QString& text, qreal left, qreal top, const QFont& font,
              const QColor& color) {
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QPointF(left, top + QFontMetricsF(font, painter.device()).ascent()), text);
}

qreal lineHeight(const QFont& font) {
    return QFontMetricsF(font).height();
}

qreal textWidth(const QString& text, const QFont& font) {
    return QFontMetricsF(font).horizontalAdvance(text);
}

} // namespace tolvane::MenuPainting
