#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace tolvane::oslinux {

// The one second thread of the program. While any device is held, the main loop proves it
// turns by calling beat(); when no beat has come for `timeout`, the thread lets go of every
// held device so a hung program never leaves the user without keyboard or pointer.
class GrabWatchdog {
public:
    explicit GrabWatchdog(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    ~GrabWatchdog();

    GrabWatchdog(const GrabWatchdog&) = delete;
    GrabWatchdog& operator=(const GrabWatchdog&) = delete;

    // A grabbed descriptor to release on a stall. untrack() must come before the descriptor
    // is closed.
    void track(int fd);
    void untrack(int fd);

    void beat();

    // The descriptors the thread let go of since the last call, for the caller to take back
    // once its loop turns again. Empty unless there was a stall.
    std::vector<int> takeReleased();

private:
    void run();
    void stopThread();
    static std::int64_t nowTicks();

    const std::chrono::milliseconds timeout;
    std::mutex mutex;
    std::condition_variable wake;
    std::vector<int> fds;
    bool stopping = false;
    std::vector<int> released;
    std::atomic<std::int64_t> lastBeat{0};
    std::thread thread;
};

} // namespace tolvane::oslinux
