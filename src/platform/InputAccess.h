#pragma once

#include <string>

namespace tolvane::platform {

// Whether the program may read and re-emit input, and the ways to ask the user for it.
class InputAccess {
public:
    virtual ~InputAccess() = default;

    virtual bool isTrusted() = 0;

    // The system's own prompt for access; returns without waiting for it.
    virtual void requestAccess() = 0;

    // Opens the help page that tells how to grant access; false when no program can open it.
    virtual bool openHelp() = 0;
    // Where that page is, to tell the user when it cannot be opened.
    virtual std::string helpPage() = 0;
};

} // namespace tolvane::platform
