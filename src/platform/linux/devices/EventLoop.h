#pragma once

#include <functional>

namespace tolvane::oslinux {

// The one loop the input layer runs on: readiness of descriptors. The application puts it on
// Qt's event loop; the kernel tests turn a plain poll() loop. Every callback runs on the
// loop's thread.
class EventLoop {
public:
    virtual ~EventLoop() = default;

    // Calls onReadable each time fd has data, until unwatch(fd). At most one watch per fd.
    virtual void watchReadable(int fd, std::function<void()> onReadable) = 0;

    // Safe from inside that descriptor's own callback.
    virtual void unwatch(int fd) = 0;
};

} // namespace tolvane::oslinux
