#include "Tolvane/gauges/StatsView.h"

#include "Tolvane/gauges/RingGauge.h"
#include "Tolvane/look/Theme.h"
#include "Tolvane/menu/MenuPainting.h"

#include <QPaintEngine>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

namespace tolvane {

namespace {

constexpr qreal outerHorizontal = 10;
constexpr qreal outerVertical = 4;
constexpr qreal innerVertical = 12;

} // namespace

StatsView::StatsView(SystemStats& source, QWidget* parent) : MenuRow(parent), stats(&source) {
    gauges[0] = new RingGauge(QStringLiteral("CPU"), QStringLiteral("cpu"), Theme::cpu(), this);
    gauges[1] = new RingGauge(QStringLiteral("Memory"), QStringLiteral("memorychip"),
                              Theme::memory(), this);
    gauges[2] = new RingGauge(QStringLiteral("Storage"), QStringLiteral("internaldrive"),
                              Theme::storage(), this);
    refresh();
    // The notice comes before the new value is stored, and up to three come with one sample:
    // they are gathered into one refresh once the sample is done.
    connect(&source, &SystemStats::willChange, this, [this] {
        if (!refreshQueued) {
            refreshQueued = true;
            QMetaObject::invokeMethod(this, &StatsView::refresh, Qt::QueuedConnection);
        }
    });
}

void StatsView::refresh() {
    refreshQueued = false;
    if (!stats) {
        return;
    }
    gauges[0]->setReading(stats->cpu());
    gauges[1]->setReading(stats->memory());
    gauges[2]->setReading(stats->storage());
    // The card reads as its three gauges, for a screen reader that reads a menu item whole.
    setAccessibleName(gauges[0]->accessibleName() + QStringLiteral("; ") +
                      gauges[1]->accessibleName() + QStringLiteral("; ") +
                      gauges[2]->accessibleName());
}

int StatsView::contentHeight() const {
    return int(std::ceil(RingGauge::contentHeight(*this) + 2 * (innerVertical + outerVertical)));
}

void StatsView::resizeEvent(QResizeEvent*) {
    const QRectF card =
        frame().adjusted(outerHorizontal, outerVertical, -outerHorizontal, -outerVertical);
    const qreal third = card.width() / 3;
    for (int index = 0; index < 3; ++index) {
        const qreal left = card.left() + index * third;
        const int x = int(std::round(left));
        // The ring's round cap may reach above the gauge's content; the gauge keeps room.
        const int overhang = int(RingGauge::line / 2);
        gauges[index]->setGeometry(x, int(card.top() + innerVertical) - overhang,
                                   int(std::round(left + third)) - x,
                                   RingGauge::contentHeight(*this) + overhang);
    }
}

void StatsView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        card = QPixmap();
    }
    MenuRow::changeEvent(event);
}

// Each frame of a ring's ease repaints a piece of this view beneath the ring. Filling the
// card's rounded shape anew for every piece costs more than the piece: Qt splits a fill of
// that many spans across its thread pool, waking two threads per frame. The card is drawn
// once and each piece is copied from it.
void StatsView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    // The device painted on: the window's backing store, or an image when rendered.
    const QPaintDevice* target = painter.paintEngine()->paintDevice();
    const qreal ratio = target ? target->devicePixelRatioF() : devicePixelRatioF();
    if (card.isNull() || card.size() != size() * ratio) {
        card = QPixmap(size() * ratio);
        card.setDevicePixelRatio(ratio);
        card.fill(Qt::transparent);
        paintCard(card);
    }
    for (const QRect& piece : event->region()) {
        painter.drawPixmap(piece, card,
                           QRectF(QPointF(piece.topLeft()) * ratio, QSizeF(piece.size()) * ratio));
    }
}

void StatsView::paintCard(QPaintDevice& device) const {
    QPainter painter(&device);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF shape =
        frame().adjusted(outerHorizontal, outerVertical, -outerHorizontal, -outerVertical);
    painter.setPen(Qt::NoPen);
    painter.setBrush(MenuPainting::primary(*this, 0.05));
    painter.drawRoundedRect(shape, 12, 12);
    // The hairline lies wholly inside the card's edge.
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(MenuPainting::primary(*this, 0.08), 0.5));
    painter.drawRoundedRect(shape.adjusted(0.25, 0.25, -0.25, -0.25), 11.75, 11.75);
}

} // namespace tolvane
