// The tray menu is the whole user interface. The rich menu, with its widget rows, is built anew
// on every render; the tray makes a plain copy of its items for hosts that draw menus themselves.
#include "Tolvane/app/AppDelegate.h"

#include "Tolvane/gauges/StatsView.h"
#include "Tolvane/look/Symbols.h"
#include "Tolvane/menu/CleanKeyboardRow.h"
#include "Tolvane/menu/HeaderView.h"
#include "Tolvane/menu/SectionCaption.h"
#include "Tolvane/menu/StatusMenu.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QTimer>
#include <QWidgetAction>

namespace tolvane {

StatusMenu* AppDelegate::buildMenu() {
    auto* menu = new StatusMenu();
    // Sampling runs while any rich menu is on screen, whether popped up or as a window.
    connect(menu, &QMenu::aboutToShow, this, [this, menu] {
        openMenus.insert(menu);
        menuWillOpen();
    });
    connect(menu, &QMenu::aboutToHide, this, [this, menu] {
        openMenus.remove(menu);
        if (openMenus.isEmpty()) {
            menuDidClose();
        }
    });
    connect(menu, &QObject::destroyed, this, [this, menu] {
        if (openMenus.remove(menu) && openMenus.isEmpty()) {
            menuDidClose();
        }
    });

    menu->addAction(hostedMenuItem(
        new HeaderView(state.mode == ScrollMode::mouse, state.mouseConnected), menu));

    if (!platform.access.isTrusted()) {
        QAction* warning = menu->addAction(QStringLiteral("\u26A0\uFE0E Needs input access"));
        warning->setProperty(StatusMenu::textOnlyWhenHostDrawn, true);
        connect(warning, &QAction::triggered, this, &AppDelegate::openAccessibility);
    }

    menu->addAction(hostedMenuItem(new StatsView(stats), menu));

    QPointer<AppDelegate> weak(this);
    auto startCleaningLater = [weak] {
        if (weak) {
            weak->startCleaning();
        }
    };
    menu->addAction(hostedMenuItem(
        new CleanKeyboardRow(platform.access.isTrusted(), startCleaningLater), menu));

    menu->addSeparator();
    menu->addAction(hostedMenuItem(new SectionCaption(QStringLiteral("Scrolling")), menu));

    QAction* toggle = menu->addAction(state.mode == ScrollMode::mouse
                                          ? QStringLiteral("Switch to Natural scrolling")
                                          : QStringLiteral("Switch to Mouse scrolling"));
    const QPalette panel = QApplication::palette(menu);
    toggle->setIcon(Symbols::icon(QStringLiteral("arrow.up.arrow.down"),
                                  panel.color(QPalette::Active, QPalette::Text),
                                  panel.color(QPalette::Active, QPalette::HighlightedText)));
    toggle->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    toggle->setShortcutVisibleInContextMenu(true);
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
    quitAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quitAction->setShortcutVisibleInContextMenu(true);
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
    trayHost->hideMenuWindow();
    // A render while the menu was open installed a newer menu; the one on screen is older.
    if (auto* open = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
        open->hide();
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
