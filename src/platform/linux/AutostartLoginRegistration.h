#pragma once

#include "TolvaneCore/AutostartEntry.h"
#include "platform/LoginRegistration.h"

#include <optional>

namespace tolvane::oslinux {

// The XDG autostart entry $XDG_CONFIG_HOME/autostart/tolvane.desktop.
class AutostartLoginRegistration final : public platform::LoginRegistration {
public:
    // `executablePath` is what the entry starts.
    explicit AutostartLoginRegistration(std::string executablePath);

    bool isEnabled() override;
    bool setEnabled(bool enabled, std::string& failure) override;

    static std::string entryPath();

private:
    static std::optional<AutostartEntryState> entryState(); // absent: no file there
    std::string executablePath;
};

} // namespace tolvane::oslinux
