#include "Tolvane/lock/OverlaySymbols.h"

#include <QPainterPathStroker>

namespace tolvane::OverlaySymbols {

namespace {

QRectF part(const QRectF& box, qreal x, qreal y, qreal w, qreal h) {
    return {box.left() + x * box.width(), box.top() + y * box.height(), w * box.width(),
            h * box.height()};
}

// A four-pointed star with concave sides, centred on `centre`, `size` from tip to tip.
QPainterPath star(QPointF centre, qreal size) {
    const qreal r = size / 2;
    const qreal pull = r * 0.16; // how far the sides bow in towards the centre
    const QPointF top = centre + QPointF(0, -r);
    const QPointF right = centre + QPointF(r, 0);
    const QPointF bottom = centre + QPointF(0, r);
    const QPointF left = centre + QPointF(-r, 0);
    QPainterPath path(top);
    path.quadTo(centre + QPointF(pull, -pull), right);
    path.quadTo(centre + QPointF(pull, pull), bottom);
    path.quadTo(centre + QPointF(-pull, pull), left);
    path.quadTo(centre + QPointF(-pull, -pull), top);
    path.closeSubpath();
    return path;
}

} // namespace

QSizeF keyboardSize(qreal fontPixels) {
    return {fontPixels * 1.46, fontPixels * 0.92};
}

// A rounded case with three rows of keys; the bottom row has a wide space bar in the middle.
QPainterPath keyboard(const QRectF& box) {
    const qreal line = box.height() * 0.085;
    const qreal corner = box.height() * 0.18;
    QPainterPath outer;
    outer.addRoundedRect(box, corner, corner);
    QPainterPath inner;
    inner.addRoundedRect(box.adjusted(line, line, -line, -line), corner - line, corner - line);
    QPainterPath path = outer.subtracted(inner);

    const qreal keyW = 0.095;
    const qreal keyH = 0.15;
    const qreal keyCorner = box.height() * 0.03;
    auto addKey = [&](qreal x, qreal y, qreal w) {
        path.addRoundedRect(part(box, x, y, w, keyH), keyCorner, keyCorner);
    };
    for (int i = 0; i < 7; ++i) {
        addKey(0.13 + i * 0.11, 0.22, keyW);
    }
    for (int i = 0; i < 6; ++i) {
        addKey(0.185 + i * 0.11, 0.43, keyW);
    }
    addKey(0.13, 0.64, keyW);
    addKey(0.24, 0.64, 0.52);
    addKey(0.775, 0.64, keyW);
    // The keys lie in the hole of the case and touch nothing: even-odd filling keeps both.
    path.setFillRule(Qt::OddEvenFill);
    return path;
}

QSizeF sparklesSize(qreal fontPixels) {
    return {fontPixels * 1.05, fontPixels * 1.15};
}

// One large star low on the right, a smaller one high on the left and a small one below it.
QPainterPath sparkles(const QRectF& box) {
    const qreal unit = std::min(box.width(), box.height());
    QPainterPath path;
    path.addPath(star(part(box, 0.28, 0.2, 0, 0).topLeft(), unit * 0.42));
    path.addPath(star(part(box, 0.62, 0.58, 0, 0).topLeft(), unit * 0.78));
    path.addPath(star(part(box, 0.2, 0.8, 0, 0).topLeft(), unit * 0.3));
    return path;
}

QSizeF openLockSize(qreal fontPixels) {
    return {fontPixels * 1.05, fontPixels * 1.2};
}

// A solid padlock body with a keyhole, its shackle swung up and off to the right.
QPainterPath openLock(const QRectF& box) {
    const QRectF body = part(box, 0, 0.46, 0.72, 0.54);
    const qreal corner = body.height() * 0.18;
    QPainterPath path;
    path.addRoundedRect(body, corner, corner);

    const qreal thickness = box.width() * 0.14;
    const qreal legLeft = box.left() + box.width() * 0.5;
    const qreal legRight = box.right() - thickness / 2;
    const qreal arcTop = box.top() + thickness / 2;
    const qreal span = legRight - legLeft;
    QPainterPath shackle(QPointF(legLeft, body.top() + 1));
    shackle.lineTo(legLeft, arcTop + span / 2);
    shackle.arcTo(QRectF(legLeft, arcTop, span, span), 180, -180);
    shackle.lineTo(legRight, box.top() + box.height() * 0.34);
    QPainterPathStroker stroker;
    stroker.setWidth(thickness);
    stroker.setCapStyle(Qt::RoundCap);
    path.addPath(stroker.createStroke(shackle));

    QPainterPath keyhole;
    const QPointF hole = body.center() - QPointF(0, body.height() * 0.08);
    const qreal holeR = body.height() * 0.13;
    keyhole.addEllipse(hole, holeR, holeR);
    keyhole.addRect(QRectF(hole.x() - holeR * 0.45, hole.y(), holeR * 0.9, body.height() * 0.28));
    path.setFillRule(Qt::WindingFill);
    return path.simplified().subtracted(keyhole.simplified());
}

} // namespace tolvane::OverlaySymbols
