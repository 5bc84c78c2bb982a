#pragma once

namespace tolvane {

namespace platform {
class ScrollSetting;
}

// The desktop's own scroll direction for mice, read once at start.
namespace ScrollBaseline {
// True when natural scrolling is on; a desktop without the setting has it off.
bool naturalOn(platform::ScrollSetting& setting);
} // namespace ScrollBaseline

} // namespace tolvane
