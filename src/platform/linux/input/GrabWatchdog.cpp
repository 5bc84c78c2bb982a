// EVIOCGRAB holds a device until the descriptor closes, which saves the user when the program
// dies but not when it hangs. The thing easy to get wrong: the thread must never touch a
// descriptor the main thread has already closed (the number may be reused), so tracking and
// releasing happen under one mutex and untrack() comes before close().
#include "platform/linux/input/GrabWatchdog.h"

#include <algorithm>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <syslog.h>
#include <utility>

namespace tolvane::oslinux {

GrabWatchdog::GrabWatchdog(std::chrono::milliseconds timeout) : timeout(timeout) {}

GrabWatchdog::~GrabWatchdog() {
    stopThread();
}

std::int64_t GrabWatchdog::nowTicks() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

void GrabWatchdog::track(int fd) {
    std::lock_guard lock(mutex);
    fds.push_back(fd);
    if (!thread.joinable()) {
        lastBeat = nowTicks();
        stopping = false;
        released.clear();
        thread = std::thread([this] { run(); });
    }
}

void GrabWatchdog::untrack(int fd) {
    {
        std::lock_guard lock(mutex);
        fds.erase(std::remove(fds.begin(), fds.end(), fd), fds.end());
        released.erase(std::remove(released.begin(), released.end(), fd), released.end());
        if (!fds.empty()) {
            return;
        }
    }
    stopThread();
}

void GrabWatchdog::beat() {
    lastBeat = nowTicks();
}

std::vector<int> GrabWatchdog::takeReleased() {
    std::lock_guard lock(mutex);
    return std::exchange(released, {});
}

void GrabWatchdog::stopThread() {
    {
        std::lock_guard lock(mutex);
        stopping = true;
    }
    wake.notify_all();
    if (thread.joinable()) {
        thread.join();
    }
}

void GrabWatchdog::run() {
    const auto limit = std::chrono::duration_cast<std::chrono::steady_clock::duration>(timeout);
    std::unique_lock lock(mutex);
    while (!stopping) {
        wake.wait_for(lock, timeout / 10);
        if (stopping || fds.empty()) {
            continue;
        }
        if (nowTicks() - lastBeat.load() <= limit.count()) {
            continue;
        }
        for (int fd : fds) {
            ::ioctl(fd, EVIOCGRAB, 0);
        }
        syslog(LOG_WARNING, "Tolvane: input loop stalled, released %zu input devices", fds.size());
        released.insert(released.end(), fds.begin(), fds.end());
        fds.clear();
    }
}

} // namespace tolvane::oslinux
