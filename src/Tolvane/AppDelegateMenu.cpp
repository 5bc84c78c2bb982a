// The tray menu is the whole user interface. It is built anew on every render and popped up
// by the program itself: tray hosts that export menus over D-Bus drop the widget rows.
#include "Tolvane/AppDelegate.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QTimer>

namespace tolvane {

QMenu* AppDelegate::buildMenu() {
    auto* menu = new QMenu();
    connect(menu, &QMenu::aboutToShow, this, &AppDelegate::menuWillOpen);
    connect(menu, &QMenu::aboutToHide, this, &AppDelegate::menuDidClose);

    if (!platform.access.isTrusted()) {
        QAction* warning = menu->addAction(QStringLiteral("\u26A0\uFE0E Needs input access"));
        connect(warning, &QAction::triggered, this, &AppDelegate::openAccessibility);
    }
    menu->addSeparator();

    QAction* toggle = menu->addAction(state.mode == ScrollMode::mouse
                                          ? QStringLiteral("Switch to Natural scrolling")
                                          : QStringLiteral("Switch to Mouse scrolling"));
    toggle->setShortcut(QKeySequence(QStringLiteral("Ctrl+T")));
    connect(toggle, &QAction::triggered, this, &AppDelegate::manualToggle);

    QAction* autoSwitch = menu->addAction(QStringLiteral("Auto-switch when mouse connects"));
    autoSwitch->setCheckable(true);
    autoSwitch->setChecked(state.autoEnabled);
    connect(autoSwitch, &QAction::triggered, this, &AppDelegate::toggleAuto);

    menu->addSeparator();

    QAction* login = menu->addAction(QStringLiteral("Launch at login"));
    login->setCheckable(true);
    login->setChecked(platform.login.isEnabled());
    connect(login, &QAction::triggered, this, &AppDelegate::toggleLogin);

    QAction* quitAction = menu->addAction(QStringLiteral("Quit Tolvane"));
    quitAction->setShortcut(QKeySequence(QStringLiteral("Ctrl+Q")));
    connect(quitAction, &QAction::triggered, this, &AppDelegate::quit);
    return menu;
}

void AppDelegate::installMenu(QMenu* menu) {
    QMenu* previous = currentMenu;
    currentMenu = menu;
    if (!previous) {
        return;
    }
    // A menu on screen stays as it is until it closes; only then does it go.
    if (previous->isVisible()) {
        connect(previous, &QMenu::aboutToHide, previous, &QObject::deleteLater);
    } else {
        previous->deleteLater();
    }
}

void AppDelegate::popUpMenu() {
    if (currentMenu && !currentMenu->isVisible()) {
        currentMenu->popup(QCursor::pos());
    }
}

void AppDelegate::menuWillOpen() {
    stats.start();
}

void AppDelegate::menuDidClose() {
    stats.stop();
}

void AppDelegate::startCleaning() {
    if (currentMenu) {
        currentMenu->hide();
    }
    QPointer<AppDelegate> weak(this);
    QTimer::singleShot(timing.cleaningDelay, this, [weak] {
        if (!weak) {
            return;
        }
        if (!weak->keyboardLock.lock()) {
            weak->showPermissionAlert();
        }
    });
}

void AppDelegate::quit() {
    QApplication::quit();
}

} // namespace tolvane
