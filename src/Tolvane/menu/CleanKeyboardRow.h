#pragma once

#include "Tolvane/menu/MenuRow.h"

#include <functional>

namespace tolvane {

// The menu's one button: starts the keyboard cleaning, and stays visibly off without input
// access.
class CleanKeyboardRow final : public MenuRow {
public:
    CleanKeyboardRow(bool enabled, std::function<void()> action, QWidget* parent = nullptr);

    QAction* plainItem(QObject* parent) const override;
    bool acts() const override { return enabled && action; }
    void activate() override;
    QAccessible::Role accessibleRole() const override { return QAccessible::Button; }

    bool isHovering() const { return hovering; }

    // The card that takes clicks and hover; the margin around it takes neither.
    QRectF buttonRect() const;

protected:
    int contentHeight() const override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void setHovering(bool value);

    bool enabled;
    std::function<void()> action;
    bool hovering = false;
    bool pressed = false;
};

} // namespace tolvane
