// Ctrl+Z in a terminal stops the program with SIGTSTP, which can be caught: the grabs are let
// go of in the handler itself, before the program stops, so the desktop has the devices back
// at once and not only after the watchdog's timeout. The handler runs on any thread at any
// moment, so the descriptors it uses sit in fixed tables of atomics, and it calls nothing but
// system calls.
#include "platform/linux/input/GrabWatchdog.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tolvane::oslinux::StopSignals {

namespace {

// Each entry holds a descriptor plus one, so that the zero of static storage means empty.
constexpr int slots = 256;
std::atomic<int> held[slots];
std::atomic<int> notices[16];
std::atomic<std::uint32_t> stopCount{0};
std::atomic<bool> installed{false};

bool add(std::atomic<int>* table, int size, int fd) {
    for (int i = 0; i < size; ++i) {
        int empty = 0;
        if (table[i].compare_exchange_strong(empty, fd + 1)) {
            return true;
        }
    }
    return false;
}

void remove(std::atomic<int>* table, int size, int fd) {
    for (int i = 0; i < size; ++i) {
        int present = fd + 1;
        if (table[i].compare_exchange_strong(present, 0)) {
            return;
        }
    }
}

void wakeEveryWatchdog() {
    const std::uint64_t one = 1;
    for (auto& fd : notices) {
        const int notice = fd.load();
        if (notice > 0) {
            [[maybe_unused]] const ssize_t n = ::write(notice - 1, &one, sizeof one);
        }
    }
}

void onContinue(int) {
    const int saved = errno;
    wakeEveryWatchdog();
    errno = saved;
}

void onStop(int) {
    const int saved = errno;
    for (auto& fd : held) {
        const int grabbed = fd.load();
        if (grabbed > 0) {
            ::ioctl(grabbed - 1, EVIOCGRAB, 0);
        }
    }
    stopCount.fetch_add(1);
    // Stop as the default action would, so the shell sees a stop by SIGTSTP; on SIGCONT the
    // program goes on here. In an orphaned process group the kernel drops the stop and the
    // program goes on at once; either way the loop is woken to take the devices back.
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    ::sigaction(SIGTSTP, &action, nullptr);
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGTSTP);
    ::raise(SIGTSTP);
    ::sigprocmask(SIG_UNBLOCK, &stop, nullptr);
    action.sa_handler = onStop;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTSTP, &action, nullptr);
    wakeEveryWatchdog();
    errno = saved;
}

} // namespace

void install() {
    if (installed.exchange(true)) {
        return;
    }
    struct sigaction action {
    }, previous{};
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    action.sa_handler = onContinue;
    ::sigaction(SIGCONT, &action, nullptr);
    if (::sigaction(SIGTSTP, nullptr, &previous) == 0 && previous.sa_handler != SIG_IGN) {
        action.sa_handler = onStop;
        ::sigaction(SIGTSTP, &action, nullptr);
    }
}

bool addNotice(int fd) {
    return add(notices, int(std::size(notices)), fd);
}

void removeNotice(int fd) {
    remove(notices, int(std::size(notices)), fd);
}

bool addHeld(int fd) {
    return add(held, slots, fd);
}

void removeHeld(int fd) {
    remove(held, slots, fd);
}

std::uint32_t stops() {
    return stopCount.load();
}

} // namespace tolvane::oslinux::StopSignals
