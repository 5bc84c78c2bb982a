#pragma once

#include "platform/ScrollSetting.h"

namespace tolvane::oslinux {

// GNOME's natural-scroll setting for mice, through GIO.
class GSettingsScrollSetting final : public platform::ScrollSetting {
public:
    std::optional<bool> naturalScroll() override;
};

} // namespace tolvane::oslinux
