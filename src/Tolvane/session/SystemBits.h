#pragma once

namespace tolvane {

namespace platform {
class LoginRegistration;
class ScrollSetting;
class SystemLog;
} // namespace platform

// The desktop's own scroll direction for mice, read once at start.
namespace ScrollBaseline {
// True when natural scrolling is on; a desktop without the setting has it off.
bool naturalOn(platform::ScrollSetting& setting);
} // namespace ScrollBaseline

// Launch at login.
namespace LoginItem {
// Reports no outcome: a failure goes to the system log only.
void setEnabled(bool enabled, platform::LoginRegistration& registration,
                platform::SystemLog& systemLog);
} // namespace LoginItem

} // namespace tolvane
