#pragma once

namespace tolvane::platform {

// Exclusive hold of every keyboard and media-key device, present and future, whose events are
// read and dropped. Power and sleep buttons and switches are never held, and pointers keep
// working.
class KeyboardGrab {
public:
    virtual ~KeyboardGrab() = default;

    // False, with nothing held, when the devices cannot be opened or taken.
    virtual bool grab() = 0;
    virtual void release() = 0;
};

} // namespace tolvane::platform
