#pragma once

namespace tolvane::platform {

// The input service's exclusive hold of every keyboard and media-key device, present and future,
// whose events it reads and drops. Power and sleep buttons and switches are never held, and
// pointers keep working.
class KeyboardGrab {
public:
    virtual ~KeyboardGrab() = default;

    // False, with nothing held, when the service refuses or can take no keyboard.
    virtual bool grab() = 0;
    virtual void release() = 0;
};

} // namespace tolvane::platform
