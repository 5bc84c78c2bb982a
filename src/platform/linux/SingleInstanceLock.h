#pragma once

namespace tolvane::oslinux {

// One Tolvane per user: a second start must leave at once, since two inverters would cancel
// each other out.
class SingleInstanceLock {
public:
    SingleInstanceLock() = default;
    SingleInstanceLock(const SingleInstanceLock&) = delete;
    SingleInstanceLock& operator=(const SingleInstanceLock&) = delete;
    ~SingleInstanceLock();

    // True when this process is the only Tolvane of the user; false when another one runs.
    // A lock that cannot be made at all does not stop the start.
    bool acquire();

private:
    int descriptor = -1;
};

} // namespace tolvane::oslinux
