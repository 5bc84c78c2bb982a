#include "Tolvane/menu/MenuRow.h"

#include "Tolvane/menu/MenuPainting.h"
#include "Tolvane/menu/RowAccessibility.h"

#include <QAction>
#include <QMenu>
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

bool MenuRow::isMenusActiveRow() const {
    const auto* menu = qobject_cast<const QMenu*>(parentWidget());
    const auto* active = menu ? qobject_cast<const QWidgetAction*>(menu->activeAction()) : nullptr;
    return active && active->defaultWidget() == this;
}

// A line of text that a menu shows but that does nothing.
QAction* textItem(const QString& text, QObject* parent) {
    auto* item = new QAction(text, parent);
    item->setEnabled(false);
    return item;
}

QWidgetAction* hostedMenuItem(MenuRow* view, QObject* parent) {
    installRowAccessibility();
    auto* item = new QWidgetAction(parent);
    view->resize(view->sizeHint());
    item->setDefaultWidget(view);
    QObject::connect(item, &QAction::triggered, view, [view] { view->activate(); });
    return item;
}

} // namespace tolvane
