#pragma once

#include "platform/InputAccess.h"

#include <string>

namespace tolvane::oslinux {

// Input access is the right to write /dev/uinput and read every /dev/input/event* node.
class DeviceNodeAccess final : public platform::InputAccess {
public:
    explicit DeviceNodeAccess(std::string deviceRoot = "/dev");

    bool isTrusted() override;
    void requestAccess() override;
    bool openHelp() override;
    std::string helpPage() override { return helpPagePath(); }

    // The installed helper that grants access, and the local help page.
    static std::string helperPath();
    static std::string helpPagePath();

private:
    std::string deviceRoot;
};

} // namespace tolvane::oslinux
