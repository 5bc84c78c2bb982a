#pragma once

namespace tolvane {

namespace platform {
class LoginRegistration;
class SystemLog;
} // namespace platform

// Launch at login.
namespace LoginItem {
// Reports no outcome: a failure goes to the system log only.
void setEnabled(bool enabled, platform::LoginRegistration& registration,
                platform::SystemLog& systemLog);
} // namespace LoginItem

} // namespace tolvane
