#include "Tolvane/look/BrandIcon.h"

#include "Tolvane/look/Theme.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

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

namespace {

// The glyph at whatever size is asked for, with the name of a themed icon of the same glyph.
class GlyphEngine final : public QIconEngine {
public:
    GlyphEngine(QColor ink, QString themeName) : ink(ink), themeName(std::move(themeName)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const qreal side = std::min(rect.width(), rect.height());
        painter->save();
        painter->translate(rect.x() + (rect.width() - side) / 2,
                           rect.y() + (rect.height() - side) / 2);
        painter->scale(side / canvas, side / canvas);
        drawTolvane(*painter, ink);
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
        return {{16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}, {64, 64}};
    }
    QString iconName() override { return themeName; }
    QString key() const override { return QStringLiteral("tolvane-glyph"); }
    QIconEngine* clone() const override { return new GlyphEngine(ink, themeName); }

private:
    QColor ink;
    QString themeName;
};

} // namespace

QIcon menuBar(bool active, const QColor& ink) {
    QString name = active ? QStringLiteral("tolvane-mouse") : QStringLiteral("tolvane-symbolic");
    if (!QIcon::hasThemeIcon(name)) {
        name.clear();
    }
    return QIcon(new GlyphEngine(active ? Theme::cobalt() : ink, name));
}

// Black stands out more than white exactly where the relative luminance exceeds 0.179.
QColor inkOn(const QColor& background) {
    const auto linear = [](float c) {
        return c <= 0.04045f ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    const QColor rgb = background.toRgb();
    const double luminance =
        0.2126 * linear(rgb.redF()) + 0.7152 * linear(rgb.greenF()) + 0.0722 * linear(rgb.blueF());
    return luminance > 0.179 ? QColor(Qt::black) : QColor(Qt::white);
}

QColor neutralInk() {
    return {0x76, 0x76, 0x76};
}

} // namespace tolvane::BrandIcon
