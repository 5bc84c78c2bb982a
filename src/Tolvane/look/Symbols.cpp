#include "Tolvane/look/Symbols.h"

#include <QHash>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>

// Resources of a static library must be registered by hand, from the global namespace.
static void registerSymbolResources() {
    Q_INIT_RESOURCE(symbols);
}

namespace tolvane::Symbols {

namespace {

QSvgRenderer* renderer(const QString& name) {
    static const bool registered = (registerSymbolResources(), true);
    (void)registered;
    // Kept to the end of the process; a renderer is a QObject and must not outlive the
    // application in a static destructor.
    static auto* loaded = new QHash<QString, QSvgRenderer*>();
    auto found = loaded->find(name);
    if (found == loaded->end()) {
        auto* svg = new QSvgRenderer(QStringLiteral(":/symbols/%1.svg").arg(name));
        if (!svg->isValid()) {
            delete svg;
            svg = nullptr;
        }
        found = loaded->insert(name, svg);
    }
    return *found;
}

// The symbol in one colour, `side` device pixels square, cached: the stats row repaints it
// with every sample.
QPixmap tinted(const QString& name, int side, const QColor& color) {
    const QString key = QStringLiteral("tolvane-symbol/%1/%2/%3")
                            .arg(name)
                            .arg(side)
                            .arg(color.rgba(), 8, 16, QLatin1Char('0'));
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) {
        return pixmap;
    }
    QSvgRenderer* svg = renderer(name);
    if (!svg || side <= 0) {
        return {};
    }
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        svg->render(&painter, QRectF(0, 0, side, side));
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
    }
    pixmap = QPixmap::fromImage(image);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

// Draws the symbol afresh for each size and mode the menu asks for, so it stays sharp at any
// scale.
class SymbolIconEngine final : public QIconEngine {
public:
    SymbolIconEngine(QString name, QColor normal, QColor selected)
        : name(std::move(name)), normal(normal), selected(selected) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        QColor color = mode == QIcon::Selected ? selected : normal;
        if (mode == QIcon::Disabled) {
            color.setAlphaF(color.alphaF() * 0.4f);
        }
        draw(*painter, name, rect, color);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        paint(&painter, QRect(QPoint(), size), mode, state);
        painter.end();
        return QPixmap::fromImage(image);
    }

    QIconEngine* clone() const override { return new SymbolIconEngine(name, normal, selected); }

private:
    QString name;
    QColor normal;
    QColor selected;
};

} // namespace

void draw(QPainter& painter, const QString& name, const QRectF& box, const QColor& color) {
    const qreal side = std::min(box.width(), box.height());
    const qreal scale = painter.device() ? painter.device()->devicePixelRatioF() : 1.0;
    const QPixmap pixmap = tinted(name, int(std::ceil(side * scale)), color);
    if (pixmap.isNull()) {
        return;
    }
    const QRectF target(box.center().x() - side / 2, box.center().y() - side / 2, side, side);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
    painter.restore();
}

qreal sideFor(qreal pixelSize) {
    return std::round(pixelSize * 1.3);
}

QIcon icon(const QString& name, const QColor& normal, const QColor& selected) {
    return QIcon(new SymbolIconEngine(name, normal, selected));
}

} // namespace tolvane::Symbols
