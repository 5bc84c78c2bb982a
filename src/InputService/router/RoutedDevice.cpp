// The per-event path of every taken device. Why events are read raw: libevdev hands them out
// one call at a time, each through its queue, its filters and its state, and ends every wake-up
// with a read() that returns -EAGAIN; under the wheel, where a frame is three events, that cost
// more than the router's own code and a system call per frame. Here one read() takes everything
// pending (evdev hands out whole frames only, so a read that does not fill the buffer has emptied
// the queue and the loop will wake again for more), and libevdev is kept only for what it is good
// at: its view of keys, switches, LEDs and axes, MT slots included, fed from the events that change
// it, and its resync. The things easy to get wrong: after SYN_DROPPED the kernel has already thrown
// events away, so the half-read frame and whatever the read holds after the drop are discarded, and
// libevdev's resync (forced, then read with LIBEVDEV_READ_FLAG_SYNC until -EAGAIN) brings the
// clone back to the device's real state from its own, releasing any button whose release was
// lost; that only works while libevdev's state follows every event read. Its queue is empty
// after a resync, so nothing is ever left in it for a later read to miss.
#include "InputService/router/RoutedDevice.h"

#include <libevdev/libevdev.h>

#include <array>
#include <cerrno>
#include <unistd.h>

namespace tolvane::oslinux {

RoutedDevice::RoutedDevice(std::string node, std::unique_ptr<EvdevDevice> device, EventLoop& loop,
                           std::function<void(RoutedDevice&)> onReadable)
    : nodeName(std::move(node)), device(std::move(device)), loop(loop),
      onReadable(std::move(onReadable)) {}

RoutedDevice::~RoutedDevice() {
    readOnLoop();
    step(GrabEvent::unwanted);
}

void RoutedDevice::setRoles(bool wheel, bool keys, FrameAssembler::Filter filter, void* context) {
    readOnLoop();
    wheelRole = wheel;
    keyRole = keys;
    frames.dropKeys = keys;
    frames.filter = wheel ? filter : nullptr;
    frames.filterContext = context;
}

void RoutedDevice::adoptClone(std::unique_ptr<UinputClone> made) {
    if (!made || !needsClone()) {
        return;
    }
    clone = std::move(made);
    libevdev* source = device->evdev();
    if (libevdev_has_event_type(source, EV_LED) || libevdev_has_event_type(source, EV_SND)) {
        // Only then: uinput echoes every EV_MSC written to a clone back to its maker too.
        clone->passOutputsTo(loop, device->fd());
    }
}

bool RoutedDevice::settle() {
    const bool loose = !settleGrab();
    if (!wantsClone()) {
        clone.reset();
    }
    readOnOwnThread();
    return !loose;
}

void RoutedDevice::readOnOwnThread() {
    if (reader || grabState != GrabState::grabbed || !wheelRole || keyRole || !clone) {
        return;
    }
    auto started = std::make_unique<ReaderThread>(
        device->fd(), loop,
        [this](const input_event* events, std::size_t count) {
            return route(events, count) != Routed::failed;
        },
        [this] {
            readOnLoop();
            onReadable(*this); // reads what ended the thread: the device gone, as a rule
        });
    if (started->running()) {
        loop.unwatch(device->fd());
        reader = std::move(started);
    }
}

void RoutedDevice::readOnLoop() {
    if (reader) {
        reader.reset();
        loop.watchReadable(device->fd(), [this] { onReadable(*this); });
    }
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
    std::array<input_event, batchCapacity> batch; // filled by read() before any use
    for (;;) {
        const ssize_t got = ::read(device->fd(), batch.data(), sizeof batch);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno == EAGAIN ? ReadResult::drained : ReadResult::vanished;
        }
        const std::size_t count = static_cast<std::size_t>(got) / sizeof(input_event);
        const Routed routed = route(batch.data(), count);
        if (routed == Routed::failed) {
            return ReadResult::vanished;
        }
        if (routed == Routed::resynced || count < batch.size()) {
            return ReadResult::drained;
        }
    }
}

RoutedDevice::Routed RoutedDevice::route(const input_event* events, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (events[i].type == EV_SYN && events[i].code == SYN_DROPPED) {
            return resync() ? Routed::resynced : Routed::failed;
        }
        take(events[i]);
    }
    return Routed::routed;
}

bool RoutedDevice::resync() {
    const ResyncScope scope(device->fd());
    libevdev* dev = device->evdev();
    frames.dropped();
    input_event event;
    int rc = libevdev_next_event(dev, LIBEVDEV_READ_FLAG_FORCE_SYNC, &event);
    if (rc != LIBEVDEV_READ_STATUS_SYNC) {
        return false;
    }
    while ((rc = libevdev_next_event(dev, LIBEVDEV_READ_FLAG_SYNC, &event)) ==
           LIBEVDEV_READ_STATUS_SYNC) {
        forward(event); // libevdev has applied it to its state itself
    }
    if (rc != -EAGAIN) {
        return false;
    }
    send(frames.resynced());
    return true;
}

void RoutedDevice::take(const input_event& event) {
    switch (event.type) {
    case EV_KEY:
    case EV_ABS:
    case EV_LED:
    case EV_SW:
        // What libevdev's own reading would do: on an MT device ABS_MT_SLOT moves its current
        // slot and the other ABS_MT_ codes land in that slot.
        libevdev_set_event_value(device->evdev(), event.type, event.code, event.value);
        break;
    case EV_REP:
        return; // the clones have no auto-repeat, and libevdev hid these before
    default:
        break;
    }
    forward(event);
}

void RoutedDevice::forward(const input_event& event) {
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
