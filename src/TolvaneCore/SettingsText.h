#pragma once

#include <map>
#include <string>
#include <string_view>

namespace tolvane {

// The settings file's entries: "key" for the [General] group, "group/key" for the others.
using SettingsEntries = std::map<std::string, std::string>;

// The file's "key=value" lines under "[group]" headers, each value as plain text: nothing is
// decoded, so "@Variant(...)" stays a string that no setting accepts. Blank lines, comments
// (";", "#") and lines without "=" are skipped; a value in double quotes loses them.
SettingsEntries parseSettingsText(std::string_view text);

// The entries as the file holds them: [General] first, then each other group.
std::string settingsText(const SettingsEntries& entries);

} // namespace tolvane
