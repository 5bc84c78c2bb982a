#pragma once

#include <string>

namespace tolvane::platform {

// Start of the program at login.
class LoginRegistration {
public:
    virtual ~LoginRegistration() = default;

    virtual bool isEnabled() = 0;

    // False with a description of the failure when the change could not be made.
    virtual bool setEnabled(bool enabled, std::string& failure) = 0;
};

} // namespace tolvane::platform
