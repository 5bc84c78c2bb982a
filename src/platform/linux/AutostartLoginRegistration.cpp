// Launch at login is a desktop entry in the user's autostart folder. It is written through a
// temporary file and a rename, so a crash or a full disk never leaves half an entry that the
// session would try to run. An entry that is not Tolvane's, or that the user hid with
// Hidden=true, counts as off.
#include "platform/linux/AutostartLoginRegistration.h"

#include "TolvaneCore/AutostartEntry.h"
#include "platform/linux/UserFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace tolvane::oslinux {

namespace {

constexpr qint64 largestEntry = qint64(64) * 1024;

} // namespace

AutostartLoginRegistration::AutostartLoginRegistration(std::string executablePath)
    : executablePath(std::move(executablePath)) {}

std::string AutostartLoginRegistration::entryPath() {
    return configHome() + "/autostart/tolvane.desktop";
}

bool AutostartLoginRegistration::isEnabled() {
    QFile file(QString::fromStdString(entryPath()));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray content = file.read(largestEntry);
    return autostartEntryEnabled(std::string_view(content.constData(), size_t(content.size())));
}

bool AutostartLoginRegistration::setEnabled(bool enabled, std::string& failure) {
    const QString path = QString::fromStdString(entryPath());
    if (!enabled) {
        QFile file(path);
        if (!file.exists() || file.remove()) {
            return true;
        }
        failure = file.errorString().toStdString();
        return false;
    }
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        failure = "cannot create " + QFileInfo(path).absolutePath().toStdString();
        return false;
    }
    QSaveFile file(path);
    const std::string text = autostartEntryText(executablePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.data(), qint64(text.size())) < 0 ||
        !file.commit()) {
        failure = file.errorString().toStdString();
        return false;
    }
    return true;
}

} // namespace tolvane::oslinux
