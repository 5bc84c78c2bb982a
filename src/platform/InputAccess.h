#pragma once

namespace tolvane::platform {

// Whether the program may read and re-emit input, and the ways to ask the user for it.
class InputAccess {
public:
    virtual ~InputAccess() = default;

    virtual bool isTrusted() = 0;

    // The system's own prompt for access; returns without waiting for it.
    virtual void requestAccess() = 0;

    // Opens the help page that tells how to grant access.
    virtual void openHelp() = 0;
};

} // namespace tolvane::platform
