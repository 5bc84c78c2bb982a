#pragma once

#include <optional>

namespace tolvane::platform {

// The desktop's own natural-scroll setting for mice.
class ScrollSetting {
public:
    virtual ~ScrollSetting() = default;

    // Absent when the desktop keeps no such setting.
    virtual std::optional<bool> naturalScroll() = 0;
};

} // namespace tolvane::platform
