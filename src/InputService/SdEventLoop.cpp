// Readiness of the device descriptors on sd-event. The thing easy to get wrong: the router
// unwatches a device from inside that device's own callback (it vanished), so the callback's
// storage must outlive the call; ended watches are freed at the next dispatch.
#include "InputService/SdEventLoop.h"

#include <systemd/sd-event.h>

#include <sys/epoll.h>

namespace tolvane::inputd {

SdEventLoop::SdEventLoop(sd_event* event) : event(sd_event_ref(event)) {}

SdEventLoop::~SdEventLoop() {
    for (auto& [fd, watch] : watches) {
        sd_event_source_disable_unref(watch->source);
    }
    sd_event_unref(event);
}

void SdEventLoop::watchReadable(int fd, std::function<void()> onReadable) {
    unwatch(fd);
    auto watch = std::make_unique<Watch>(Watch{this, nullptr, std::move(onReadable)});
    if (sd_event_add_io(event, &watch->source, fd, EPOLLIN, &SdEventLoop::dispatch, watch.get()) <
        0) {
        return;
    }
    sd_event_source_set_priority(watch->source, SD_EVENT_PRIORITY_IMPORTANT);
    watches[fd] = std::move(watch);
}

void SdEventLoop::unwatch(int fd) {
    const auto found = watches.find(fd);
    if (found == watches.end()) {
        return;
    }
    found->second->source = sd_event_source_disable_unref(found->second->source);
    retired.push_back(std::move(found->second));
    watches.erase(found);
}

int SdEventLoop::dispatch(sd_event_source*, int, unsigned, void* userdata) {
    auto* watch = static_cast<Watch*>(userdata);
    watch->loop->retired.clear(); // a disabled source is never dispatched: this one is live
    watch->onReadable();
    return 0;
}

} // namespace tolvane::inputd
