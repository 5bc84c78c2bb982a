#pragma once

#include <functional>

namespace tolvane::oslinux {

// The one loop the input layer runs on: readiness of descriptors and a slow heartbeat. The
// application puts it on Qt's event loop; the kernel tests turn a plain poll() loop. Every
// callback runs on the loop's thread.
class EventLoop {
public:
    virtual ~EventLoop() = default;

    // Calls onReadable each time fd has data, until unwatch(fd). At most one watch per fd.
    virtual void watchReadable(int fd, std::function<void()> onReadable) = 0;

    // Safe from inside that descriptor's own callback.
    virtual void unwatch(int fd) = 0;

    // Calls beat about once a second while set; an empty function stops it.
    virtual void setHeartbeat(std::function<void()> beat) = 0;
};

} // namespace tolvane::oslinux
