// Tray hosts differ in what reaches the program. Where the program paints its icon itself
// (XEmbed trays on X11) every click reaches it, and it pops the rich menu up at the pointer.
// StatusNotifierItem hosts get the icon by name and the host-drawn menu over D-Bus; those that
// send Activate on a click get the rich menu too. Under Wayland the program cannot know the
// pointer or place a window, so there the rich menu is a panel window: beside the panel where
// the host said where it was clicked and the compositor lays windows against an edge, else
// where the compositor puts it. With no tray host at all, the rich menu comes as a window of
// its own.
#include "Tolvane/tray/TrayHost.h"

#include "Tolvane/look/BrandIcon.h"
#include "Tolvane/menu/MenuPainting.h"
#include "Tolvane/menu/MenuRow.h"
#include "Tolvane/menu/StatusMenu.h"
#include "Tolvane/session/WaylandSession.h"
#include "Tolvane/tray/HostClicks.h"
#include "Tolvane/tray/MenuBesidePanel.h"
#include "Tolvane/tray/PanelEdgeWindow.h"
#include "Tolvane/tray/PanelInk.h"

#include <QCursor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <QLabel>
#include <QPalette>
#include <QScreen>
#include <QWidgetAction>

namespace tolvane {

namespace {

const QString noTrayLine = QStringLiteral(
    "This desktop shows no tray icons. Start Tolvane again to open this window; on GNOME, turn "
    "on the AppIndicator extension to keep Tolvane in the top bar.");

bool statusNotifierHostPresent() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface() &&
           bus.interface()->isServiceRegistered(QStringLiteral("org.kde.StatusNotifierWatcher"));
}

} // namespace

TrayHost::TrayHost(std::function<StatusMenu*()> buildMenu, Timing timing)
    : buildMenu(std::move(buildMenu)), timing(timing) {}

TrayHost::~TrayHost() {
    delete windowMenu;
    delete hostMenu;
}

// A panel may start after the programs of the session: while the wait lasts, it is looked for
// now and then; without one, the menu comes as a window once the wait is over.
// StatusNotifierItem hosts that come or go later are told by the session bus.
void TrayHost::start() {
    if (inWaylandSession()) { // the only place where the host's word of the click is needed
        HostClicks::watch();
    }
    createIcon();
    hostPresent = hostAvailable();
    watchTrayHosts();
    if (hostPresent) {
        return; // and nothing wakes the program while it sits in the tray
    }
    hostWatch.setInterval(timing.check);
    connect(&hostWatch, &QTimer::timeout, this, &TrayHost::checkTrayHost);
    hostWatch.start();
    QTimer::singleShot(timing.wait, this, [this] {
        hostWatch.stop();
        if (!hostPresent) {
            openNoTrayWindow();
        }
    });
}

// Qt settles how the icon is shown when it is made: painted by the program on X11 unless a
// StatusNotifierItem host is there at that moment.
void TrayHost::createIcon() {
    delete statusItem;
    statusItem = new QSystemTrayIcon(this);
    appPaintsIcon =
        QGuiApplication::platformName() == QStringLiteral("xcb") && !statusNotifierHostPresent();
    panelInk = QColor();
    connect(statusItem, &QSystemTrayIcon::activated, this, &TrayHost::trayActivated);
    if (appPaintsIcon) {
        QTimer::singleShot(1000, this, &TrayHost::samplePanelInk);
    }
}

void TrayHost::show(bool mouseScrolling, QMenu* rich) {
    this->mouseScrolling = mouseScrolling;
    richMenu = rich;
    showIcon();
    fillHostMenu();
    // A host that draws menus shows this one; where the program paints the icon itself,
    // every click reaches the program, which shows the rich menu.
    if (statusItem && !appPaintsIcon && statusItem->contextMenu() != hostMenu) {
        statusItem->setContextMenu(hostMenu);
    }
}

void TrayHost::showIcon() {
    if (!statusItem) {
        return;
    }
    statusItem->setIcon(BrandIcon::menuBar(mouseScrolling, ink()));
    statusItem->setToolTip(BrandIcon::description(mouseScrolling));
    if (!statusItem->isVisible()) {
        statusItem->show();
    }
}

// The plain items are the rich menu's own actions, so both forms show and do the same; the
// widget rows stand in as text items, and the first item opens the rich menu.
void TrayHost::fillHostMenu() {
    if (!hostMenu) {
        hostMenu = new QMenu();
    }
    hostMenu->clear();
    QAction* open = hostMenu->addAction(QStringLiteral("Open Tolvane"));
    connect(open, &QAction::triggered, this, &TrayHost::openPanelWindow);
    for (QAction* action : richMenu ? richMenu->actions() : QList<QAction*>()) {
        if (auto* hosted = qobject_cast<QWidgetAction*>(action)) {
            auto* row = dynamic_cast<MenuRow*>(hosted->defaultWidget());
            if (QAction* standIn = row ? row->plainItem(hostMenu) : nullptr) {
                hostMenu->addAction(standIn);
            }
        } else if (action->property(StatusMenu::textOnlyWhenHostDrawn).toBool()) {
            hostMenu->addAction(action->text())->setEnabled(false);
        } else {
            hostMenu->addAction(action);
        }
    }
}

