#pragma once

#include "Tolvane/gauges/SystemStats.h"
#include "Tolvane/look/Theme.h"
#include "TolvaneCore/GaugeValues.h"

#include <QString>
#include <QTimeLine>
#include <QWidget>

namespace tolvane {

// One circular gauge: a ring over a track around the percentage, the titled icon and a detail
// line below. The ring's end eases to each new value over 0.6 s.
class RingGauge final : public QWidget {
public:
    RingGauge(QString title, QString icon, ThemeGradient gradient, QWidget* parent = nullptr);

    void setReading(const SystemStats::Reading& reading);
    const GaugeValues& values() const { return shown; }
    qreal ringEnd() const { return end; }
    bool isAnimating() const;
    // The ease's clock; a test moves it with setCurrentTime() instead of waiting.
    QTimeLine& easeClock() { return animation; }

    static constexpr qreal size = 58;
    static constexpr qreal line = 6;
    static constexpr int animationMs = 600;
    // Frames of the ease; twenty-five a second look smooth on a ring this small.
    static constexpr int frameMs = 40;
    static int contentHeight(const QWidget& widget);

    // Where the ring's square frame stands in the gauge.
    QRectF ringFrame() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRect movedPiece(qreal from, qreal to) const;
    void paintRing(QPainter& painter, const QRectF& frame) const;
    void paintPercent(QPainter& painter, const QRectF& frame) const;
    void paintLabels(QPainter& painter, qreal top) const;

    QString title;
    QString icon;
    ThemeGradient gradient;
    SystemStats::Reading reading;
    GaugeValues shown;
    qreal end;
    qreal easeFrom = 0;
    qreal easeTo = 0;
    QTimeLine animation;
};

} // namespace tolvane
