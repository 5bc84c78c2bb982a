#include "Tolvane/menu/RowAccessibility.h"

#include "Tolvane/menu/MenuRow.h"

#include <QAccessibleWidget>
#include <QMenu>
#include <QPointer>
#include <QWidgetAction>

namespace tolvane {

namespace {

// A row: its role from the row, its texts from the widget. A row that acts can be pressed;
// a button that cannot act is disabled, its description saying why.
class RowAccessible final : public QAccessibleWidget {
public:
    explicit RowAccessible(MenuRow* row) : QAccessibleWidget(row, row->accessibleRole()) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.focusable = row()->acts();
        state.focused = row()->isMenusActiveRow();
        state.disabled = state.disabled || (role() == QAccessible::Button && !row()->acts());
        return state;
    }
    QStringList actionNames() const override {
        return row()->acts() ? QStringList{pressAction()} : QStringList();
    }
    void doAction(const QString& name) override {
        if (name == pressAction()) {
            row()->activate();
        }
    }

private:
    MenuRow* row() const { return static_cast<MenuRow*>(widget()); }
};

// A menu item that shows a widget: everything but its place in the menu is the widget's.
class HostedItemAccessible final : public QAccessibleInterface {
public:
    explicit HostedItemAccessible(QWidgetAction* item) : item(item) {}

    bool isValid() const override { return item && item->defaultWidget(); }
    QObject* object() const override { return item; }
    QWindow* window() const override { return shown()->window(); }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(item->defaultWidget()->parentWidget());
    }
    QAccessibleInterface* child(int index) const override { return shown()->child(index); }
    int childCount() const override { return shown()->childCount(); }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return shown()->indexOfChild(child);
    }
    QAccessibleInterface* childAt(int x, int y) const override { return shown()->childAt(x, y); }
    QString text(QAccessible::Text t) const override { return shown()->text(t); }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override { return shown()->rect(); }
    QAccessible::Role role() const override { return shown()->role(); }
    QAccessible::State state() const override {
        QAccessible::State state = shown()->state();
        state.disabled = state.disabled || !item->isEnabled();
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return shown()->interface_cast(type);
    }

private:
    QAccessibleInterface* shown() const {
        return QAccessible::queryAccessibleInterface(item->defaultWidget());
    }

    QPointer<QWidgetAction> item;
};

QAccessibleInterface* rowAccessible(const QString&, QObject* object) {
    if (auto* item = qobject_cast<QWidgetAction*>(object)) {
        return item->defaultWidget() ? new HostedItemAccessible(item) : nullptr;
    }
    auto* row = dynamic_cast<MenuRow*>(object);
    return row ? new RowAccessible(row) : nullptr;
}

} // namespace

void installRowAccessibility() {
    // Qt adds a factory that is already installed only once.
    QAccessible::installFactory(rowAccessible);
}

} // namespace tolvane
