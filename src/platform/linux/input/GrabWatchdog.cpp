// The program's side of the watchdog: it starts the watchdog process, hands it a duplicate of
// each grabbed descriptor and counts reads in the page they share. The things easy to get
// wrong: the process is forked while the program may have threads, so it must be started
// before the first device is opened (or it would inherit that device's file and keep it
// open), and it ends with the program (PR_SET_PDEATHSIG), so its duplicates never outlive
// the grabs they guard.
#include "platform/linux/input/GrabWatchdog.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tolvane::oslinux {

namespace {

// Closes every descriptor from 3 on but `a` and `b`.
void closeAllBut(int a, int b) {
    const unsigned low = unsigned(std::min(a, b)), high = unsigned(std::max(a, b));
    ::close_range(3, low - 1, 0);
    ::close_range(low + 1, high - 1, 0);
    ::close_range(high + 1, ~0U, 0);
}

} // namespace

GrabWatchdog::GrabWatchdog(std::chrono::milliseconds timeout, std::string logFile)
    : timeout(timeout), logFile(std::move(logFile)) {
    StopSignals::install();
    notices = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (notices >= 0 && !StopSignals::addNotice(notices)) {
        writeLogLine(this->logFile, "input stop signals not followed: too many input layers");
    }
    startProcess();
}

GrabWatchdog::~GrabWatchdog() {
    for (const auto& [fd, token] : tracked) {
        StopSignals::removeHeld(fd);
    }
    if (socket >= 0) {
        ::close(socket); // the watchdog process ends on this
    }
    if (child > 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
    if (shared) {
        ::munmap(shared, sizeof *shared);
    }
    if (notices >= 0) {
        StopSignals::removeNotice(notices);
        ::close(notices);
    }
}

void GrabWatchdog::startProcess() {
    int ends[2] = {-1, -1};
    void* page = MAP_FAILED;
    const char* failed = nullptr;
    if (notices < 0) {
        failed = "eventfd";
    } else if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        failed = "socketpair";
    } else if ((page = ::mmap(nullptr, sizeof(WatchdogShared), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0)) == MAP_FAILED) {
        failed = "mmap";
    }
    if (!failed) {
        shared = new (page) WatchdogShared;
    }
    const pid_t parent = ::getpid();
    const pid_t forked = failed ? -1 : ::fork();
    if (forked == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) {
            ::_exit(0);
        }
        ::setpgid(0, 0); // out of the terminal's job control: Ctrl+Z stops the program only
        ::signal(SIGTSTP, SIG_IGN);
        ::signal(SIGCONT, SIG_DFL);
        closeAllBut(ends[1], notices); // nothing of the program's files but these two
        runWatchdogProcess(ends[1], notices, *shared, timeout, logFile);
    }
    if (forked < 0) {
        const int error = errno;
        writeLogLine(logFile, std::string("input watchdog not started: ") +
                                  (failed ? failed : "fork") + ": " + std::strerror(error));
        if (ends[0] >= 0) {
            ::close(ends[0]);
            ::close(ends[1]);
        }
        if (page != MAP_FAILED) {
            ::munmap(page, sizeof(WatchdogShared));
        }
        shared = nullptr;
        return;
    }
    ::close(ends[1]);
    socket = ends[0];
    child = forked;
}

void GrabWatchdog::send(WatchdogCommand::Op op, std::uint64_t token, int fd) {
    if (socket < 0) {
        return;
    }
    WatchdogCommand command{op, token};
    iovec part{&command, sizeof command};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (fd >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr* c = CMSG_FIRSTHDR(&message);
        c->cmsg_level = SOL_SOCKET;
        c->cmsg_type = SCM_RIGHTS;
        c->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(c), &fd, sizeof fd);
    }
    [[maybe_unused]] const ssize_t n = ::sendmsg(socket, &message, MSG_NOSIGNAL);
}

void GrabWatchdog::track(int fd) {
    tracked.emplace_back(fd, ++nextToken);
    StopSignals::addHeld(fd);
    send(WatchdogCommand::track, nextToken, fd);
}

void GrabWatchdog::untrack(int fd) {
    const auto entry = std::find_if(tracked.begin(), tracked.end(),
                                    [fd](const auto& held) { return held.first == fd; });
    if (entry != tracked.end()) {
        send(WatchdogCommand::untrack, entry->second, -1);
        forget(std::size_t(entry - tracked.begin()));
    }
}

void GrabWatchdog::forget(std::size_t index) {
    StopSignals::removeHeld(tracked[index].first);
    tracked.erase(tracked.begin() + std::ptrdiff_t(index));
}

bool GrabWatchdog::hasReleased() const {
    return StopSignals::stops() != stopsSeen ||
           (shared && shared->releases.load(std::memory_order_acquire) != releasesSeen);
}

std::vector<int> GrabWatchdog::takeReleased() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t drained = ::read(notices, &count, sizeof count);
    std::vector<int> released;
    if (shared && shared->releases.load(std::memory_order_acquire) != releasesSeen) {
        releasesSeen = shared->releases.load(std::memory_order_acquire);
        WatchdogReport report{};
        while (::recv(socket, &report, sizeof report, MSG_DONTWAIT) > 0) {
            for (std::uint32_t i = 0; i < report.count && i < watchdogCapacity; ++i) {
                for (std::size_t t = 0; t < tracked.size(); ++t) {
                    if (tracked[t].second == report.tokens[i]) {
                        released.push_back(tracked[t].first);
                        forget(t);
                        break;
                    }
                }
            }
        }
    }
    if (StopSignals::stops() != stopsSeen) {
        stopsSeen = StopSignals::stops();
        // Every grab was let go of before the stop; the watchdog process drops its duplicates.
        while (!tracked.empty()) {
            released.push_back(tracked.back().first);
            send(WatchdogCommand::untrack, tracked.back().second, -1);
            forget(tracked.size() - 1);
        }
    }
    return released;
}

} // namespace tolvane::oslinux
