#pragma once

#include <QColor>
#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>

#include <chrono>
#include <functional>

namespace tolvane {

class StatusMenu;

// Everything that depends on what the desktop does with a tray icon: whether a tray host is
// there, the ink that stands out on the panel, the copy of the menu that a host draws itself,
// and the menu as a window where the program cannot pop it up at the icon or no tray shows it.
class TrayHost : public QObject {
public:
    struct Timing {
        // How long a start waits for a tray host before it opens the menu as a window, and how
        // often it looks for one meanwhile.
        std::chrono::milliseconds wait{10000};
        std::chrono::milliseconds check{2000};
    };

    // `buildMenu` makes a new rich menu, owned by the caller until it is shown as a window.
    TrayHost(std::function<StatusMenu*()> buildMenu, Timing timing);
    ~TrayHost() override;

    // Makes the icon and starts looking for a tray host.
    void start();

    // The icon for the scroll mode in force, and `rich` as the menu that a click shows; the
    // host-drawn menu takes the same items.
    void show(bool mouseScrolling, QMenu* rich);

    // Opens the rich menu where the user will see it: at the tray icon where the program
    // paints it itself, else as a panel window that the compositor places. Another start of
    // the program asks for this.
    void openMenu();

    // Looks whether a tray host has come or gone: a new host gets a new icon, and without one
    // the menu comes as a window.
    void checkTrayHost();

    void hideMenuWindow();

    // Whether the desktop shows tray icons now; Qt's answer unless a test sets another.
    std::function<bool()> hostAvailable = [] { return QSystemTrayIcon::isSystemTrayAvailable(); };

    QSystemTrayIcon* icon() const { return statusItem; }
    QMenu* hostDrawnMenu() const { return hostMenu; }
    QMenu* menuWindow() const { return windowMenu; }

private:
    void createIcon();
    void showIcon();
    void fillHostMenu();
    void trayActivated(QSystemTrayIcon::ActivationReason reason);
    void watchTrayHosts();
    void samplePanelInk();
    QColor ink() const;

    void openPanelWindow();
    void openNoTrayWindow();
    bool raiseMenuWindow();
    void showCentred(StatusMenu* menu);

    std::function<StatusMenu*()> buildMenu;
    Timing timing;
    QSystemTrayIcon* statusItem = nullptr;
    QPointer<QMenu> richMenu;
    QPointer<QMenu> hostMenu;
    QPointer<QMenu> windowMenu;
    QTimer hostWatch;
    bool mouseScrolling = false;
    bool hostPresent = false;
    bool appPaintsIcon = false;
    QColor panelInk;
};

} // namespace tolvane
