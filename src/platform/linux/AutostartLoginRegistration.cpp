// Launch at login is a desktop entry in the user's autostart folder. It is written through a
// temporary file and a rename, so a crash or a full disk never leaves half an entry that the
// session would try to run. An entry that the user hid with Hidden=true counts as off; a file
// there that is not Tolvane's is the user's own: it counts as off and is never replaced or
// removed, so switching on fails with the reason.
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

std::optional<AutostartEntryState> AutostartLoginRegistration::entryState() {
    const QFileInfo info(QString::fromStdString(entryPath()));
    if (!info.exists() && !info.isSymLink()) {
        return std::nullopt;
    }
    QFile file(info.filePath());
    if (!info.isFile() || info.size() > largestEntry || !file.open(QIODevice::ReadOnly)) {
        return AutostartEntryState::foreign; // a FIFO, a folder, a device: not an entry of ours
    }
    const QByteArray content = file.readAll();
    return autostartEntryState(std::string_view(content.constData(), size_t(content.size())));
}

bool AutostartLoginRegistration::isEnabled() {
    return entryState() == AutostartEntryState::enabled;
}

bool AutostartLoginRegistration::setEnabled(bool enabled, std::string& failure) {
    const QString path = QString::fromStdString(entryPath());
    if (entryState() == AutostartEntryState::foreign) {
        if (enabled) {
            failure = entryPath() + " is not Tolvane's and is left as it is";
        }
        return !enabled;
    }
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
