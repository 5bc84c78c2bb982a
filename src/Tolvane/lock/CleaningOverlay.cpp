#include "Tolvane/lock/CleaningOverlay.h"

#include "Tolvane/lock/OverlayAccessibility.h"
#include "Tolvane/lock/OverlaySymbols.h"
#include "Tolvane/lock/UnlockButton.h"
#include "Tolvane/look/DesktopFonts.h"
#include "Tolvane/look/Theme.h"
#include "TolvaneCore/CleaningClock.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace tolvane {

namespace {

const QString heading = QStringLiteral("Keyboard locked for cleaning");
const QString instruction = QStringLiteral(
    "Wipe away. Key presses are ignored until you unlock with the mouse or trackpad.");

constexpr int stackSpacing = 22;
constexpr int textSpacing = 8;
constexpr int badgeDiameter = 120;
constexpr int instructionWidth = 380;
constexpr int columnPadding = 48;
constexpr int buttonTopPadding = 6;
constexpr qreal darkening = 0.35;
constexpr int keyboardPixels = 50;
constexpr int sparklesPixels = 22;
const QPointF sparklesOffset(42, -38);

QFont headingFont() {
    return DesktopFonts::rounded(26, QFont::DemiBold);
}
QFont instructionFont() {
    return DesktopFonts::ui(14);
}
QFont clockFont() {
    return DesktopFonts::monospaced(13, QFont::Medium);
}

constexpr int textFlags = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap;

QColor white(qreal opacity) {
    QColor colour(Qt::white);
    colour.setAlphaF(float(opacity));
    return colour;
}

QRect centredRow(int centreX, int top, QSize size) {
    return {centreX - size.width() / 2, top, size.width(), size.height()};
}

} // namespace

CleaningOverlay::CleaningOverlay(std::function<void()> onUnlock, QImage backdrop, QWidget* parent)
    : QWidget(parent), onUnlock(std::move(onUnlock)), backdrop(std::move(backdrop)),
      startedAt(std::chrono::steady_clock::now()), button(new UnlockButton(this)) {
    setFocusPolicy(Qt::StrongFocus);
    installOverlayAccessibility();
    connect(button, &UnlockButton::clicked, this, [this] {
        if (this->onUnlock) {
            this->onUnlock();
        }
    });
    // A precise timer: a coarse one may fire a little early and show the same second twice.
    clockTimer.setTimerType(Qt::PreciseTimer);
    clockTimer.setInterval(1000);
    connect(&clockTimer, &QTimer::timeout, this, [this] { update(clockRect); });
    clockTimer.start();
    layOutContent();
}

QString CleaningOverlay::clockText() const {
    const std::chrono::duration<double> since = std::chrono::steady_clock::now() - startedAt;
    return QString::fromStdString(elapsed(0, since.count()));
}

QList<CleaningOverlay::ShownText> CleaningOverlay::shownTexts() const {
    return {{heading, headingRect}, {instruction, instructionRect}, {clockText(), clockRect}};
}

// A centred column: badge, heading and instruction, clock, button; 22 px apart, with 48 px
// kept clear on each side. On a narrow screen the texts wrap to fit.
void CleaningOverlay::layOutContent() {
    const int room = std::max(1, width() - 2 * columnPadding);
    const QSize headingSize = QFontMetrics(headingFont())
                                  .boundingRect(QRect(0, 0, room, 100000), textFlags, heading)
                                  .size();
    const int instructionRoom = std::min(instructionWidth, room);
    const QSize instructionSize =
        QFontMetrics(instructionFont())
            .boundingRect(QRect(0, 0, instructionRoom, 100000), textFlags, instruction)
            .size();
    const QFontMetrics clockMetrics(clockFont());
    // Wide enough for a clock that has run for a year.
    const QSize clockSize(clockMetrics.horizontalAdvance(QStringLiteral("000000:00")),
                          clockMetrics.height());
    const QSize capsule = button->capsuleSize();

    const int textHeight = headingSize.height() + textSpacing + instructionSize.height();
    const int columnHeight = badgeDiameter + stackSpacing + textHeight + stackSpacing +
                             clockSize.height() + stackSpacing + buttonTopPadding +
                             capsule.height();
    const int centreX = width() / 2;
    int top = (height() - columnHeight) / 2;

    badgeRect = centredRow(centreX, top, QSize(badgeDiameter, badgeDiameter));
    top += badgeDiameter + stackSpacing;
    headingRect = centredRow(centreX, top, headingSize);
    top += headingSize.height() + textSpacing;
    instructionRect = centredRow(centreX, top, QSize(instructionRoom, instructionSize.height()));
    top += instructionSize.height() + stackSpacing;
    clockRect = centredRow(centreX, top, clockSize);
    top += clockSize.height() + stackSpacing + buttonTopPadding;

    const QRect capsuleRect = centredRow(centreX, top, capsule);
    button->move(capsuleRect.topLeft() - button->capsuleRect().topLeft().toPoint());
}

