#include "TolvaneCore/SettingsText.h"

namespace tolvane {

namespace {

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

constexpr std::string_view generalGroup = "General";

} // namespace

SettingsEntries parseSettingsText(std::string_view text) {
    SettingsEntries entries;
    std::string group;
    while (!text.empty()) {
        const auto end = text.find('\n');
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.front() == ';' || line.front() == '#') {
            continue;
        }
        if (line.front() == '[' && line.back() == ']') {
            const std::string_view name = trimmed(line.substr(1, line.size() - 2));
            group = name == generalGroup ? std::string() : std::string(name) + '/';
            continue;
        }
        const auto equals = line.find('=');
        const std::string_view key = trimmed(line.substr(0, equals));
        if (equals == std::string_view::npos || key.empty()) {
            continue;
        }
        std::string_view value = trimmed(line.substr(equals + 1));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
            value = value.substr(1, value.size() - 2);
        }
        entries[group + std::string(key)] = std::string(value);
    }
    return entries;
}

std::string settingsText(const SettingsEntries& entries) {
    std::map<std::string, std::string> groups; // group name -> its lines
    for (const auto& [fullKey, value] : entries) {
        const auto slash = fullKey.rfind('/');
        const std::string group =
            slash == std::string::npos ? std::string(generalGroup) : fullKey.substr(0, slash);
        const std::string key = slash == std::string::npos ? fullKey : fullKey.substr(slash + 1);
        std::string& lines = groups[group];
        lines += key;
        lines += '=';
        lines += value;
        lines += '\n';
    }
    std::string text;
    const auto general = groups.find(std::string(generalGroup));
    if (general != groups.end()) {
        text += "[General]\n";
        text += general->second;
        groups.erase(general);
    }
    for (const auto& [group, lines] : groups) {
        text += text.empty() ? "[" : "\n[";
        text += group;
        text += "]\n";
        text += lines;
    }
    return text;
}

} // namespace tolvane
