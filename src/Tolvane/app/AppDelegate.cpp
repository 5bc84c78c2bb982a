#include "Tolvane/app/AppDelegate.h"

#include "Tolvane/menu/StatusMenu.h"
#include "Tolvane/scroll/ScrollBaseline.h"
#include "Tolvane/session/Log.h"
#include "Tolvane/session/LoginItem.h"
#include "Tolvane/session/SettingsFile.h"
#include "TolvaneCore/LogLine.h"
#include "TolvaneCore/StoredSettings.h"

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
      baselineNatural(ScrollBaseline::naturalOn(platform.scrollSetting)),
      trayHost(std::make_unique<TrayHost>([this] { return buildMenu(); }, timing.tray)) {}

// The menus go while the delegate they report to is whole.
AppDelegate::~AppDelegate() {
    delete currentMenu;
    trayHost.reset();
}

void AppDelegate::applicationDidFinishLaunching() {
    Log::line("=== launch === trusted=" + text(platform.access.isTrusted()) +
              " baselineNatural=" + text(baselineNatural));
    loadState();
    Log::line("loaded state: auto=" + text(state.autoEnabled) + " mode=" + text(state.mode));

    trayHost->start();

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
    settings.setValue(modeKey, modeName(state.mode));
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
    installMenu(buildMenu());
    trayHost->show(state.mode == ScrollMode::mouse, currentMenu);
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
    LoginItem::setEnabled(!platform.login.isEnabled(), platform.login);
    render();
}

} // namespace tolvane