void CleaningOverlay::resizeEvent(QResizeEvent* event) {
    stretchedBackdrop = QPixmap();
    layOutContent();
    QWidget::resizeEvent(event);
}

void CleaningOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBackdrop(painter);
    paintBadge(painter);
    paintTexts(painter);
}

void CleaningOverlay::paintBackdrop(QPainter& painter) {
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    if (!backdrop.isNull()) {
        // Stretched once per size and scale, to the window's own pixels: the clock repaints
        // every second. The picture's own scale is not the window's (it is a grab, shrunk),
        // so it is drawn into the whole rectangle, never at its own size.
        const qreal ratio = devicePixelRatioF();
        const QSize pixels = (QSizeF(size()) * ratio).toSize();
        if (stretchedBackdrop.size() != pixels || stretchedBackdrop.devicePixelRatio() != ratio) {
            stretchedBackdrop = QPixmap::fromImage(
                backdrop.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
            stretchedBackdrop.setDevicePixelRatio(ratio);
        }
        painter.drawPixmap(rect(), stretchedBackdrop);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    QColor shade(Qt::black);
    shade.setAlphaF(float(darkening));
    painter.fillRect(rect(), shade);
    painter.restore();
}

void CleaningOverlay::paintBadge(QPainter& painter) {
    const ThemeGradient& gradient = Theme::cleanGradient();
    QPainterPath circle;
    circle.addEllipse(QRectF(badgeRect));
    painter.fillPath(circle, gradient.withOpacity(0.18).over(QRectF(badgeRect)));

    const QPointF centre = QRectF(badgeRect).center();
    QRectF keyboard(QPointF(), OverlaySymbols::keyboardSize(keyboardPixels));
    keyboard.moveCenter(centre);
    painter.fillPath(OverlaySymbols::keyboard(keyboard), gradient.over(keyboard));

    QRectF sparkles(QPointF(), OverlaySymbols::sparklesSize(sparklesPixels));
    sparkles.moveCenter(centre + sparklesOffset);
    painter.fillPath(OverlaySymbols::sparkles(sparkles), Qt::white);
}

void CleaningOverlay::paintTexts(QPainter& painter) {
    painter.setFont(headingFont());
    painter.setPen(Qt::white);
    painter.drawText(headingRect, textFlags, heading);

    painter.setFont(instructionFont());
    painter.setPen(white(0.75));
    painter.drawText(instructionRect, textFlags, instruction);

    painter.setFont(clockFont());
    painter.setPen(white(0.6));
    painter.drawText(clockRect, Qt::AlignCenter, clockText());
}

// Keys and shortcuts stop here: a shortcut override that is accepted turns the key into a
// plain key press for this widget, which drops it, so no application shortcut fires.
bool CleaningOverlay::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        event->accept();
        return true;
    default:
        return QWidget::event(event);
    }
}

// Nothing but the lock may take an overlay away; a close request from outside is refused so
// that the button stays reachable.
void CleaningOverlay::closeEvent(QCloseEvent* event) {
    if (event->spontaneous()) {
        event->ignore();
        return;
    }
    QWidget::closeEvent(event);
}

} // namespace tolvane
