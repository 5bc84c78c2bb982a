#include "Tolvane/menu/HeaderView.h"

#include "Tolvane/look/BrandIcon.h"
#include "Tolvane/look/Symbols.h"
#include "Tolvane/look/Theme.h"
#include "Tolvane/menu/MenuPainting.h"

#include <QAction>
#include <QPainter>
#include <QPainterPath>

namespace tolvane {

namespace {

constexpr qreal inset = 14;
constexpr qreal padTop = 8;
constexpr qreal padBottom = 4;
constexpr qreal badgeSide = 30;
constexpr qreal badgeToText = 10;

QString subtitle(bool reversed) {
    return reversed ? QStringLiteral("Scrolling reversed") : QStringLiteral("Natural scrolling");
}

// The pill at the trailing edge: a symbol and a word on a capsule.
struct Chip {
    QString icon;
    QString text;
    bool active;

    static Chip forMouse(bool connected) {
        return connected ? Chip{QStringLiteral("computermouse.fill"), QStringLiteral("Mouse"), true}
                         : Chip{QStringLiteral("computermouse"), QStringLiteral("No mouse"), false};
    }

    QFont textFont(const QWidget& w) const { return MenuPainting::font(w, 10, QFont::Medium); }
    qreal iconSide() const { return Symbols::sideFor(9); }

    QSizeF size(const QWidget& w) const {
        const QFont font = textFont(w);
        const qreal contentWidth = iconSide() + 4 + MenuPainting::textWidth(text, font);
        const qreal contentHeight = std::max(iconSide(), MenuPainting::lineHeight(font));
        return {std::ceil(contentWidth) + 2 * 7, std::ceil(contentHeight) + 2 * 3};
    }

    void paint(QPainter& painter, const QWidget& w, const QRectF& rect) const {
        const QColor foreground = active ? Theme::cobalt() : MenuPainting::secondary(w);
        QColor fill = active ? Theme::cobalt() : MenuPainting::primary(w, 0.07);
        if (active) {
            fill.setAlphaF(0.14f);
        }
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(rect, rect.height() / 2, rect.height() / 2);

        const QFont font = textFont(w);
        const QRectF content = rect.adjusted(7, 3, -7, -3);
        const qreal side = iconSide();
        Symbols::draw(painter, icon,
                      QRectF(content.left(), content.center().y() - side / 2, side, side),
                      foreground);
        MenuPainting::drawLine(painter, text, content.left() + side + 4,
                               content.center().y() - MenuPainting::lineHeight(font) / 2, font,
                               foreground);
    }
};

} // namespace

HeaderView::HeaderView(bool reversed, bool mouseConnected, QWidget* parent)
    : MenuRow(parent), reversed(reversed), mouseConnected(mouseConnected) {
    setAccessibleName(QStringLiteral("Tolvane"));
    setAccessibleDescription(subtitle(reversed) + QStringLiteral(", ") +
                             Chip::forMouse(mouseConnected).text);
}

QAction* HeaderView::plainItem(QObject* parent) const {
    return textItem(subtitle(reversed) + QStringLiteral(" \u00B7 ") +
                        Chip::forMouse(mouseConnected).text,
                    parent);
}

int HeaderView::contentHeight() const {
    const qreal titleBlock =
        MenuPainting::lineHeight(MenuPainting::font(*this, 13, QFont::DemiBold)) + 1 +
        MenuPainting::lineHeight(MenuPainting::font(*this, 11));
    const qreal row =
        std::max({badgeSide, titleBlock, Chip::forMouse(mouseConnected).size(*this).height()});
    return int(std::ceil(row + padTop + padBottom));
}

void HeaderView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF content = frame().adjusted(inset, padTop, -inset, -padBottom);
    const qreal middle = content.center().y();

    const QRectF badge(content.left(), middle - badgeSide / 2, badgeSide, badgeSide);
    const ThemeGradient badgeFill{Theme::cobalt(), Theme::violet(), UnitPoint::topLeading,
                                  UnitPoint::bottomTrailing};
    painter.setPen(Qt::NoPen);
    painter.setBrush(badgeFill.over(badge));
    painter.drawRoundedRect(badge, 8, 8);
    painter.save();
    painter.translate(badge.center() - QPointF(9, 9));
    BrandIcon::drawTolvane(painter, Qt::white);
    painter.restore();

    const QFont titleFont = MenuPainting::font(*this, 13, QFont::DemiBold);
    const QFont subtitleFont = MenuPainting::font(*this, 11);
    const qreal blockHeight =
        MenuPainting::lineHeight(titleFont) + 1 + MenuPainting::lineHeight(subtitleFont);
    const qreal textLeft = badge.right() + badgeToText;
    const qreal top = middle - blockHeight / 2;
    MenuPainting::drawLine(painter, QStringLiteral("Tolvane"), textLeft, top, titleFont,
                           MenuPainting::primary(*this));
    MenuPainting::drawLine(painter, subtitle(reversed), textLeft,
                           top + MenuPainting::lineHeight(titleFont) + 1, subtitleFont,
                           MenuPainting::secondary(*this));

    const Chip chip = Chip::forMouse(mouseConnected);
    const QSizeF chipSize = chip.size(*this);
    chip.paint(painter, *this,
               QRectF(content.right() - chipSize.width(), middle - chipSize.height() / 2,
                      chipSize.width(), chipSize.height()));
}

} // namespace tolvane
