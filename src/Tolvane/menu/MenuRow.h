#pragma once

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
QWidgetAction* hostedMenuItem(MenuRow* view, QObject* parent);

} // namespace tolvane
