// EVIOCGRAB holds a device until the descriptor closes, which saves the user when the program
// dies but not when it hangs. The thread sleeps in poll() on the held devices, so it costs no
// wake-up while the user does nothing; when input arrives it gives the loop `timeout` to read
// some, and lets go only if none was read and input still waits. The things easy to get
// wrong: the thread must never touch a descriptor the main thread has already closed (the
// number may be reused), so tracking and releasing happen under one mutex and untrack() comes
// before close(); and poll() keeps a reference to each file it waits on, which would keep a
// closed device's file open, so every change of the list breaks the poll at once.
#include "platform/linux/input/GrabWatchdog.h"

#include <algorithm>
#include <linux/input.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

namespace tolvane::oslinux {

GrabWatchdog::GrabWatchdog(std::chrono::milliseconds timeout)
    : timeout(timeout), wakeFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

GrabWatchdog::~GrabWatchdog() {
    stopThread();
    if (wakeFd >= 0) {
        ::close(wakeFd);
    }
}

void GrabWatchdog::track(int fd) {
    {
        std::lock_guard lock(mutex);
        fds.push_back(fd);
        changed = true;
    }
    wakeThread();
    startThread();
}

void GrabWatchdog::untrack(int fd) {
    {
        std::lock_guard lock(mutex);
        fds.erase(std::remove(fds.begin(), fds.end(), fd), fds.end());
        released.erase(std::remove(released.begin(), released.end(), fd), released.end());
        anyReleased = !released.empty();
        changed = true;
        if (!fds.empty()) {
            wakeThread();
            return;
        }
    }
    stopThread();
}

std::vector<int> GrabWatchdog::takeReleased() {
    std::lock_guard lock(mutex);
    anyReleased = false;
    return std::exchange(released, {});
}

void GrabWatchdog::wakeThread() {
    changedOrStopping.notify_all();
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t n = ::write(wakeFd, &one, sizeof one);
}

void GrabWatchdog::startThread() {
    std::lock_guard lock(mutex);
    if (!thread.joinable() && wakeFd >= 0) {
        stopping = false;
        thread = std::thread([this] { run(); });
    }
}

void GrabWatchdog::stopThread() {
    {
        std::lock_guard lock(mutex);
        stopping = true;
    }
    wakeThread();
    if (thread.joinable()) {
        thread.join();
    }
}

// Waits in poll() until a held device has input or the list changes; then true when the
// input is still there, unread, after `timeout`.
bool GrabWatchdog::inputLeftUnread(std::unique_lock<std::mutex>& lock) {
    std::vector<pollfd> watched{{wakeFd, POLLIN, 0}};
    for (int fd : fds) {
        watched.push_back({fd, POLLIN, 0});
    }
    changed = false;
    lock.unlock();
    ::poll(watched.data(), watched.size(), -1);
    lock.lock();
    if (watched[0].revents != 0) {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t n = ::read(wakeFd, &count, sizeof count);
        return false;
    }
    const std::uint64_t readsBefore = reads.load(std::memory_order_relaxed);
    if (changedOrStopping.wait_for(lock, timeout, [this] { return stopping || changed; }) ||
        reads.load(std::memory_order_relaxed) != readsBefore) {
        return false;
    }
    for (pollfd& p : watched) {
        p.revents = 0;
    }
    return ::poll(watched.data() + 1, watched.size() - 1, 0) > 0;
}

void GrabWatchdog::run() {
    std::unique_lock lock(mutex);
    while (!stopping) {
        if (fds.empty()) {
            changedOrStopping.wait(lock, [this] { return stopping || !fds.empty(); });
            continue;
        }
        if (!inputLeftUnread(lock) || stopping) {
            continue;
        }
        for (int fd : fds) {
            ::ioctl(fd, EVIOCGRAB, 0);
        }
        syslog(LOG_WARNING, "Tolvane: input loop stalled, released %zu input devices", fds.size());
        released.insert(released.end(), fds.begin(), fds.end());
        anyReleased = true;
        fds.clear();
    }
}

} // namespace tolvane::oslinux
