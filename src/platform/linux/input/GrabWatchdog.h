#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace tolvane::oslinux {

// The one second thread of the program. While any device is held it waits, in poll(), for
// input on the held devices; input that the main loop has left unread for `timeout` means the
// loop hangs, and the thread lets go of every held device so a hung program never leaves the
// user without keyboard or pointer. While nothing is typed or scrolled it never wakes.
class GrabWatchdog {
public:
    explicit GrabWatchdog(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    ~GrabWatchdog();

    GrabWatchdog(const GrabWatchdog&) = delete;
    GrabWatchdog& operator=(const GrabWatchdog&) = delete;

    // A grabbed descriptor to watch and to release on a stall. untrack() must come before the
    // descriptor is closed.
    void track(int fd);
    void untrack(int fd);

    // Called by the loop each time it reads a held device: proof that it is not stalled.
    void noteRead() { reads.fetch_add(1, std::memory_order_relaxed); }

    // Whether the thread let go of anything since the last takeReleased(); cheap enough for
    // every read.
    bool hasReleased() const { return anyReleased.load(std::memory_order_acquire); }

    // The descriptors the thread let go of since the last call, for the caller to take back
    // now that its loop turns again. Empty unless there was a stall.
    std::vector<int> takeReleased();

private:
    void run();
    void startThread();
    void stopThread();
    void wakeThread();
    bool inputLeftUnread(std::unique_lock<std::mutex>& lock);

    const std::chrono::milliseconds timeout;
    const int wakeFd; // an eventfd that breaks the thread's poll() when the list changes
    std::mutex mutex;
    std::condition_variable changedOrStopping;
    std::vector<int> fds;
    bool changed = false;
    bool stopping = false;
    std::vector<int> released;
    std::atomic<bool> anyReleased{false};
    std::atomic<std::uint64_t> reads{0};
    std::thread thread;
};

} // namespace tolvane::oslinux
