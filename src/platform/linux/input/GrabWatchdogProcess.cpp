// The watchdog runs in a process of its own because a stopped program (SIGSTOP, a debugger)
// stops every thread it has: only another process can give the devices back then. EVIOCGRAB
// belongs to the open file, so the duplicates this process holds can let go of the program's
// grabs. It sleeps in poll() on them while no input waits, so it costs no wake-up while the
// user does nothing; while input waits it looks every tenth of the timeout whether the program
// has read since, and lets go when input has waited unread for the whole timeout.
//
// The things easy to get wrong: a duplicate keeps the device's file open, so every duplicate
// is closed as soon as the program gives the device up or the device goes; and the process
// was forked from a program with threads, so it takes no lock another thread may have held.
#include "platform/linux/input/GrabWatchdogProcess.h"

#include "TolvaneCore/LogLine.h"

#include <fcntl.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

namespace tolvane::oslinux {

namespace {

using Clock = std::chrono::steady_clock;

struct Held {
    std::uint64_t token;
    int fd;
};

class WatchdogProcess {
public:
    WatchdogProcess(int socket, int notices, WatchdogShared& shared,
                    std::chrono::milliseconds timeout, const std::string& logFile)
        : socket(socket), notices(notices), shared(shared), timeout(timeout),
          step(std::max(timeout / 10, std::chrono::milliseconds(1))), logFile(logFile) {}

    [[noreturn]] void run();

private:
    void receiveCommand();
    void drop(int index);
    bool anyInputWaiting();
    void sample();
    void letGoOfAll();

    const int socket;
    const int notices;
    WatchdogShared& shared;
    const std::chrono::milliseconds timeout;
    const std::chrono::milliseconds step;
    const std::string& logFile;
    Held held[watchdogCapacity];
    int count = 0;
    // While input waits: since when it may have waited unread, the program's read count then,
    // and when it was last looked at.
    bool armed = false;
    Clock::time_point since, lastSample;
    std::uint64_t readsSeen = 0;
};

void WatchdogProcess::run() {
    for (;;) {
        pollfd fds[1 + watchdogCapacity];
        fds[0] = {socket, POLLIN, 0};
        const int watched = armed ? 0 : count;
        for (int i = 0; i < watched; ++i) {
            fds[1 + i] = {held[i].fd, POLLIN, 0};
        }
        int wait = -1;
        if (armed) {
            const auto next = lastSample + step - Clock::now();
            wait =
                int(std::max<long>(0, std::chrono::ceil<std::chrono::milliseconds>(next).count()));
        }
        if (::poll(fds, nfds_t(1) + nfds_t(watched), wait) < 0 && errno != EINTR) {
            ::_exit(1);
        }
        if (fds[0].revents & (POLLHUP | POLLERR | POLLNVAL)) {
            ::_exit(0); // the program closed its end or ended
        }
        if (fds[0].revents & POLLIN) {
            receiveCommand();
            continue; // the list changed: look again
        }
        for (int i = watched - 1; i >= 0; --i) {
            if (fds[1 + i].revents & (POLLERR | POLLHUP | POLLNVAL)) {
                drop(i); // the device went
            } else if ((fds[1 + i].revents & POLLIN) && !armed) {
                armed = true;
                since = lastSample = Clock::now();
                readsSeen = shared.reads.load(std::memory_order_relaxed);
            }
        }
        if (armed && Clock::now() >= lastSample + step) {
            sample();
        }
    }
}

void WatchdogProcess::receiveCommand() {
    WatchdogCommand command{};
    iovec part{&command, sizeof command};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    if (got == 0) {
        ::_exit(0);
    }
    int fd = -1;
    for (cmsghdr* c = CMSG_FIRSTHDR(&message); c; c = CMSG_NXTHDR(&message, c)) {
        if (c->cmsg_level == SOL_SOCKET && c->cmsg_type == SCM_RIGHTS) {
            std::memcpy(&fd, CMSG_DATA(c), sizeof fd);
        }
    }
    if (got != ssize_t(sizeof command)) {
        if (fd >= 0) {
            ::close(fd);
        }
        return;
    }
    if (command.op == WatchdogCommand::track && fd >= 0 && count < watchdogCapacity) {
        held[count++] = {command.token, fd};
        return;
    }
    if (fd >= 0) {
        ::close(fd);
    }
    for (int i = 0; i < count; ++i) {
        if (held[i].token == command.token) {
            drop(i);
            break;
        }
    }
}

void WatchdogProcess::drop(int index) {
    ::close(held[index].fd);
    held[index] = held[--count];
}

bool WatchdogProcess::anyInputWaiting() {
    pollfd fds[watchdogCapacity];
    for (int i = 0; i < count; ++i) {
        fds[i] = {held[i].fd, POLLIN, 0};
    }
    ::poll(fds, nfds_t(count), 0);
    bool waiting = false;
    for (int i = count - 1; i >= 0; --i) {
        if (fds[i].revents & (POLLERR | POLLHUP | POLLNVAL)) {
            drop(i); // a device that went has nothing to read
        } else {
            waiting = waiting || (fds[i].revents & POLLIN);
        }
    }
    return waiting;
}

void WatchdogProcess::sample() {
    const auto now = Clock::now();
    const std::uint64_t reads = shared.reads.load(std::memory_order_relaxed);
    if (!anyInputWaiting()) {
        armed = false;
    } else if (reads != readsSeen) {
        // The program read since the last look; what waits now came after that look at most.
        readsSeen = reads;
        since = lastSample;
    } else if (now - since >= timeout - step) {
        letGoOfAll(); // the next look would come after the timeout
        return;
    }
    lastSample = now;
}

void WatchdogProcess::letGoOfAll() {
    WatchdogReport report{};
    int released = 0; // grabs given back here; after SIGTSTP the program gave them back itself
    for (int i = 0; i < count; ++i) {
        released += ::ioctl(held[i].fd, EVIOCGRAB, 0) == 0;
        report.tokens[report.count++] = held[i].token;
    }
    while (count > 0) {
        drop(count - 1);
    }
    armed = false;
    [[maybe_unused]] ssize_t n =
        ::send(socket, &report, sizeof report, MSG_NOSIGNAL | MSG_DONTWAIT);
    shared.releases.fetch_add(1, std::memory_order_release);
    const std::uint64_t one = 1;
    n = ::write(notices, &one, sizeof one);
    if (released > 0) {
        writeLogLine(logFile,
                     "input loop stalled, released " + std::to_string(released) + " input devices");
    }
}

} // namespace

void runWatchdogProcess(int socket, int notices, WatchdogShared& shared,
                        std::chrono::milliseconds timeout, const std::string& logFile) {
    WatchdogProcess(socket, notices, shared, timeout, logFile).run();
}

void writeLogLine(const std::string& logFile, std::string_view message) {
    if (!logFile.empty()) {
        const int fd = ::open(logFile.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        if (fd >= 0) {
            const std::string line = logFileLine(std::int64_t(std::time(nullptr)), message);
            [[maybe_unused]] const ssize_t n = ::write(fd, line.data(), line.size());
            ::close(fd);
        }
    }
    ::syslog(LOG_WARNING, "%s", systemLogEntry(message).c_str());
}

} // namespace tolvane::oslinux
