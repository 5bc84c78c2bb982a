#include "TolvaneCore/DesktopScrollSettings.h"

#include "TolvaneCore/SettingsText.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace tolvane {

namespace {

bool isTouchpad(std::string_view deviceName) {
    std::string lower(deviceName);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return lower.find("touchpad") != std::string::npos ||
           lower.find("trackpad") != std::string::npos;
}

// Folds one mouse's value into the answer: any mouse on makes it on.
void fold(std::optional<bool>& answer, std::string_view value) {
    if (value == "true" || value == "false") {
        answer = answer.value_or(false) || value == "true";
    }
}

// The value of the attribute `name` in the text of one XML tag; empty when it has none.
std::string_view attribute(std::string_view tag, std::string_view name) {
    const std::string key = " " + std::string(name) + "=\"";
    const auto start = tag.find(key);
    if (start == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = tag.substr(start + key.size());
    return rest.substr(0, rest.find('"'));
}

} // namespace

ScrollSettingSource scrollSettingSource(std::string_view currentDesktop) {
    const std::string_view first = currentDesktop.substr(0, currentDesktop.find(':'));
    if (first == "KDE") {
        return ScrollSettingSource::kde;
    }
    if (first == "XFCE") {
        return ScrollSettingSource::xfce;
    }
    return ScrollSettingSource::gnome;
}

std::optional<bool> kdeMouseNaturalScroll(std::string_view kcminputrc, bool wayland) {
    const SettingsEntries entries = parseSettingsText(kcminputrc);
    std::optional<bool> answer;
    if (!wayland) {
        const auto mice = entries.find("Mouse/XLbInptNaturalScroll");
        if (mice != entries.end()) {
            fold(answer, mice->second);
        }
        return answer;
    }
    constexpr std::string_view prefix = "Libinput][", key = "/NaturalScroll";
    for (const auto& [name, value] : entries) {
        const std::string_view path(name);
        if (path.size() > prefix.size() + key.size() && path.starts_with(prefix) &&
            path.ends_with(key)) {
            const std::string_view group = path.substr(0, path.size() - key.size());
            if (!isTouchpad(group.substr(group.rfind("][") + 2))) {
                fold(answer, value);
            }
        }
    }
    return answer;
}

std::optional<bool> xfceMouseReverseScrolling(std::string_view pointersXml) {
    std::optional<bool> answer;
    std::string_view device;
    int depth = 0; // of <property> elements
    for (auto open = pointersXml.find('<'); open != std::string_view::npos;
         open = pointersXml.find('<', open + 1)) {
        const auto close = pointersXml.find('>', open);
        if (close == std::string_view::npos) {
            break;
        }
        const std::string_view tag = pointersXml.substr(open, close - open + 1);
        if (tag.starts_with("</property")) {
            depth = std::max(0, depth - 1);
        } else if (tag.starts_with("<property ")) {
            if (depth == 0) {
                device = attribute(tag, "name");
            } else if (depth == 1 && attribute(tag, "name") == "ReverseScrolling" &&
                       attribute(tag, "type") == "bool" && !isTouchpad(device)) {
                fold(answer, attribute(tag, "value"));
            }
            depth += tag.ends_with("/>") ? 0 : 1;
        }
    }
    return answer;
}

} // namespace tolvane
