// Why the devices are not sd-event sources: every turn of sd-event (sd_event_run) prepares
// every source, waits, takes three clock readings, looks at each clock's timers and
// dispatches through its priority queue; on the wheel path that was the layer's largest cost
// of its own, more than reading and filtering the frame. Here the device descriptors sit in
// an epoll set of the loop's own, beside sd-event's descriptor, and sd-event is prepared,
// waited on and dispatched only when that descriptor is ready. The things easy to get wrong:
// sd-event must be prepared before its descriptor is waited on, and left armed until it is
// (its sources do not change in between: the device callbacks never touch sd-event); and the
// router unwatches a device from inside a callback, its own or another's in the same turn,
// so a watch ended in a turn stays allocated, marked dead, until the next.
#include "InputService/SdEventLoop.h"

#include <systemd/sd-event.h>

#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <unistd.h>

namespace tolvane::inputd {

SdEventLoop::SdEventLoop(sd_event* event)
    : event(sd_event_ref(event)), epollFd(::epoll_create1(EPOLL_CLOEXEC)) {
    epoll_event nested{};
    nested.events = EPOLLIN;
    nested.data.ptr = nullptr; // sd-event's own descriptor
    eventNested =
        epollFd >= 0 && ::epoll_ctl(epollFd, EPOLL_CTL_ADD, sd_event_get_fd(event), &nested) == 0;
}

SdEventLoop::~SdEventLoop() {
    if (epollFd >= 0) {
        ::close(epollFd);
    }
    sd_event_unref(event);
}

void SdEventLoop::watchReadable(int fd, std::function<void()> onReadable) {
    unwatch(fd);
    auto watch = std::make_unique<Watch>(Watch{fd, std::move(onReadable)});
    epoll_event readable{};
    readable.events = EPOLLIN;
    readable.data.ptr = watch.get();
    if (::epoll_ctl(epollFd, EPOLL_CTL_ADD, fd, &readable) < 0) {
        return;
    }
    watches[fd] = std::move(watch);
}

void SdEventLoop::unwatch(int fd) {
    const auto found = watches.find(fd);
    if (found == watches.end()) {
        return;
    }
    ::epoll_ctl(epollFd, EPOLL_CTL_DEL, fd, nullptr);
    found->second->live = false;
    retired.push_back(std::move(found->second));
    watches.erase(found);
}

int SdEventLoop::turn(int timeoutMs) {
    if (!eventNested) {
        return -EBADF;
    }
    retired.clear(); // no callback runs now, and the last turn's readiness is spent
    int due = 0;     // sd-event has a source pending already
    if (!armed) {
        due = sd_event_prepare(event);
        if (due < 0) {
            return due;
        }
        armed = due == 0;
    }
    std::array<epoll_event, 16> ready; // filled by epoll_wait() before any use
    const int n = ::epoll_wait(epollFd, ready.data(), static_cast<int>(ready.size()),
                               due > 0 ? 0 : timeoutMs);
    if (n < 0) {
        return errno == EINTR ? 0 : -errno;
    }
    int dispatched = 0;
    bool eventReady = false;
    for (int i = 0; i < n; ++i) {
        auto* watch = static_cast<Watch*>(ready[i].data.ptr);
        if (!watch) {
            eventReady = true;
        } else if (watch->live) {
            watch->onReadable();
            ++dispatched;
        }
    }
    if (eventReady && armed) {
        armed = false;
        due = sd_event_wait(event, 0);
        if (due < 0) {
            return due;
        }
    }
    if (due > 0) {
        const int r = sd_event_dispatch(event);
        if (r < 0) {
            return r;
        }
        ++dispatched;
        finished = sd_event_get_state(event) == SD_EVENT_FINISHED;
    }
    return dispatched;
}

int SdEventLoop::run() {
    while (!finished) {
        if (const int r = turn(-1); r < 0) {
            return r;
        }
    }
    int code = 0;
    sd_event_get_exit_code(event, &code);
    return code;
}

} // namespace tolvane::inputd
