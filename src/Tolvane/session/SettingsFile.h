#pragma once

#include "TolvaneCore/SettingsText.h"

#include <QString>

#include <optional>
#include <string>
#include <string_view>

namespace tolvane {

// Tolvane.conf: INI groups of "key=value" lines read as plain text, nothing decoded. It is read
// whole or not at all, and written through a temporary file and a rename, only ever over a
// regular file: a file it could not read whole, or a path that names a FIFO, a device or a
// folder (or a symlink to one), is left as it is, with the reason.
class SettingsFile {
public:
    explicit SettingsFile(QString path);

    // False, with `why`, when something is there that is not read whole as a regular file.
    bool load(std::string& why);
    std::optional<std::string> value(std::string_view key) const;
    void setValue(std::string_view key, std::string_view value);
    // False, with `why`, when the file could not be written or is not to be touched.
    bool save(std::string& why);

    const QString& path() const { return filePath; }

    // A settings file is two short lines; anything past this is not Tolvane's.
    static constexpr qint64 largestFile = qint64(1024) * 1024;

private:
    QString filePath;
    SettingsEntries entries;
    std::string untouchable; // why the file is left as it is; empty when it may be written
};

} // namespace tolvane
