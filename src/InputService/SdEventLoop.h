#pragma once

#include "platform/linux/devices/EventLoop.h"

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

struct sd_event;

namespace tolvane::inputd {

// The service's loop: the device descriptors in an epoll set of its own, with systemd's
// sd-event (the bus, signals, timers, the watchdog) nested in it through sd-event's own
// descriptor. A ready device is read before sd-event is looked at, so a wheel frame that is
// ready always goes before the next bus message, and a frame costs no more than its wait, its
// read() and its write(): sd-event is turned only when one of its sources is ready.
class SdEventLoop final : public oslinux::EventLoop {
public:
    explicit SdEventLoop(sd_event* event);
    ~SdEventLoop() override;

    SdEventLoop(const SdEventLoop&) = delete;
    SdEventLoop& operator=(const SdEventLoop&) = delete;

    void watchReadable(int fd, std::function<void()> onReadable) override;
    void unwatch(int fd) override;

    // One turn: every ready device, then one of sd-event's sources if one is due, after
    // waiting up to timeoutMs (-1: for ever) for either. How many were dispatched, or a
    // negative errno.
    int turn(int timeoutMs);
    // Turns until sd-event is told to exit: its exit code, or a negative errno.
    int run();

private:
    struct Watch {
        int fd;
        std::function<void()> onReadable;
        bool live = true;
    };

    sd_event* event;
    int epollFd;
    bool eventNested = false; // sd-event's descriptor is in the set
    bool armed = false;       // sd-event prepared, its descriptor not yet found ready
    bool finished = false;    // sd-event has dispatched its exit
    std::unordered_map<int, std::unique_ptr<Watch>> watches;
    // Watches ended during a turn, freed at the next: a turn may still hold their readiness.
    std::vector<std::unique_ptr<Watch>> retired;
};

} // namespace tolvane::inputd
