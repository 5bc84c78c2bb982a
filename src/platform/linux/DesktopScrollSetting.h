#pragma once

#include "TolvaneCore/DesktopScrollSettings.h"
#include "platform/ScrollSetting.h"
#include "platform/linux/GSettingsScrollSetting.h"

#include <memory>

namespace tolvane::oslinux {

// The natural-scroll setting for mice of the desktop the session runs (XDG_CURRENT_DESKTOP):
// KDE Plasma's kcminputrc, XFCE's pointers channel, or GNOME's setting for every other one.
// GNOME's tool is started with the object, so that its answer is there when it is asked for.
class DesktopScrollSetting final : public platform::ScrollSetting {
public:
    DesktopScrollSetting();

    // Absent when the desktop keeps no value for a mouse.
    std::optional<bool> naturalScroll() override;

private:
    ScrollSettingSource source;
    std::unique_ptr<GSettingsScrollSetting> gnome;
};

} // namespace tolvane::oslinux
