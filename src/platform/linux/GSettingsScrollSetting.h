#pragma once

#include "platform/ScrollSetting.h"

#include <sys/types.h>

#include <string>

namespace tolvane::oslinux {

// GNOME's natural-scroll setting for mice, as GIO's `gsettings` tool reads it. The tool starts
// with the object, so that its answer is there by the time it is asked for.
class GSettingsScrollSetting final : public platform::ScrollSetting {
public:
    GSettingsScrollSetting();
    ~GSettingsScrollSetting() override;

    GSettingsScrollSetting(const GSettingsScrollSetting&) = delete;
    GSettingsScrollSetting& operator=(const GSettingsScrollSetting&) = delete;

    // The tool's answer, waited for on the first call; absent when the setting does not exist,
    // the tool is missing, or no answer came within a second.
    std::optional<bool> naturalScroll() override;

private:
    void endReader();

    pid_t reader = -1;
    int output = -1; // the read end of the tool's standard output
    bool asked = false;
    std::optional<bool> value;
};

} // namespace tolvane::oslinux