QColor TrayHost::ink() const {
    if (hostPresent && !appPaintsIcon) {
        return BrandIcon::neutralInk();
    }
    return panelInk.isValid()
               ? panelInk
               : QGuiApplication::palette().color(QPalette::Active, QPalette::WindowText);
}

void TrayHost::samplePanelInk() {
    if (!statusItem || !appPaintsIcon) {
        return;
    }
    const QColor ink = inkAround(statusItem->geometry());
    if (ink.isValid() && ink != panelInk) {
        panelInk = ink;
        showIcon();
    }
}

void TrayHost::trayActivated(QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::MiddleClick || reason == QSystemTrayIcon::Unknown) {
        return;
    }
    if (inWaylandSession()) {
        openPanelWindow();
    } else if (richMenu && !richMenu->isVisible()) {
        popUpBesidePanel(richMenu, QCursor::pos());
    }
}

// A host that comes later gets a new icon, since Qt chose its way of showing the last one
// without it; a host that goes away leaves the menu as a window.
void TrayHost::checkTrayHost() {
    const bool available = hostAvailable();
    if (available && !hostPresent) {
        hostPresent = true;
        hostWatch.stop();
        createIcon();
        show(mouseScrolling, richMenu);
    } else if (!available && hostPresent) {
        hostPresent = false;
        openNoTrayWindow();
    }
}

// GNOME's AppIndicator extension, Plasma's and XFCE's panels register the watcher's name when
// they start and drop it when they end; a check then costs nothing while nothing changes.
void TrayHost::watchTrayHosts() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    auto* watcher = new QDBusServiceWatcher(QStringLiteral("org.kde.StatusNotifierWatcher"), bus,
                                            QDBusServiceWatcher::WatchForOwnerChange, this);
    // The new owner registers its host a moment after it takes the name.
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this] { QTimer::singleShot(timing.check, this, &TrayHost::checkTrayHost); });
}

void TrayHost::openMenu() {
    const QRect icon = statusItem && hostPresent && appPaintsIcon && !inWaylandSession()
                           ? statusItem->geometry()
                           : QRect();
    if (icon.isValid() && richMenu) {
        popUpBesidePanel(richMenu, icon.bottomLeft());
    } else if (hostPresent) {
        openPanelWindow();
    } else {
        openNoTrayWindow();
    }
}

void TrayHost::hideMenuWindow() {
    if (windowMenu) {
        windowMenu->hide();
    }
}

// The rich menu as a panel without frame that closes like a menu. A choice closes it, as it
// closes a menu (a window is no popup, so Qt does not). It goes beside the panel where the
// compositor lets it, centred where it does not.
void TrayHost::openPanelWindow() {
    if (raiseMenuWindow()) {
        return;
    }
    StatusMenu* menu = buildMenu();
    for (QAction* action : menu->actions()) {
        connect(action, &QAction::triggered, menu, [menu] { menu->hide(); });
    }
    menu->setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    menu->closesOnDeactivation = true;
    if (const std::optional<QPoint> click = HostClicks::last()) {
        layBesidePanel(menu, *click);
    }
    showCentred(menu);
}

// With no tray, the rich menu as a normal window titled "Tolvane" that stays until it is
// closed. A choice closes it, then it comes back and shows the choice's result.
void TrayHost::openNoTrayWindow() {
    if (raiseMenuWindow()) {
        return;
    }
    StatusMenu* menu = buildMenu();
    for (QAction* action : menu->actions()) {
        connect(action, &QAction::triggered, menu, [this, menu] {
            menu->hide();
            QTimer::singleShot(0, this, &TrayHost::openNoTrayWindow);
        });
    }
    auto* line = new QLabel(noTrayLine);
    line->setWordWrap(true);
    line->setContentsMargins(14, 8, 14, 8);
    line->setFixedWidth(MenuPainting::rowWidth);
    auto* item = new QWidgetAction(menu);
    item->setDefaultWidget(line);
    menu->insertAction(menu->actions().value(0), item);
    menu->setWindowFlags(Qt::Window);
    showCentred(menu);
}

bool TrayHost::raiseMenuWindow() {
    if (!windowMenu || !windowMenu->isVisible()) {
        return false;
    }
    if (isWaylandClient()) { // a new window comes in front
        windowMenu->hide();
        return false;
    }
    windowMenu->setWindowState(windowMenu->windowState() & ~Qt::WindowMinimized);
    windowMenu->raise();
    windowMenu->activateWindow();
    return true;
}

void TrayHost::showCentred(StatusMenu* menu) {
    menu->setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu, false);
    menu->setWindowTitle(QStringLiteral("Tolvane"));
    menu->deletedWhenClosed = true;
    windowMenu = menu;

    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    screen = screen ? screen : QGuiApplication::primaryScreen();
    const QSize size = menu->sizeHint();
    const QPoint centred =
        screen ? screen->availableGeometry().center() - QPoint(size.width() / 2, size.height() / 2)
               : QPoint();
    menu->popup(centred);
    menu->activateWindow();
    // A window manager may map the window after Qt drew it; drawn again once shown, no part of
    // it stays empty.
    QTimer::singleShot(250, menu, [menu] { menu->repaint(); });
}

} // namespace tolvane
