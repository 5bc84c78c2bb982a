// Whether Tolvane may use the input devices is decided by their file modes and ACLs, which
// udev sets; access(2) answers with the same rules as open(2). Granting it needs root once:
// pkexec runs the installed helper, which adds a udev rule giving the seat's user the devices.
// The prompt must not wait for the helper: the permission poll notices the result.
#include "platform/linux/DeviceNodeAccess.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include <unistd.h>

namespace tolvane::oslinux {

DeviceNodeAccess::DeviceNodeAccess(std::string deviceRoot) : deviceRoot(std::move(deviceRoot)) {}

bool DeviceNodeAccess::isTrusted() {
    const QString root = QString::fromStdString(deviceRoot);
    if (::access(QFile::encodeName(root + QStringLiteral("/uinput")).constData(), W_OK) != 0) {
        return false;
    }
    const QDir input(root + QStringLiteral("/input"));
    const QStringList nodes = input.entryList({QStringLiteral("event*")}, QDir::System);
    for (const QString& node : nodes) {
        if (::access(QFile::encodeName(input.filePath(node)).constData(), R_OK) != 0) {
            return false;
        }
    }
    return true;
}

std::string DeviceNodeAccess::helperPath() {
    return TOLVANE_LIBEXEC_DIR "/tolvane-grant-input-access";
}

std::string DeviceNodeAccess::helpPagePath() {
    const QString installed = QStringLiteral(TOLVANE_DATA_DIR "/help/input-access.html");
    if (QFileInfo::exists(installed)) {
        return installed.toStdString();
    }
    return TOLVANE_SOURCE_DATA_DIR "/help/input-access.html";
}

void DeviceNodeAccess::requestAccess() {
    const QString pkexec = QStandardPaths::findExecutable(QStringLiteral("pkexec"));
    const QString helper = QString::fromStdString(helperPath());
    if (pkexec.isEmpty() || !QFileInfo(helper).isExecutable()) {
        return;
    }
    QProcess::startDetached(pkexec, {helper});
}

bool DeviceNodeAccess::openHelp() {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(helpPagePath())));
}

} // namespace tolvane::oslinux
