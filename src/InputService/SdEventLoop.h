#pragma once

#include "platform/linux/devices/EventLoop.h"

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

struct sd_event;
struct sd_event_source;

namespace tolvane::inputd {

// The device router's loop on systemd's sd-event, beside the bus. Device descriptors run at a
// higher priority than everything else, so a wheel frame that is ready is always read before
// the next bus message.
class SdEventLoop final : public oslinux::EventLoop {
public:
    explicit SdEventLoop(sd_event* event);
    ~SdEventLoop() override;

    SdEventLoop(const SdEventLoop&) = delete;
    SdEventLoop& operator=(const SdEventLoop&) = delete;

    void watchReadable(int fd, std::function<void()> onReadable) override;
    void unwatch(int fd) override;

private:
    struct Watch {
        SdEventLoop* loop;
        sd_event_source* source = nullptr;
        std::function<void()> onReadable;
    };
    static int dispatch(sd_event_source* source, int fd, unsigned revents, void* userdata);

    sd_event* event;
    std::unordered_map<int, std::unique_ptr<Watch>> watches;
    // Watches ended from inside a callback, freed once that callback has returned.
    std::vector<std::unique_ptr<Watch>> retired;
};

} // namespace tolvane::inputd
