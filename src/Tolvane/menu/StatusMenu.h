#pragma once

#include <QMenu>

namespace tolvane {

// The tray's menu. While a popup menu is open it holds the keyboard, and Qt's shortcut map
// does not look at the items of a menu that belongs to no menu bar; so the menu answers its
// items' shortcuts itself: it closes, as on a click, and triggers the item. The arrows move
// only between the items that act, plain ones and rows alike.
class StatusMenu final : public QMenu {
public:
    explicit StatusMenu(QWidget* parent = nullptr) : QMenu(parent) {}

    // Set when the menu stands as a panel window: it then closes, as a popup does, when
    // another window takes the focus.
    bool closesOnDeactivation = false;
    // Set when the menu stands as a window: closed, it is deleted. Minimised, it stays, and it
    // announces itself as hidden and as shown again, as a menu that closes and opens.
    bool deletedWhenClosed = false;

    // The property of a plain item that a host-drawn menu shows as text only.
    static constexpr char textOnlyWhenHostDrawn[] = "tolvaneTextOnlyWhenHostDrawn";

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void moveHighlight(int step);
    void changeEvent(QEvent* event) override;
};

} // namespace tolvane
