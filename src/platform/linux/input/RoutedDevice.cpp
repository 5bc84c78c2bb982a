// The per-event path of every taken device. The thing easy to get wrong: after SYN_DROPPED
// the kernel has already thrown events away, so the half-read frame is discarded and
// libevdev's resync (read with LIBEVDEV_READ_FLAG_SYNC until -EAGAIN) brings the clone back
// to the device's real state, releasing any button whose release was lost.
// Reads go to the kernel only once libevdev's queue is empty: without the blocking flag it
// tries another read() before every event it hands out, three wasted system calls for each
// wheel frame. On this non-blocking descriptor that read ends in -EAGAIN, never waits.
#include "platform/linux/input/RoutedDevice.h"

#include <libevdev/libevdev.h>

#include <cerrno>

namespace tolvane::oslinux {

RoutedDevice::RoutedDevice(std::string node, std::unique_ptr<EvdevDevice> device)
    : nodeName(std::move(node)), device(std::move(device)),
      wheel(hasWheel(this->device->capabilities())) {}

RoutedDevice::ReadResult RoutedDevice::readPendingEvents() {
    libevdev* dev = device->evdev();
    constexpr unsigned normal = LIBEVDEV_READ_FLAG_NORMAL | LIBEVDEV_READ_FLAG_BLOCKING;
    constexpr unsigned resync = LIBEVDEV_READ_FLAG_SYNC | LIBEVDEV_READ_FLAG_BLOCKING;
    unsigned flags = normal;
    input_event event;
    for (;;) {
        const int rc = libevdev_next_event(dev, flags, &event);
        if (rc == LIBEVDEV_READ_STATUS_SUCCESS) {
            take(event);
        } else if (rc == LIBEVDEV_READ_STATUS_SYNC) {
            if (flags == normal) {
                count = 0; // the SYN_DROPPED itself: the frame under way is incomplete
                flags = resync;
            } else {
                take(event);
            }
        } else if (rc == -EAGAIN) {
            if (flags == normal) {
                return ReadResult::drained;
            }
            flags = normal;
            if (count > 0) {
                take(input_event{{}, EV_SYN, SYN_REPORT, 0});
            }
        } else {
            return ReadResult::vanished;
        }
    }
}

void RoutedDevice::take(const input_event& event) {
    if (!grabbed) {
        return; // not taken: every other reader gets the event anyway
    }
    frame[count++] = InputEvent{event.type, event.code, event.value};
    if ((event.type == EV_SYN && event.code == SYN_REPORT) || count == frame.size()) {
        flushFrame();
    }
}

void RoutedDevice::flushFrame() {
    std::size_t n = count;
    count = 0;
    if (keyRole) {
        n = dropSwallowedKeys(frame.data(), n);
    }
    if (filter && wheel) {
        filter(filterContext, frame.data(), n);
    }
    const bool ends = n > 0 && frame[n - 1].type == EV_SYN && frame[n - 1].code == SYN_REPORT;
    if (clone && (carriesInput(frame.data(), n) || (partialSent && ends))) {
        clone->writeFrame(frame.data(), n);
        partialSent = !ends;
    }
}

} // namespace tolvane::oslinux
