#include "Tolvane/menu/MenuRow.h"

#include "Tolvane/menu/MenuPainting.h"

#include <QAction>
#include <QMouseEvent>
#include <QWidgetAction>

namespace tolvane {

MenuRow::MenuRow(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAutoFillBackground(false);
    setMinimumWidth(MenuPainting::rowWidth);
}

QSize MenuRow::sizeHint() const {
    return {MenuPainting::rowWidth, contentHeight()};
}

QRectF MenuRow::frame() const {
    const qreal left = std::max(0.0, (width() - MenuPainting::rowWidth) / 2.0);
    return {std::floor(left), 0, qreal(MenuPainting::rowWidth), qreal(height())};
}

void MenuRow::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void MenuRow::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}

void MenuRow::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
}

QAction* MenuRow::plainItem(QObject*) const {
    return nullptr;
}

// A line of text that a menu shows but that does nothing.
QAction* textItem(const QString& text, QObject* parent) {
    auto* item = new QAction(text, parent);
    item->setEnabled(false);
    return item;
}

QWidgetAction* hostedMenuItem(MenuRow* view, QObject* parent) {
    auto* item = new QWidgetAction(parent);
    view->resize(view->sizeHint());
    item->setDefaultWidget(view);
    return item;
}

} // namespace tolvane
