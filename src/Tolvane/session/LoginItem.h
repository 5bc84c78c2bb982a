#pragma once

namespace tolvane {

namespace platform {
class LoginRegistration;
}

// Launch at login.
namespace LoginItem {
// Reports no outcome: a failure goes to the log only.
void setEnabled(bool enabled, platform::LoginRegistration& registration);
} // namespace LoginItem

} // namespace tolvane
