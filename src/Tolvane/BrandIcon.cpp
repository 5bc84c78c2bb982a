#include "Tolvane/BrandIcon.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace tolvane::BrandIcon {

namespace {

constexpr qreal canvas = 18.0;

// The glyph is laid out with the origin at the lower left and y upward; these turn a
// rectangle and a point of that layout into the painter's coordinates.
QRectF fromBottom(qreal x, qreal y, qreal w, qreal h) {
    return {x, canvas - y - h, w, h};
}
QPointF fromBottom(qreal x, qreal y) {
    return {x, canvas - y};
}

void strokePath(QPainter& painter, const QPainterPath& path, const QColor& color, qreal width,
                Qt::PenCapStyle cap) {
    QPen pen(color, width, Qt::SolidLine, cap, Qt::MiterJoin);
    painter.strokePath(path, pen);
}

} // namespace

const QColor& accent() {
    static const QColor color = QColor::fromRgbF(59 / 255.0f, 91 / 255.0f, 1.0f, 1.0f);
    return color;
}

void drawTolvane(QPainter& painter, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);

    QPainterPath head;
    head.addRoundedRect(fromBottom(2.2, 2.4, 13.6, 10.8), 4.0, 4.0);
    strokePath(painter, head, color, 1.6, Qt::FlatCap);

    QPainterPath stem;
    stem.moveTo(fromBottom(9.0, 13.2));
    stem.lineTo(fromBottom(9.0, 14.9));
    strokePath(painter, stem, color, 1.4, Qt::RoundCap);

    QPainterPath filled;
    filled.addEllipse(fromBottom(7.8, 14.6, 2.4, 2.4));
    filled.addRoundedRect(fromBottom(5.6, 7.2, 1.8, 3.0), 0.9, 0.9);
    filled.addRoundedRect(fromBottom(10.6, 7.2, 1.8, 3.0), 0.9, 0.9);
    painter.fillPath(filled, color);

    QPainterPath smile;
    smile.moveTo(fromBottom(6.6, 5.6));
    smile.cubicTo(fromBottom(7.6, 4.0), fromBottom(10.4, 4.0), fromBottom(11.4, 5.6));
    strokePath(painter, smile, color, 1.4, Qt::RoundCap);

    painter.restore();
}

QPixmap glyph(const QColor& color, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.scale(size / canvas, size / canvas);
    drawTolvane(painter, color);
    return pixmap;
}

QString description(bool active) {
    return active ? QStringLiteral("Tolvane: mouse scrolling")
                  : QStringLiteral("Tolvane: natural scrolling");
}

QIcon menuBar(bool active) {
    const QColor color =
        active ? accent()
               : QGuiApplication::palette().color(QPalette::Active, QPalette::WindowText);
    QIcon icon;
    for (int size : {16, 18, 22, 24, 32, 48, 64}) {
        icon.addPixmap(glyph(color, size));
    }
    return icon;
}

} // namespace tolvane::BrandIcon
