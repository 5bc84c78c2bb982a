#pragma once

#include "platform/linux/devices/EventLoop.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <functional>
#include <linux/input.h>
#include <thread>

namespace tolvane::oslinux {

// A taken device read on a thread of its own, asleep in a blocking read() between frames. What
// each read() returns goes to `route` on that thread; when it returns false, or the read fails
// (the device gone), the thread ends and `ended` runs on the loop. Destroying it stops the
// thread and leaves the descriptor non-blocking again, as it was.
class ReaderThread {
public:
    static constexpr std::size_t batchCapacity = 128; // events per read()
    using Route = std::function<bool(const input_event* events, std::size_t count)>;

    ReaderThread(int fd, EventLoop& loop, Route route, std::function<void()> ended);
    ~ReaderThread();

    ReaderThread(const ReaderThread&) = delete;
    ReaderThread& operator=(const ReaderThread&) = delete;

    // False where the thread could not be started; nothing is read then.
    bool running() const { return thread.joinable(); }

private:
    void read();

    int fd;
    EventLoop& loop;
    Route route;
    std::function<void()> ended;
    int endedFd; // an eventfd, written once by the thread as it ends
    std::atomic<bool> stopping{false};
    std::thread thread;
};

// For its scope, fd reads as on the loop, non-blocking, and the calling thread is not woken by
// a ReaderThread's stop: libevdev's resync drains the device with read()s until EAGAIN, and its
// ioctl() calls are not cut short. The stop waits for the scope's end.
class ResyncScope {
public:
    explicit ResyncScope(int fd);
    ~ResyncScope();

    ResyncScope(const ResyncScope&) = delete;
    ResyncScope& operator=(const ResyncScope&) = delete;

private:
    int fd;
    int flags; // the descriptor's own, put back at the end
    sigset_t before;
};

} // namespace tolvane::oslinux
