#include "Tolvane/menu/SectionCaption.h"

#include "Tolvane/menu/MenuPainting.h"

#include <QAction>
#include <QPainter>

#include <cmath>

namespace tolvane {

SectionCaption::SectionCaption(QString text, QWidget* parent)
    : MenuRow(parent), text(std::move(text)) {
    // In ordinary case: a screen reader would spell the capitals out.
    setAccessibleName(this->text);
}

QAction* SectionCaption::plainItem(QObject* parent) const {
    return textItem(text, parent);
}

namespace {

QFont captionFont(const QWidget& w) {
    QFont font = MenuPainting::font(w, 10, QFont::DemiBold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.6);
    return font;
}

} // namespace

int SectionCaption::contentHeight() const {
    return int(std::ceil(MenuPainting::lineHeight(captionFont(*this)) + 4));
}

void SectionCaption::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    MenuPainting::drawLine(painter, text.toUpper(), frame().left() + 14, 4, captionFont(*this),
                           MenuPainting::secondary(*this));
}

} // namespace tolvane
