#include "Tolvane/session/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace tolvane {

namespace {

// Why `info` is no settings file to read or replace; empty when it is one, or nothing is there.
std::string notRegular(const QFileInfo& info) {
    if (!info.exists()) { // nothing there, or a symlink to nothing: written as a new file
        return "";
    }
    if (!info.isFile()) {
        return "not a regular file";
    }
    if (info.size() > SettingsFile::largestFile) {
        return "larger than " + std::to_string(SettingsFile::largestFile / 1024) + " KiB";
    }
    return "";
}

} // namespace

SettingsFile::SettingsFile(QString path) : filePath(std::move(path)) {}

bool SettingsFile::load(std::string& why) {
    entries.clear();
    const QFileInfo info(filePath);
    untouchable = notRegular(info);
    if (untouchable.empty() && info.exists()) {
        QFile file(filePath);
        if (!file.open(QIODevice::ReadOnly)) {
            untouchable = file.errorString().toStdString();
        } else {
            const QByteArray bytes = file.read(largestFile + 1);
            if (bytes.size() > largestFile) {
                untouchable = "larger than " + std::to_string(largestFile / 1024) + " KiB";
            } else {
                entries = parseSettingsText(std::string_view(bytes.constData(), bytes.size()));
            }
        }
    }
    why = untouchable;
    return untouchable.empty();
}

std::optional<std::string> SettingsFile::value(std::string_view key) const {
    const auto found = entries.find(std::string(key));
    return found == entries.end() ? std::nullopt : std::optional(found->second);
}

void SettingsFile::setValue(std::string_view key, std::string_view value) {
    entries[std::string(key)] = value;
}

bool SettingsFile::save(std::string& why) {
    why = untouchable.empty() ? notRegular(QFileInfo(filePath)) : untouchable;
    if (!why.empty()) {
        return false;
    }
    QDir().mkpath(QFileInfo(filePath).absolutePath());
    QSaveFile file(filePath); // writes through a symlink to its regular target
    file.setDirectWriteFallback(false);
    const std::string text = settingsText(entries);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.data(), qint64(text.size())) < 0 ||
        !file.commit()) {
        why = file.errorString().toStdString();
        return false;
    }
    return true;
}

} // namespace tolvane
