#pragma once

#include "platform/linux/input/EventLoop.h"

#include <QTimer>

#include <functional>
#include <unordered_map>

class QSocketNotifier;

namespace tolvane::oslinux {

// The input layer's loop on Qt's own: one socket notifier per descriptor and a one-second
// timer for the heartbeat, all on the thread that made it.
class QtEventLoop final : public EventLoop {
public:
    QtEventLoop();
    ~QtEventLoop() override;

    void watchReadable(int fd, std::function<void()> onReadable) override;
    void unwatch(int fd) override;
    void setHeartbeat(std::function<void()> beat) override;

private:
    std::unordered_map<int, QSocketNotifier*> notifiers;
    QTimer heartbeat;
    std::function<void()> beatCallback;
};

} // namespace tolvane::oslinux
