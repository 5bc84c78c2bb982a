// The input service's wheel path in a process of its own, for the wheel benchmark: the
// service's router on the service's own loop (SdEventLoop), every wheel device taken and cloned,
// each frame negated. Only the bus is left out: the service reads no bus message while a
// device has input waiting.
#include "InputService/SdEventLoop.h"
#include "InputService/router/InputRouter.h"
#include "TolvaneCore/WheelEvents.h"

#include <systemd/sd-event.h>

#include <cstdio>

namespace {

void invert(void*, tolvane::InputEvent* events, std::size_t count) {
    tolvane::negateWheelAxes(events, count);
}

} // namespace

int main() {
    sd_event* event = nullptr;
    if (sd_event_new(&event) < 0) {
        return 1;
    }
    int status = 1;
    {
        tolvane::inputd::SdEventLoop loop(event);
        tolvane::oslinux::InputRouter router(loop);
        if (router.create(&invert, nullptr)) {
            status = loop.run() < 0 ? 1 : 0;
        } else {
            std::fprintf(stderr, "tolvane-wheel: the wheel devices cannot be taken\n");
        }
    }
    sd_event_unref(event);
    return status;
}
