#include "Tolvane/AppDelegate.h"

#include "Tolvane/BrandIcon.h"
#include "Tolvane/Log.h"
#include "Tolvane/SettingsFile.h"
#include "Tolvane/SystemBits.h"
#include "TolvaneCore/LogLine.h"
#include "TolvaneCore/StoredSettings.h"
#include "platform/linux/UserFolders.h"

#include <QMenu>

namespace tolvane {

namespace {

std::string text(bool value) {
    return std::string(boolText(value));
}
std::string text(ScrollMode mode) {
    return std::string(modeName(mode));
}

StoredValue storedValue(const std::optional<std::string>& value) {
    return value ? StoredValue{StoredValue::Type::text, false, *value} : StoredValue{};
}

} // namespace

AppDelegate::AppDelegate(platform::Platform& platform, const QString& settingsPath,
                         AppTiming timing)
    : platform(platform), timing(timing), settings(settingsPath), inverter(platform.scrollTap),
      monitor(platform.pointers), stats(platform.host), keyboardLock(platform.keyboard),
      baselineNatural(ScrollBaseline::naturalOn(platform.scrollSetting)) {}

AppDelegate::~AppDelegate() {
    delete currentMenu;
    delete windowMenu;
    delete hostMenu;
}

QString AppDelegate::defaultSettingsPath() {
    return QString::fromStdString(oslinux::configHome()) + QStringLiteral("/Tolvane/Tolvane.conf");
}

void AppDelegate::applicationDidFinishLaunching() {
    Log::line("=== launch === trusted=" + text(platform.access.isTrusted()) +
              " baselineNatural=" + text(baselineNatural));
    loadState();
    Log::line("loaded state: auto=" + text(state.autoEnabled) + " mode=" + text(state.mode));

    createStatusItem();
    trayPresent = trayHostAvailable();
    // A panel may start after the programs of the session: while the wait lasts, it is looked
    // for now and then; without one, the menu comes as a window once the wait is over.
    // StatusNotifierItem hosts that come or go later are told by the session bus.
    watchTrayHosts();
    if (!trayPresent) {
        trayWatch.setInterval(timing.trayCheck);
        connect(&trayWatch, &QTimer::timeout, this, &AppDelegate::checkTrayHost);
        trayWatch.start();
    }
    QTimer::singleShot(timing.trayWait, this, [this] {
        trayWatch.stop();
        if (!trayPresent) {
            openMenuWindow(true);
        }
    });

    QPointer<AppDelegate> weak(this);
    monitor.onChange = [weak](bool present) {
        if (weak) {
            weak->runStateCycle(present ? AppEvent::mouseConnected()
                                        : AppEvent::mouseDisconnected());
        }
    };
    monitor.start();

    keyboardLock.onChange = [weak](bool) {
        if (weak) {
            weak->render();
        }
    };

    startInverterOrPrompt();
    render();
}

void AppDelegate::loadState() {
    std::string why;
    const bool read = settings.load(why);
    const bool autoEnabled = loadAutoEnabled(storedValue(settings.value(autoKey)));
    const ScrollMode mode = loadMode(storedValue(settings.value(modeKey)));
    state = AppState{autoEnabled, false, mode};
    if (!read) {
        Log::line("settings not read: " + settings.path().toStdString() + ": " + why);
    }
}

void AppDelegate::saveState() {
    settings.setValue(autoKey, boolText(state.autoEnabled));
    settings.setValue(modeKey, storedModeText(state.mode));
    if (std::string why; !settings.save(why)) {
        Log::line("settings not saved: " + settings.path().toStdString() + ": " + why);
    }
}

void AppDelegate::applyInversion() {
    inverter.inverting = shouldInvert(state.mode, baselineNatural);
    Log::line("applyInversion mode=" + text(state.mode) + " baseline=" + text(baselineNatural) +
              " inverting=" + text(inverter.inverting));
}

void AppDelegate::render() {
    if (statusItem) {
        const bool active = state.mode == ScrollMode::mouse;
        statusItem->setIcon(BrandIcon::menuBar(active, trayInk()));
        statusItem->setToolTip(BrandIcon::description(active));
        if (!statusItem->isVisible()) {
            statusItem->show();
        }
    }
    QMenu* rich = buildMenu();
    fillHostMenu(rich);
    installMenu(rich);
    // A host that draws menus shows this one; where the program paints the icon itself,
    // every click reaches the program, which shows the rich menu.
    if (statusItem && !appPaintsIcon && statusItem->contextMenu() != hostMenu) {
        statusItem->setContextMenu(hostMenu);
    }
}

void AppDelegate::runStateCycle(AppEvent event) {
    state = reduce(state, event);
    applyInversion();
    saveState();
    render();
}

void AppDelegate::manualToggle() {
    runStateCycle(AppEvent::manualToggle());
}

void AppDelegate::toggleAuto() {
    runStateCycle(AppEvent::setAuto(!state.autoEnabled));
}

void AppDelegate::toggleLogin() {
    LoginItem::setEnabled(!platform.login.isEnabled(), platform.login, platform.systemLog);
    render();
}

} // namespace tolvane
