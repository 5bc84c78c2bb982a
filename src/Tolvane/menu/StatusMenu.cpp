#include "Tolvane/menu/StatusMenu.h"

#include <QKeyEvent>
#include <QKeySequence>

namespace tolvane {

void StatusMenu::keyPressEvent(QKeyEvent* event) {
    const QKeySequence pressed(event->keyCombination());
    for (QAction* action : actions()) {
        if (action->isEnabled() && action->isVisible() && !action->shortcut().isEmpty() &&
            action->shortcut().matches(pressed) == QKeySequence::ExactMatch) {
            event->accept();
            hide();
            action->trigger();
            return;
        }
    }
    QMenu::keyPressEvent(event);
}

void StatusMenu::changeEvent(QEvent* event) {
    QMenu::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && closesOnDeactivation && isVisible() &&
        !isActiveWindow()) {
        hide();
    }
}

} // namespace tolvane
