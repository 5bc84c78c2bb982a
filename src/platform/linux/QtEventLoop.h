#pragma once

#include "platform/linux/devices/EventLoop.h"

#include <functional>
#include <unordered_map>

class QSocketNotifier;

namespace tolvane::oslinux {

// The input layer's loop on Qt's own: one socket notifier per descriptor, on the thread that
// made it.
class QtEventLoop final : public EventLoop {
public:
    QtEventLoop() = default;
    ~QtEventLoop() override;

    void watchReadable(int fd, std::function<void()> onReadable) override;
    void unwatch(int fd) override;

private:
    std::unordered_map<int, QSocketNotifier*> notifiers;
};

} // namespace tolvane::oslinux
