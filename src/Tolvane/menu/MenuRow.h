#pragma once

#include <QAccessible>
#include <QWidget>

class QAction;
class QWidgetAction;

namespace tolvane {

// A rich row of the menu: it paints itself inside a centred frame 300 wide and takes its
// height from its content. It keeps every click to itself, so the menu never treats a click
// on a row as the choice of an item.
class MenuRow : public QWidget {
public:
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // What stands for the row in a menu that cannot show widgets: a new item, or none.
    virtual QAction* plainItem(QObject* parent) const;

    // Whether choosing the row does something: only such rows take the arrows' highlight and
    // act on Enter; the others are passed over as disabled items are.
    virtual bool acts() const { return false; }
    // What a choice of the row from the keyboard or a screen reader does.
    virtual void activate() {}
    // What the row is to a screen reader; its name and description are the widget's own.
    virtual QAccessible::Role accessibleRole() const { return QAccessible::StaticText; }
    // Whether the menu's highlight, moved by the arrows, stands on this row.
    bool isMenusActiveRow() const;

protected:
    explicit MenuRow(QWidget* parent = nullptr);

    virtual int contentHeight() const = 0;

    // The 300 wide frame the row lays itself out in, centred when the menu is wider.
    QRectF frame() const;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

// A disabled item that shows `text`.
QAction* textItem(const QString& text, QObject* parent);

// Wraps a row in a menu item that shows it in place of a title; the item takes ownership.
// Triggering the item, as Enter on it does, activates the row.
QWidgetAction* hostedMenuItem(MenuRow* view, QObject* parent);

} // namespace tolvane
