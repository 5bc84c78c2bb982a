// Tolvane's input layer in a process of its own, for the wheel benchmark: every wheel device
// taken and cloned, each frame through the application's wheel filter with inverting on. The
// loop is the kernel tier's plain poll() loop, turned until the process is ended.
#include "TolvaneCore/WheelEvents.h"
#include "kernel/PollLoop.h"
#include "InputService/router/InputRouter.h"

#include <chrono>
#include <cstdio>

namespace {

void invert(void*, tolvane::InputEvent* events, std::size_t count) {
    tolvane::negateWheelAxes(events, count);
}

} // namespace

int main() {
    tolvane::kerneltest::PollLoop loop;
    tolvane::oslinux::InputRouter router(loop);
    if (!router.create(&invert, nullptr)) {
        std::fprintf(stderr, "tolvane-wheel: the wheel devices cannot be taken\n");
        return 1;
    }
    for (;;) {
        loop.turn(std::chrono::milliseconds(-1)); // no timeout: wakes for input only
    }
}
