// Why a thread: on the loop, every wheel frame costs a wait for readiness, a read() and a
// write(); a thread asleep in read() on the device costs the read() and the write() alone,
// which is all the bare pass-through does. The things easy to get wrong:
//  - Waking a thread asleep in read(): a signal without SA_RESTART makes the read() return
//    EINTR. A signal that lands just before the thread enters read() is spent on nothing, so it
//    is sent again every millisecond until the thread says it has ended.
//  - The signal must interrupt nothing else: uinput gives up a write() with EINTR when a signal
//    comes while it waits for its lock (UinputClone writes again), and the resync runs with the
//    signal deferred (ResyncScope).
//  - O_NONBLOCK belongs to the open file, not the descriptor: the device is blocking only while
//    the thread runs, and is set back before anything else reads it.
#include "InputService/router/ReaderThread.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace tolvane::oslinux {

namespace {

constexpr int wakeSignal = SIGUSR2;

void onWake(int) {}

bool installWakeHandler() {
    static const bool installed = [] {
        struct sigaction action {};
        action.sa_handler = onWake;
        sigemptyset(&action.sa_mask);
        action.sa_flags = 0; // no SA_RESTART
        return ::sigaction(wakeSignal, &action, nullptr) == 0;
    }();
    return installed;
}

void setBlocking(int fd, bool blocking) {
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0) {
        ::fcntl(fd, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
    }
}

} // namespace

ResyncScope::ResyncScope(int fd) : fd(fd), flags(::fcntl(fd, F_GETFL)) {
    sigset_t wake;
    sigemptyset(&wake);
    sigaddset(&wake, wakeSignal);
    ::pthread_sigmask(SIG_BLOCK, &wake, &before);
    if (flags >= 0) {
        ::fcntl(fd, F_SETFL, flags | O_NONBLOCK);
    }
}

ResyncScope::~ResyncScope() {
    if (flags >= 0) {
        ::fcntl(fd, F_SETFL, flags);
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ReaderThread::ReaderThread(int fd, EventLoop& loop, Route route, std::function<void()> ended)
    : fd(fd), loop(loop), route(std::move(route)), ended(std::move(ended)),
      endedFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (endedFd < 0 || !installWakeHandler()) {
        return;
    }
    setBlocking(fd, true);
    try {
        thread = std::thread([this] { read(); });
    } catch (const std::system_error&) {
        setBlocking(fd, false);
        return;
    }
    loop.watchReadable(endedFd, [this] {
        this->loop.unwatch(endedFd);
        const auto end = std::move(this->ended); // it may destroy this
        end();
    });
}

ReaderThread::~ReaderThread() {
    if (endedFd < 0) {
        return;
    }
    loop.unwatch(endedFd);
    if (thread.joinable()) {
        stopping.store(true, std::memory_order_relaxed);
        pollfd done{endedFd, POLLIN, 0};
        do {
            ::pthread_kill(thread.native_handle(), wakeSignal);
        } while (::poll(&done, 1, 1) <= 0);
        thread.join();
        setBlocking(fd, false);
    }
    ::close(endedFd);
}

void ReaderThread::read() {
    sigset_t onlyWake;
    sigfillset(&onlyWake);
    sigdelset(&onlyWake, wakeSignal);
    ::pthread_sigmask(SIG_SETMASK, &onlyWake, nullptr);
    std::array<input_event, batchCapacity> batch; // filled by read() before any use
    while (!stopping.load(std::memory_order_relaxed)) {
        const ssize_t got = ::read(fd, batch.data(), sizeof batch);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0 || !route(batch.data(), static_cast<std::size_t>(got) / sizeof(input_event))) {
            break;
        }
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(endedFd, &one, sizeof one);
}

} // namespace tolvane::oslinux
