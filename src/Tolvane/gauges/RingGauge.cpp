#include "Tolvane/gauges/RingGauge.h"

#include "Tolvane/gauges/GaugeAccessibility.h"
#include "Tolvane/look/Symbols.h"
#include "Tolvane/look/TabularDigits.h"
#include "Tolvane/look/Theme.h"
#include "Tolvane/menu/MenuPainting.h"

#include <QEasingCurve>
#include <QFontMetricsF>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <cmath>

namespace tolvane {

namespace {

// The round cap reaches half a line beyond the ring's frame; the widget keeps room for it.
constexpr qreal overhang = RingGauge::line / 2;
constexpr qreal ringToLabel = 6;
constexpr qreal labelToDetail = 1;
constexpr qreal iconToTitle = 4;
// A change of the ring's end shorter than this many pixels along the ring looks the same
// whether it eases or jumps, so it jumps: no frames are drawn for an invisible move.
constexpr qreal smallestEasedMove = 0.25;
// While easing, a frame is drawn only once the end has moved this far along the ring, so a
// small move costs a few frames instead of a full second's worth.
constexpr qreal smallestFrameStep = 1.0;
// QPainterPath::arcTo() approximates an arc by curves that depend on its whole sweep: a ring
// drawn so moves pixels far from its end whenever the end moves, outside the stretch a frame
// repaints. Built of curves of a fixed turn that share their ends exactly, only the curve
// holding the end changes.
constexpr int arcPieces = 32;

QPainterPath ringArc(const QRectF& frame, qreal end) {
    QPainterPath arc;
    arc.arcMoveTo(frame, 90);
    if (end <= 0) {
        arc.arcTo(frame, 90, 0); // the round cap alone, a dot at 12 o'clock
        return arc;
    }
    const qreal radius = frame.width() / 2;
    const auto point = [&](qreal turn) {
        return frame.center() +
               radius * QPointF(std::sin(2 * M_PI * turn), -std::cos(2 * M_PI * turn));
    };
    const auto tangent = [](qreal turn) {
        return QPointF(std::cos(2 * M_PI * turn), std::sin(2 * M_PI * turn));
    };
    arc = QPainterPath(point(0));
    for (int index = 0; index < arcPieces && index < end * arcPieces; ++index) {
        const qreal from = qreal(index) / arcPieces;
        const qreal to = std::min(end, qreal(index + 1) / arcPieces);
        const qreal handle = radius * 4 / 3 * std::tan(M_PI * (to - from) / 2);
        arc.cubicTo(point(from) + handle * tangent(from), point(to) - handle * tangent(to),
                    point(to));
    }
    return arc;
}

QEasingCurve easeInOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(QPointF(0.42, 0), QPointF(0.58, 1), QPointF(1, 1));
    return curve;
}

// The ring is drawn from 12 o'clock, which turns its gradient a quarter turn anticlockwise
// with it: a top-to-bottom gradient runs from the left side to the right.
QPointF quarterTurnAnticlockwise(QPointF unit) {
    return {unit.y(), 1 - unit.x()};
}

QFont titleFont(const QWidget& w) {
    return MenuPainting::font(w, 11, QFont::Medium);
}
QFont detailFont(const QWidget& w) {
    return MenuPainting::font(w, 9.5);
}
qreal labelHeight(const QWidget& w) {
    return std::max(Symbols::sideFor(11), MenuPainting::lineHeight(titleFont(w)));
}

} // namespace

RingGauge::RingGauge(QString title, QString icon, ThemeGradient gradient, QWidget* parent)
    : QWidget(parent), title(std::move(title)), icon(std::move(icon)), gradient(gradient),
      shown(gaugeValues(reading.fraction)), end(shown.ringEnd) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    installGaugeAccessibility();
    animation.setDuration(animationMs);
    animation.setUpdateInterval(frameMs);
    animation.setEasingCurve(easeInOut());
    connect(&animation, &QTimeLine::valueChanged, this, [this](qreal progress) {
        const qreal next = easeFrom + (easeTo - easeFrom) * progress;
        const bool last = progress >= 1;
        if (!last && std::abs(next - end) * M_PI * size < smallestFrameStep) {
            return;
        }
        const qreal previous = end;
        end = last ? easeTo : next;
        update(movedPiece(previous, end));
    });
}

int RingGauge::contentHeight(const QWidget& widget) {
    return int(std::ceil(size + ringToLabel + labelHeight(widget) + labelToDetail +
                         MenuPainting::lineHeight(detailFont(widget))));
}

QRectF RingGauge::ringFrame() const {
    return {std::round((width() - size) / 2), overhang, size, size};
}

