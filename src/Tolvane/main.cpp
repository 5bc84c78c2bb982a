#include "Tolvane/app/AppDelegate.h"
#include "Tolvane/app/CommandLine.h"
#include "Tolvane/session/Log.h"
#include "platform/linux/AutostartLoginRegistration.h"
#include "platform/linux/DesktopScrollSetting.h"
#include "platform/linux/InputServiceClient.h"
#include "platform/linux/ProcHostStatistics.h"
#include "platform/linux/SingleInstanceLock.h"
#include "platform/linux/SysfsPointerDevices.h"
#include "platform/linux/SyslogSystemLog.h"
#include "platform/linux/UserFolders.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>

#include <cstdio>

using namespace tolvane;

int main(int argc, char** argv) {
    if (const auto status = CommandLine::answer(argc, argv)) {
        return *status;
    }
    oslinux::SingleInstanceLock instance;
    if (!instance.acquire()) {
        // Tolvane runs already: it opens its menu, which is what this start was for.
        if (!instance.askRunningToOpen()) {
            std::fputs("Tolvane is already running.\n", stderr);
        }
        return 0;
    }
    // Qt would make a missing XDG_RUNTIME_DIR, and a later start would find a lock folder there.
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR") &&
        !QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR"))) {
        qunsetenv("XDG_RUNTIME_DIR");
    }
    // Native Wayland where Qt's Wayland plugin is installed, else X11 through Xwayland.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") &&
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "wayland;xcb");
    }
    // On GNOME this starts GIO's tool now, so that its answer is ready when the launch asks.
    oslinux::DesktopScrollSetting scrollSetting;

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tolvane"));
    QApplication::setDesktopFileName(QStringLiteral("tolvane"));
    // A tray program: no main window, and closing the overlays or an alert must not end it.
    QApplication::setQuitOnLastWindowClosed(false);

    oslinux::SyslogSystemLog systemLog;
    Log::setSystemLog(&systemLog);
    Log::setFile(oslinux::logFile());

    // Input goes through the input service; the mouse monitor reads sysfs and opens no node.
    oslinux::InputServiceClient service;
    oslinux::SysfsPointerDevices pointers;
    oslinux::ProcHostStatistics host;
    oslinux::AutostartLoginRegistration login(QApplication::applicationFilePath().toStdString());
    platform::Platform platform{service, service, pointers,      service,
                                host,    login,   scrollSetting, systemLog};

    const QString settingsPath =
        QString::fromStdString(oslinux::configHome()) + QStringLiteral("/Tolvane/Tolvane.conf");
    AppDelegate delegate(platform, settingsPath);
    instance.onOpenRequest([&delegate] { delegate.tray().openMenu(); });
    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    QApplication::exec();
    return 0;
}
