#include "Tolvane/app/AppDelegate.h"

#include "Tolvane/look/BrandIcon.h"
#include "Tolvane/scroll/ScrollBaseline.h"
#include "Tolvane/session/Log.h"
#include "Tolvane/session/LoginItem.h"
#include "Tolvane/session/SettingsFile.h"
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

StoredValue storedValue(const QVariant& value) {
    if (!value.isValid()) {
        return {};
    }
    if (value.typeId() == QMetaType::Bool) {
        return {StoredValue::Type::boolean, value.toBool(), {}};
    }
    if (value.typeId() == QMetaType::QString) {
        return {StoredValue::Type::text, false, value.toString().toStdString()};
    }
    return {StoredValue::Type::other, false, {}};
}

} // namespace

AppDelegate::AppDelegate(platform::Platform& platform, const QString& settingsPath,
                         AppTiming timing)
    : platform(platform), timing(timing), settings(settingsPath, plainSettingsFormat()),
      inverter(platform.scrollTap), monitor(platform.pointers), stats(platform.host),
      keyboardLock(platform.keyboard),
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
    const bool autoEnabled = loadAutoEnabled(storedValue(settings.value(autoKey)));
    const ScrollMode mode = loadMode(storedValue(settings.value(modeKey)));
    state = AppState{autoEnabled, false, mode};
    if (settings.status() != QSettings::NoError) {
        Log::line("settings not read: " + settings.fileName().toStdString());
    }
}

void AppDelegate::saveState() {
    settings.setValue(autoKey, state.autoEnabled);
    settings.setValue(modeKey, QString::fromLatin1(storedModeText(state.mode).data(),
                                                   qsizetype(storedModeText(state.mode).size())));
    settings.sync();
    if (settings.status() != QSettings::NoError) {
        Log::line("settings not saved: " + settings.fileName().toStdString());
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
