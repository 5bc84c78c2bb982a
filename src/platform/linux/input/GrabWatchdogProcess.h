#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace tolvane::oslinux {

// What the program and its watchdog process share: a page of memory, and messages on a
// socket pair. The program counts its reads in the page without a system call; the watchdog
// reads the count to tell a loop that reads from one that stands still.
struct WatchdogShared {
    std::atomic<std::uint64_t> reads{0};
    std::atomic<std::uint32_t> releases{0}; // stalls ended so far
};

// Program to watchdog. A `track` carries a duplicate of the grabbed descriptor.
struct WatchdogCommand {
    enum Op : std::uint32_t { track = 1, untrack = 2 };
    Op op;
    std::uint64_t token;
};

// Watchdog to program, when it has let go: the tokens of the devices it gave back.
inline constexpr int watchdogCapacity = 64;
struct WatchdogReport {
    std::uint32_t count;
    std::uint64_t tokens[watchdogCapacity];
};

// The watchdog process's life: it waits for unread input on the duplicates it holds and lets
// go of them all when the program leaves input unread for `timeout`. Ends when the program
// closes its end of the socket or dies.
[[noreturn]] void runWatchdogProcess(int socket, int notices, WatchdogShared& shared,
                                     std::chrono::milliseconds timeout, const std::string& logFile);

// "{timestamp} {message}" appended to the log file, "Tolvane: {message}" to the system log:
// the log's form, for the two places that cannot reach the program's log (the watchdog
// process, and the watchdog that could not start).
void writeLogLine(const std::string& logFile, std::string_view message);

} // namespace tolvane::oslinux
