// The per-event path of every taken device. The thing easy to get wrong: after SYN_DROPPED
// the kernel has already thrown events away, so the half-read frame is discarded and
// libevdev's resync (read with LIBEVDEV_READ_FLAG_SYNC until -EAGAIN) brings the clone back
// to the device's real state, releasing any button whose release was lost.
// Reads go to the kernel only once libevdev's queue is empty: without the blocking flag it
// tries another read() before every event it hands out, three wasted system calls for each
// wheel frame. On this non-blocking descriptor that read ends in -EAGAIN, never waits.
#include "InputService/router/RoutedDevice.h"

#include <libevdev/libevdev.h>

#include <cerrno>

namespace tolvane::oslinux {

RoutedDevice::RoutedDevice(std::string node, std::unique_ptr<EvdevDevice> device, EventLoop& loop,
                           std::function<void(RoutedDevice&)> onReadable)
    : nodeName(std::move(node)), device(std::move(device)), loop(loop),
      onReadable(std::move(onReadable)) {}

RoutedDevice::~RoutedDevice() {
    step(GrabEvent::unwanted);
}

void RoutedDevice::setRoles(bool wheel, bool keys, FrameAssembler::Filter filter, void* context) {
    wheelRole = wheel;
    keyRole = keys;
    frames.dropKeys = keys;
    frames.filter = wheel ? filter : nullptr;
    frames.filterContext = context;
}

bool RoutedDevice::makeClone(const std::string& uinputPath) {
    if (!wantsClone() || clone) {
        return true;
    }
    clone = UinputClone::create(device->evdev(), uinputPath);
    libevdev* source = device->evdev();
    if (clone &&
        (libevdev_has_event_type(source, EV_LED) || libevdev_has_event_type(source, EV_SND))) {
        // Only then: uinput echoes every EV_MSC written to a clone back to its maker too.
        clone->passOutputsTo(loop, device->fd());
    }
    return clone != nullptr;
}

bool RoutedDevice::settle() {
    const bool loose = !settleGrab();
    if (!wantsClone()) {
        clone.reset();
    }
    return !loose;
}

bool RoutedDevice::settleGrab() {
    if (!wantsGrab()) {
        step(GrabEvent::unwanted);
        return true;
    }
    if (grabState == GrabState::grabbed) {
        if (keyRole && clone) {
            clone->releaseKeysDown(device->evdev(), &isSwallowedKey);
        }
        return true;
    }
    // The hold takes a keyboard at once, its keys down released for every reader first; where
    // the node cannot be written to, it waits until they are up.
    const bool down = device->anyKeyDown() && !(keyRole && device->releaseKeysDown());
    step(down ? GrabEvent::wantedKeyDown : GrabEvent::wantedIdle);
    return grabState != GrabState::loose;
}

void RoutedDevice::step(GrabEvent event) {
    const GrabStep next = grabStep(grabState, event);
    grabState = next.next;
    const int fd = device->fd();
    if (next.actions & grabUngrab) {
        device->ungrab();
    }
    if (next.actions & grabUnwatch) {
        loop.unwatch(fd);
    }
    if (next.actions & grabTryGrab) {
        // A press may slip in between the first look and the grab: look again after it.
        step(!device->grab()        ? GrabEvent::grabRefused
             : device->anyKeyDown() ? GrabEvent::grabbedKeyDown
                                    : GrabEvent::grabbedIdle);
    }
    if (next.actions & grabWatch) {
        loop.watchReadable(fd, [this] { onReadable(*this); });
    }
}

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
                frames.dropped(); // the SYN_DROPPED itself
                flags = resync;
            } else {
                take(event);
            }
        } else if (rc == -EAGAIN) {
            if (flags == normal) {
                return ReadResult::drained;
            }
            flags = normal;
            send(frames.resynced());
        } else {
            return ReadResult::vanished;
        }
    }
}

void RoutedDevice::take(const input_event& event) {
    if (grabState == GrabState::grabbed) { // not taken: every other reader gets the event anyway
        send(frames.take({event.type, event.code, event.value}));
    }
}

void RoutedDevice::send(std::span<const InputEvent> frame) {
    if (clone && !frame.empty()) {
        clone->writeFrame(frame.data(), frame.size());
    }
}

} // namespace tolvane::oslinux
