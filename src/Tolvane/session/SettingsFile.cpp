#include "Tolvane/session/SettingsFile.h"

#include "TolvaneCore/SettingsText.h"

#include <QIODevice>

namespace tolvane {

namespace {

// The file is two short lines; a larger one is not Tolvane's and is not read whole.
constexpr qint64 largestFile = qint64(64) * 1024;

bool readPlain(QIODevice& device, QSettings::SettingsMap& map) {
    const QByteArray bytes = device.read(largestFile);
    for (const auto& [key, value] :
         parseSettingsText(std::string_view(bytes.constData(), std::size_t(bytes.size())))) {
        map.insert(QString::fromStdString(key), QString::fromStdString(value));
    }
    return true;
}

bool writePlain(QIODevice& device, const QSettings::SettingsMap& map) {
    SettingsEntries entries;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        entries[entry.key().toStdString()] = entry.value().toString().toStdString();
    }
    const std::string text = settingsText(entries);
    return device.write(text.data(), qint64(text.size())) == qint64(text.size());
}

} // namespace

QSettings::Format plainSettingsFormat() {
    static const QSettings::Format format =
        QSettings::registerFormat(QStringLiteral("conf"), readPlain, writePlain);
    return format;
}

} // namespace tolvane
