#include "Tolvane/lock/UnlockButton.h"

#include "Tolvane/lock/ImageBlur.h"
#include "Tolvane/lock/OverlaySymbols.h"
#include "Tolvane/look/DesktopFonts.h"
#include "Tolvane/look/Theme.h"

#include <QEasingCurve>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace tolvane {

namespace {

const QString label = QStringLiteral("Unlock keyboard");
constexpr int labelPixels = 15;
constexpr int iconGap = 8;
constexpr int paddingH = 26;
constexpr int paddingV = 13;
// Room around the capsule for the widest glow (radius 18) and the 4 % growth on hover.
constexpr int glowMargin = 32;

QFont labelFont() {
    return DesktopFonts::ui(labelPixels, QFont::DemiBold);
}

QPainterPath capsule(const QRectF& rect) {
    QPainterPath path;
    const qreal radius = rect.height() / 2;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

// Ease-out as the cubic curve (0, 0) (0.58, 1) (1, 1).
QEasingCurve easeOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(QPointF(0, 0), QPointF(0.58, 1), QPointF(1, 1));
    return curve;
}

} // namespace

UnlockButton::UnlockButton(QWidget* parent) : QAbstractButton(parent) {
    setText(label);
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true);
    setCursor(Qt::PointingHandCursor);
    resize(capsuleSize() + QSize(2 * glowMargin, 2 * glowMargin));
    hoverAnimation.setDuration(150);
    hoverAnimation.setEasingCurve(easeOut());
    connect(&hoverAnimation, &QVariantAnimation::valueChanged, this, [this](const QVariant& v) {
        hoverProgress = v.toReal();
        update();
    });
}

QSize UnlockButton::capsuleSize() const {
    const QFontMetrics metrics(labelFont());
    const QSizeF icon = OverlaySymbols::openLockSize(labelPixels);
    const int contentW = int(std::ceil(icon.width())) + iconGap + metrics.horizontalAdvance(label);
    const int contentH = std::max(metrics.height(), int(std::ceil(icon.height())));
    return {contentW + 2 * paddingH, contentH + 2 * paddingV};
}

QRectF UnlockButton::capsuleRect() const {
    return QRectF(QPointF(glowMargin, glowMargin), QSizeF(capsuleSize()));
}

UnlockButton::Look UnlockButton::lookAt(qreal p) {
    return {0.35 + (0.6 - 0.35) * p, 10 + (18 - 10) * p, 1.0 + 0.04 * p};
}

bool UnlockButton::hitButton(const QPoint& pos) const {
    return capsule(capsuleRect()).contains(QPointF(pos));
}

void UnlockButton::mouseMoveEvent(QMouseEvent* event) {
    setHovering(hitButton(event->position().toPoint()));
    QAbstractButton::mouseMoveEvent(event);
}

void UnlockButton::leaveEvent(QEvent* event) {
    setHovering(false);
    QAbstractButton::leaveEvent(event);
}

void UnlockButton::keyPressEvent(QKeyEvent* event) {
    event->accept();
}

void UnlockButton::keyReleaseEvent(QKeyEvent* event) {
    event->accept();
}

void UnlockButton::setHovering(bool hovering) {
    if (hovering == isHovering) {
        return;
    }
    isHovering = hovering;
    hoverAnimation.stop();
    hoverAnimation.setStartValue(hoverProgress);
    hoverAnimation.setEndValue(hovering ? 1.0 : 0.0);
    hoverAnimation.start();
}

// The capsule's silhouette in the glow colour, blurred. The glow is centred under the
// capsule (no offset); its radius is taken as two standard deviations of the blur.
QImage UnlockButton::glowImage(const QRectF& scaled, const Look& look) const {
    QImage image(size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor colour = Theme::cleanStart();
    colour.setAlphaF(float(look.shadowOpacity));
    painter.fillPath(capsule(scaled), colour);
    painter.end();
    return gaussianBlurred(image, look.shadowRadius / 2);
}

void UnlockButton::paintEvent(QPaintEvent*) {
    const Look look = lookAt(hoverProgress);
    const QRectF rest = capsuleRect();
    QRectF scaled(0, 0, rest.width() * look.scale, rest.height() * look.scale);
    scaled.moveCenter(rest.center());

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (glowProgress != hoverProgress || glow.size() != size()) {
        glow = glowImage(scaled, look);
        glowProgress = hoverProgress;
    }
    painter.drawImage(0, 0, glow);
    painter.fillPath(capsule(scaled), Theme::cleanGradient().over(scaled));

    // The label, scaled with the capsule about its centre.
    painter.translate(rest.center());
    painter.scale(look.scale, look.scale);
    painter.translate(-rest.center());
    const QFont font = labelFont();
    const QFontMetrics metrics(font);
    const QSizeF iconSize = OverlaySymbols::openLockSize(labelPixels);
    const qreal contentW = std::ceil(iconSize.width()) + iconGap + metrics.horizontalAdvance(label);
    const qreal left = rest.center().x() - contentW / 2;
    const QRectF icon(QPointF(left, rest.center().y() - iconSize.height() / 2), iconSize);
    painter.fillPath(OverlaySymbols::openLock(icon), Qt::white);
    painter.setFont(font);
    painter.setPen(Qt::white);
    const QRectF text(left + std::ceil(iconSize.width()) + iconGap, rest.top(),
                      metrics.horizontalAdvance(label), rest.height());
    painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter, label);
}

} // namespace tolvane