QRect RingGauge::movedPiece(qreal from, qreal to) const {
    // Only the stretch of ring from the start of the nearer end's curve to the farther end
    // changes; the gradient is fixed to the frame, so repainting that stretch alone draws the
    // same pixels as a whole repaint and keeps each frame of the ease small.
    const QRectF frame = ringFrame();
    const qreal reach = overhang + 2;
    if (std::abs(to - from) > 0.125) {
        return frame.adjusted(-reach, -reach, reach, reach).toAlignedRect();
    }
    const qreal radius = frame.width() / 2;
    const qreal start = std::floor(std::min(from, to) * arcPieces) / arcPieces;
    const qreal stop = std::max(from, to);
    QPolygonF stretch;
    for (int step = 0; step <= 4; ++step) {
        const qreal turn = (start + (stop - start) * step / 4) * 2 * M_PI;
        stretch << frame.center() + radius * QPointF(std::sin(turn), -std::cos(turn));
    }
    // Not QRectF::united(): it takes a rectangle of no size for none, and drops it.
    return stretch.boundingRect().adjusted(-reach, -reach, reach, reach).toAlignedRect();
}

bool RingGauge::isAnimating() const {
    return animation.state() == QTimeLine::Running;
}

void RingGauge::setReading(const SystemStats::Reading& next) {
    const GaugeValues values = gaugeValues(next.fraction);
    const bool textChanged = next.detail != reading.detail || values.percent != shown.percent ||
                             values.warning != shown.warning;
    const bool fractionChanged = values.clamped != shown.clamped;
    reading = next;
    shown = values;
    setAccessibleName(QStringLiteral("%1 %2 percent, %3")
                          .arg(title)
                          .arg(values.percent)
                          .arg(QString::fromStdString(reading.detail)));
    if (fractionChanged) {
        animation.stop();
        const qreal move = std::abs(values.ringEnd - end) * M_PI * size;
        if (isVisible() && move >= smallestEasedMove) {
            easeFrom = end;
            easeTo = values.ringEnd;
            animation.start();
        } else {
            end = values.ringEnd;
            update();
        }
    }
    if (textChanged) {
        update();
    }
}

void RingGauge::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = ringFrame();
    const QRectF dirty = event->rect();
    paintRing(painter, frame);
    // A frame of the ease repaints a stretch of the ring alone: the texts, whose shaping costs
    // more than the ring, are laid out only when their area is to be painted.
    if (dirty.intersects(frame.adjusted(line, line, -line, -line))) {
        paintPercent(painter, frame);
    }
    const qreal labelsTop = frame.bottom() + ringToLabel;
    if (dirty.bottom() >= labelsTop) {
        paintLabels(painter, labelsTop);
    }
}

void RingGauge::paintRing(QPainter& painter, const QRectF& frame) const {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(MenuPainting::primary(*this, 0.09), line, Qt::SolidLine, Qt::FlatCap));
    painter.drawEllipse(frame);

    const ThemeGradient& style = shown.warning ? Theme::warn() : gradient;
    const ThemeGradient turned{style.first, style.second, quarterTurnAnticlockwise(style.start),
                               quarterTurnAnticlockwise(style.end)};
    const QPainterPath arc = ringArc(frame, end);
    painter.strokePath(
        arc, QPen(QBrush(turned.over(frame)), line, Qt::SolidLine, Qt::RoundCap, Qt::MiterJoin));
}

void RingGauge::paintPercent(QPainter& painter, const QRectF& frame) const {
    const QFont number = MenuPainting::font(*this, 16, QFont::DemiBold, true);
    const QFont sign = MenuPainting::font(*this, 9, QFont::DemiBold, true);
    const QString digits = QString::number(shown.percent);
    const QString percent = QStringLiteral("%");
    const QFontMetricsF numberMetrics(number);
    const qreal digitsWidth = TabularDigits::width(digits, number);
    const qreal left =
        frame.center().x() - (digitsWidth + MenuPainting::textWidth(percent, sign)) / 2;
    const qreal baseline = frame.center().y() - numberMetrics.height() / 2 + numberMetrics.ascent();
    painter.setPen(MenuPainting::primary(*this));
    TabularDigits::draw(painter, digits, QPointF(left, baseline), number);
    painter.setFont(sign);
    painter.setPen(MenuPainting::secondary(*this));
    painter.drawText(QPointF(left + digitsWidth, baseline), percent);
}

void RingGauge::paintLabels(QPainter& painter, qreal top) const {
    const QFont font = titleFont(*this);
    const qreal side = Symbols::sideFor(11);
    const qreal labelLine = labelHeight(*this);
    const qreal labelWidth = side + iconToTitle + MenuPainting::textWidth(title, font);
    const qreal left = std::round((width() - labelWidth) / 2);
    const QColor color = MenuPainting::primary(*this);
    Symbols::draw(painter, icon, QRectF(left, top + (labelLine - side) / 2, side, side), color);
    MenuPainting::drawLine(painter, title, left + side + iconToTitle,
                           top + (labelLine - MenuPainting::lineHeight(font)) / 2, font, color);

    const QFont small = detailFont(*this);
    const QString detail =
        TabularDigits::elided(QString::fromStdString(reading.detail), small, width());
    painter.setPen(MenuPainting::secondary(*this));
    TabularDigits::draw(painter, detail,
                        QPointF((width() - TabularDigits::width(detail, small)) / 2,
                                top + labelLine + labelToDetail + QFontMetricsF(small).ascent()),
                        small);
}

} // namespace tolvane
