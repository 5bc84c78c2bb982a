#include "Tolvane/menu/CleanKeyboardRow.h"

#include "Tolvane/look/Symbols.h"
#include "Tolvane/look/Theme.h"
#include "Tolvane/menu/MenuPainting.h"

#include <QAction>
#include <QMouseEvent>
#include <QPainter>

namespace tolvane {

namespace {

constexpr qreal marginHorizontal = 10;
constexpr qreal marginVertical = 4;
constexpr qreal padHorizontal = 10;
constexpr qreal padVertical = 8;
constexpr qreal discSide = 26;
constexpr qreal discToText = 10;
constexpr qreal disabledOpacity = 0.55;

QString explanation(bool enabled) {
    return enabled ? QStringLiteral("Locks keys, unlock with the mouse")
                   : QStringLiteral("Needs input access");
}

QFont titleFont(const QWidget& w) {
    return MenuPainting::font(w, 12.5, QFont::DemiBold);
}
QFont explanationFont(const QWidget& w) {
    return MenuPainting::font(w, 10.5);
}
qreal textBlockHeight(const QWidget& w) {
    return MenuPainting::lineHeight(titleFont(w)) + 1 +
           MenuPainting::lineHeight(explanationFont(w));
}

} // namespace

CleanKeyboardRow::CleanKeyboardRow(bool enabled, std::function<void()> action, QWidget* parent)
    : MenuRow(parent), enabled(enabled), action(std::move(action)) {
    setMouseTracking(true);
    setAccessibleName(QStringLiteral("Clean Keyboard"));
    setAccessibleDescription(explanation(enabled));
}

QRectF CleanKeyboardRow::buttonRect() const {
    return frame().adjusted(marginHorizontal, marginVertical, -marginHorizontal, -marginVertical);
}

int CleanKeyboardRow::contentHeight() const {
    const qreal row = std::max(discSide, textBlockHeight(*this));
    return int(std::ceil(row + 2 * (padVertical + marginVertical)));
}

void CleanKeyboardRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(enabled ? 1.0 : disabledOpacity);

    const QRectF card = buttonRect();
    QColor fill = MenuPainting::primary(*this, 0.05);
    // The pointer over the card, or the menu's highlight brought here by the arrows.
    if ((hovering || isMenusActiveRow()) && enabled) {
        fill = Theme::cleanStart();
        fill.setAlphaF(0.14f);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(card, 10, 10);

    const QRectF content = card.adjusted(padHorizontal, padVertical, -padHorizontal, -padVertical);
    const qreal middle = content.center().y();
    const QRectF disc(content.left(), middle - discSide / 2, discSide, discSide);
    painter.setBrush(Theme::cleanGradient().over(disc));
    painter.drawEllipse(disc);
    const qreal keySide = Symbols::sideFor(11);
    Symbols::draw(painter, QStringLiteral("keyboard"),
                  QRectF(disc.center().x() - keySide / 2, middle - keySide / 2, keySide, keySide),
                  Qt::white);

    const QFont title = titleFont(*this);
    const qreal textLeft = disc.right() + discToText;
    const qreal top = middle - textBlockHeight(*this) / 2;
    MenuPainting::drawLine(painter, QStringLiteral("Clean Keyboard"), textLeft, top, title,
                           MenuPainting::primary(*this));
    MenuPainting::drawLine(painter, explanation(enabled), textLeft,
                           top + MenuPainting::lineHeight(title) + 1, explanationFont(*this),
                           MenuPainting::secondary(*this));

    const qreal chevronSide = Symbols::sideFor(10);
    Symbols::draw(
        painter, QStringLiteral("chevron.right"),
        QRectF(content.right() - chevronSide, middle - chevronSide / 2, chevronSide, chevronSide),
        MenuPainting::tertiary(*this));
}

// Hover follows the pointer over the card whether or not the row is enabled; only the fill
// looks at `enabled`.
void CleanKeyboardRow::setHovering(bool value) {
    if (hovering != value) {
        hovering = value;
        update();
    }
}

void CleanKeyboardRow::mouseMoveEvent(QMouseEvent* event) {
    setHovering(buttonRect().contains(event->position()));
    event->accept();
}

void CleanKeyboardRow::leaveEvent(QEvent*) {
    setHovering(false);
}

void CleanKeyboardRow::mousePressEvent(QMouseEvent* event) {
    event->accept();
    setHovering(buttonRect().contains(event->position()));
    pressed = enabled && event->button() == Qt::LeftButton && hovering;
}

// A click counts when it is pressed and released on the card of an enabled row.
void CleanKeyboardRow::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    const bool completed =
        pressed && event->button() == Qt::LeftButton && buttonRect().contains(event->position());
    pressed = false;
    if (completed) {
        activate();
    }
}

void CleanKeyboardRow::activate() {
    if (acts()) {
        action();
    }
}

QAction* CleanKeyboardRow::plainItem(QObject* parent) const {
    auto* item = new QAction(QStringLiteral("Clean Keyboard"), parent);
    item->setEnabled(enabled);
    QObject::connect(item, &QAction::triggered, item, [run = action] {
        if (run) {
            run();
        }
    });
    return item;
}

} // namespace tolvane
