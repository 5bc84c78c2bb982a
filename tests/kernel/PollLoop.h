#pragma once

#include "platform/linux/devices/EventLoop.h"

#include <chrono>
#include <functional>
#include <map>

namespace tolvane::kerneltest {

// The input layer's loop as a plain poll() loop, turned by the test itself.
class PollLoop final : public oslinux::EventLoop {
public:
    void watchReadable(int fd, std::function<void()> onReadable) override;
    void unwatch(int fd) override;

    // One wait of at most `timeout`, then every ready callback; returns how many were ready.
    int turn(std::chrono::milliseconds timeout = std::chrono::milliseconds(0));

    // Turns until nothing is ready any more.
    void settle();

    // Turns until `done` or the time is up; returns done().
    bool turnUntil(const std::function<bool()>& done,
                   std::chrono::milliseconds limit = std::chrono::milliseconds(2000));

private:
    struct Watch {
        std::function<void()> callback;
        unsigned generation;
    };
    std::map<int, Watch> watches;
    unsigned generation = 0;
};

} // namespace tolvane::kerneltest
