#pragma once

#include "platform/linux/input/GrabWatchdogProcess.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace tolvane::oslinux {

// Keeps a stopped or hung program from leaving the user without keyboard or pointer.
// - A process of its own (GrabWatchdogProcess.cpp) holds duplicates of the grabbed
//   descriptors and lets go of them all when input has waited unread for `timeout`: a hung
//   loop, SIGSTOP, a debugger.
// - A stop asked for (SIGTSTP, Ctrl+Z) lets go of every grab before the program stops.
// Either way the devices are taken back once the loop turns again: noticeFd() becomes
// readable at once (SIGCONT, or the report of a stall), and hasReleased() says so on the next
// read. Each stall is logged, and so is a watchdog that cannot start.
class GrabWatchdog {
public:
    explicit GrabWatchdog(std::chrono::milliseconds timeout = std::chrono::seconds(10),
                          std::string logFile = {});
    ~GrabWatchdog();

    GrabWatchdog(const GrabWatchdog&) = delete;
    GrabWatchdog& operator=(const GrabWatchdog&) = delete;

    // A grabbed descriptor to watch and to let go of. untrack() comes before close().
    void track(int fd);
    void untrack(int fd);

    // Called by the loop each time it reads a held device: proof that it is not stalled.
    void noteRead() {
        if (shared) {
            shared->reads.fetch_add(1, std::memory_order_relaxed);
        }
    }

    // Whether anything was let go of since the last takeReleased(); cheap enough for every read.
    bool hasReleased() const;

    // The descriptors let go of since the last call, for the caller to take back now that its
    // loop turns again; they are no longer tracked. Empty unless there was a stall or a stop.
    std::vector<int> takeReleased();

    // Readable when the devices may need taking back; the loop watches it and calls
    // takeReleased(), which empties it.
    int noticeFd() const { return notices; }

    // Whether the watchdog process runs.
    bool watching() const { return child > 0; }

private:
    void startProcess();
    void send(WatchdogCommand::Op op, std::uint64_t token, int fd);
    void forget(std::size_t index);

    const std::chrono::milliseconds timeout;
    const std::string logFile;
    int notices = -1;                 // eventfd
    int socket = -1;                  // this end of the socket pair
    WatchdogShared* shared = nullptr; // a shared page
    pid_t child = -1;
    std::vector<std::pair<int, std::uint64_t>> tracked; // descriptor, token
    std::uint64_t nextToken = 0;
    std::uint32_t releasesSeen = 0;
    std::uint32_t stopsSeen = 0;
};

// The stop side: SIGTSTP lets go of every grab of every watchdog in the process before the
// program stops; SIGCONT makes every watchdog's noticeFd() readable. Installed once, by the
// first watchdog; a SIGTSTP that the program was started ignoring stays ignored.
namespace StopSignals {
void install();
bool addNotice(int fd);
void removeNotice(int fd);
bool addHeld(int fd);
void removeHeld(int fd);
std::uint32_t stops();
} // namespace StopSignals

} // namespace tolvane::oslinux
