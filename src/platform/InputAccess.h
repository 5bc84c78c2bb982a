#pragma once

#include <string>

namespace tolvane::platform {

// Whether the input service serves this session, and the ways to bring it or to tell the user
// how to install it.
class InputAccess {
public:
    virtual ~InputAccess() = default;

    virtual bool isTrusted() = 0;

    // Asks the system to start the service where it is installed; returns without waiting.
    virtual void requestAccess() = 0;

    // Opens the help page that tells how to install or start the service; false when no program
    // can open it.
    virtual bool openHelp() = 0;
    // Where that page is, to tell the user when it cannot be opened.
    virtual std::string helpPage() = 0;
};

} // namespace tolvane::platform
