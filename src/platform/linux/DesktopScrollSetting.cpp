// KDE Plasma and XFCE keep the mouse's scroll direction in small files under the user's
// config folder, read here directly: cheaper than their own tools (kreadconfig5,
// xfconf-query), which would start a process and, for xfconf, a D-Bus round trip. What the
// files say is decided in TolvaneCore; only the desktop's name and the reading are here.
#include "platform/linux/DesktopScrollSetting.h"

#include "platform/linux/UserFolders.h"

#include <cstdlib>
#include <fstream>
#include <string>

namespace tolvane::oslinux {

namespace {

// Both files are a few kilobytes; a larger one is read only this far.
constexpr std::size_t largestFile = 1 << 20;

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text;
    char buffer[4096];
    while (file && text.size() < largestFile) {
        file.read(buffer, sizeof buffer);
        text.append(buffer, std::size_t(file.gcount()));
    }
    return text;
}

} // namespace

DesktopScrollSetting::DesktopScrollSetting()
    : source(scrollSettingSource(variable("XDG_CURRENT_DESKTOP"))) {
    if (source == ScrollSettingSource::gnome) {
        gnome = std::make_unique<GSettingsScrollSetting>();
    }
}

std::optional<bool> DesktopScrollSetting::naturalScroll() {
    switch (source) {
    case ScrollSettingSource::kde:
        return kdeMouseNaturalScroll(fileText(configHome() + "/kcminputrc"),
                                     variable("XDG_SESSION_TYPE") == "wayland");
    case ScrollSettingSource::xfce:
        return xfceMouseReverseScrolling(
            fileText(configHome() + "/xfce4/xfconf/xfce-perchannel-xml/pointers.xml"));
    case ScrollSettingSource::gnome:
        break;
    }
    return gnome->naturalScroll();
}

} // namespace tolvane::oslinux
