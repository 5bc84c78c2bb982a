#pragma once

#include "Tolvane/gauges/SystemStats.h"
#include "Tolvane/lock/KeyboardLock.h"
#include "Tolvane/scroll/MouseMonitor.h"
#include "Tolvane/scroll/ScrollInverter.h"
#include "Tolvane/session/SettingsFile.h"
#include "Tolvane/tray/TrayHost.h"
#include "TolvaneCore/ScrollState.h"
#include "platform/Platform.h"

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace tolvane {

struct AppTiming {
    std::chrono::milliseconds permissionPoll{1500};
    std::chrono::milliseconds cleaningDelay{150};
    TrayHost::Timing tray{};
};

class StatusMenu;

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

    // What tests and the tray look at.
    const AppState& currentState() const { return state; }
    QMenu* menu() const { return currentMenu; }
    TrayHost& tray() { return *trayHost; }
    bool isPolling() const { return !permissionTimer.isNull(); }
    bool isInverting() const { return inverter.inverting; }
    KeyboardLock& lockForTesting() { return keyboardLock; }
    SystemStats& statsForTesting() { return stats; }

private:
    void loadState();
    void saveState();
    void applyInversion();
    void render();
    void runStateCycle(AppEvent event);

    void startInverterOrPrompt();
    void showPermissionAlert();
    void permissionTick();

    StatusMenu* buildMenu();
    void installMenu(QMenu* menu);
    void startCleaning();

    platform::Platform& platform;
    AppTiming timing;
    SettingsFile settings;
    QPointer<QMenu> currentMenu;
    QSet<QMenu*> openMenus;
    ScrollInverter inverter;
    MouseMonitor monitor;
    SystemStats stats;
    KeyboardLock keyboardLock;
    bool baselineNatural;
    QPointer<QTimer> permissionTimer;
    AppState state{true, false, ScrollMode::trackpad};
    std::unique_ptr<TrayHost> trayHost;
};

} // namespace tolvane
