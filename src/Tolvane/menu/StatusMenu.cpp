#include "Tolvane/menu/StatusMenu.h"

#include "Tolvane/menu/MenuRow.h"

#include <QHideEvent>
#include <QKeyEvent>
#include <QKeySequence>
#include <QShowEvent>
#include <QWidgetAction>

namespace tolvane {

namespace {

// An item that does something when chosen. A row shown in place of a title does only when it
// says so; a line of text there (the no-tray window's explanation) never does.
bool acts(QAction* action) {
    if (action->isSeparator() || !action->isVisible() || !action->isEnabled()) {
        return false;
    }
    auto* hosted = qobject_cast<QWidgetAction*>(action);
    if (!hosted) {
        return true;
    }
    auto* row = dynamic_cast<MenuRow*>(hosted->defaultWidget());
    return row && row->acts();
}

} // namespace

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
    if (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up) {
        event->accept();
        moveHighlight(event->key() == Qt::Key_Down ? 1 : -1);
        return;
    }
    QMenu::keyPressEvent(event);
}

// To the next item that acts, around the ends as a menu goes.
void StatusMenu::moveHighlight(int step) {
    const QList<QAction*> items = actions();
    const int count = int(items.size());
    const int from = int(items.indexOf(activeAction()));
    for (int i = 1; i <= count; ++i) {
        const int at = ((from < 0 && step < 0 ? count : from) + step * i + 2 * count) % count;
        if (acts(items[at])) {
            setActiveAction(items[at]);
            return;
        }
    }
}

// The window system's own show and hide (a window restored or minimised) come spontaneous.
void StatusMenu::showEvent(QShowEvent* event) {
    QMenu::showEvent(event);
    if (deletedWhenClosed && event->spontaneous()) {
        emit aboutToShow();
    }
}

void StatusMenu::hideEvent(QHideEvent* event) {
    QMenu::hideEvent(event); // says aboutToHide
    if (deletedWhenClosed && !event->spontaneous()) {
        deleteLater();
    }
}

void StatusMenu::changeEvent(QEvent* event) {
    QMenu::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && closesOnDeactivation && isVisible() &&
        !isActiveWindow()) {
        hide();
    }
}

} // namespace tolvane
