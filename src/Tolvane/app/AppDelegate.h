#pragma once

#include "Tolvane/gauges/SystemStats.h"
#include "Tolvane/lock/KeyboardLock.h"
#include "Tolvane/scroll/MouseMonitor.h"
#include "Tolvane/scroll/ScrollInverter.h"
#include "TolvaneCore/ScrollState.h"
#include "platform/Platform.h"

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QSettings>
#include <QString>
#include <QSystemTrayIcon>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace tolvane {

struct AppTiming {
    std::chrono::milliseconds permissionPoll{1500};
    std::chrono::milliseconds cleaningDelay{150};
    // How long a start waits for a tray host before it opens the menu as a window, and how
    // often it looks for one meanwhile.
    std::chrono::milliseconds trayWait{10000};
    std::chrono::milliseconds trayCheck{2000};
};

// Owns every long-lived object and the one live state. Every change of state runs, in this
// order: reduce, applyInversion, saveState, render.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    AppDelegate(platform::Platform& platform, const QString& settingsPath, AppTiming timing = {});
    ~AppDelegate() override;

    void applicationDidFinishLaunching();

    // Menu delegate and actions.
    void menuWillOpen();
    void menuDidClose();
    void manualToggle();
    void toggleAuto();
    void toggleLogin();
    void openAccessibility();
    void quit();

    // Opens the rich menu where the user will see it: at the tray icon where the program
    // paints it itself, else as a panel window that the compositor places. Another start of
    // the program asks for this.
    void openMenu();

    // Looks whether a tray host has come or gone: a new host gets a new icon, and without one
    // the menu comes as a window.
    void checkTrayHost();

    // Whether the desktop shows tray icons now; Qt's answer unless a test sets another.
    std::function<bool()> trayHostAvailable = [] {
        return QSystemTrayIcon::isSystemTrayAvailable();
    };

    // What tests and the tray look at.
    const AppState& currentState() const { return state; }
    QSystemTrayIcon* trayIcon() const { return statusItem; }
    QMenu* menu() const { return currentMenu; }
    QMenu* hostDrawnMenu() const { return hostMenu; }
    QMenu* menuWindow() const { return windowMenu; }
    bool isPolling() const { return !permissionTimer.isNull(); }
    bool isInverting() const { return inverter.inverting; }
    KeyboardLock& lockForTesting() { return keyboardLock; }
    SystemStats& statsForTesting() { return stats; }

    // $XDG_CONFIG_HOME/Tolvane/Tolvane.conf, with ~/.config when the variable is unset.
    static QString defaultSettingsPath();

private:
    void loadState();
    void saveState();
    void applyInversion();
    void render();
    void runStateCycle(AppEvent event);

    void startInverterOrPrompt();
    void showPermissionAlert();
    void permissionTick();

    QMenu* buildMenu();
    void installMenu(QMenu* menu);
    void fillHostMenu(QMenu* rich);
    void startCleaning();

    void createStatusItem();
    void trayActivated(QSystemTrayIcon::ActivationReason reason);
    void watchTrayHosts();
    void sampleTrayBackground();
    QColor trayInk() const;
    void openMenuWindow(bool noTray);

    platform::Platform& platform;
    AppTiming timing;
    QSettings settings;
    QPointer<QMenu> currentMenu;
    QPointer<QMenu> hostMenu;
    QPointer<QMenu> windowMenu;
    QSet<QMenu*> openMenus;
    QTimer trayWatch;
    bool trayPresent = false;
    bool appPaintsIcon = false;
    QColor panelInk;

    QSystemTrayIcon* statusItem = nullptr;
    ScrollInverter inverter;
    MouseMonitor monitor;
    SystemStats stats;
    KeyboardLock keyboardLock;
    bool baselineNatural;
    QPointer<QTimer> permissionTimer;
    const QString autoKey = QStringLiteral("autoEnabled");
    const QString modeKey = QStringLiteral("mode");
    AppState state{true, false, ScrollMode::trackpad};
};

} // namespace tolvane
