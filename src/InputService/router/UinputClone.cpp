// Clones are uinput devices created from the original's libevdev description. The things easy
// to get wrong: a clone that keeps EV_REP makes the kernel auto-repeat its keys on top of the
// repeats already coming from the original, so the clone is made without it; and every clone
// carries Tolvane's mark in its phys, so that no Tolvane takes it for a real device. The
// desktop sets the keyboard's LEDs on the twin, which it takes for the keyboard; uinput hands
// them to the twin's maker on its descriptor, and they go on to the real device from there.
// A twin is destroyed off the loop: the kernel takes a while over each, and a hold of many
// keyboards would otherwise keep the wheel waiting while it ends.
#include "InputService/router/UinputClone.h"

#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>

#include "InputService/router/BackgroundWork.h"
#include "TolvaneCore/DeviceRoles.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tolvane::oslinux {

std::unique_ptr<UinputClone> UinputClone::create(libevdev* original,
                                                 const std::string& uinputPath) {
    const int fd = ::open(uinputPath.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return nullptr;
    }
    libevdev_disable_event_type(original, EV_REP);
    // libevdev leaves the phys out of a clone it makes, so the mark goes in by hand.
    const char* phys = libevdev_get_phys(original);
    ::ioctl(fd, UI_SET_PHYS, markedPhys(phys ? phys : "").c_str());
    libevdev_uinput* device = nullptr;
    const int rc = libevdev_uinput_create_from_device(original, fd, &device);
    if (rc != 0) {
        ::close(fd);
        return nullptr;
    }
    return std::unique_ptr<UinputClone>(new UinputClone(device, fd));
}

UinputClone::UinputClone(libevdev_uinput* device, int uinputFd)
    : device(device), uinputFd(uinputFd) {}

UinputClone::~UinputClone() {
    if (outputLoop) {
        outputLoop->unwatch(uinputFd);
    }
    runInBackground([device = device, fd = uinputFd] {
        libevdev_uinput_destroy(device);
        ::close(fd);
    });
}

void UinputClone::writeFrame(const InputEvent* events, std::size_t count) {
    const std::size_t n = count < frameCapacity ? count : frameCapacity;
    for (std::size_t i = 0; i < n; ++i) {
        out[i].type = events[i].type;
        out[i].code = events[i].code;
        out[i].value = events[i].value;
    }
    // uinput takes a whole frame in one write. It gives up with EINTR, having written nothing,
    // when a signal comes while it waits for its lock (a ReaderThread's stop); no other failure
    // has a remedy.
    while (::write(uinputFd, out.data(), n * sizeof(input_event)) < 0 && errno == EINTR) {
    }
}

void UinputClone::releaseKeysDown(const libevdev* state, bool (*which)(std::uint16_t keyCode)) {
    std::size_t n = 0;
    for (unsigned c = 0; c < KEY_CNT && n + 1 < frameCapacity; ++c) {
        const auto key = static_cast<std::uint16_t>(c);
        if (which(key) && libevdev_get_event_value(state, EV_KEY, c) != 0) {
            out[n++] = input_event{{}, EV_KEY, key, 0};
        }
    }
    if (n == 0) {
        return;
    }
    out[n++] = input_event{{}, EV_SYN, SYN_REPORT, 0};
    [[maybe_unused]] const ssize_t written = ::write(uinputFd, out.data(), n * sizeof(input_event));
}

void UinputClone::passOutputsTo(EventLoop& loop, int deviceFd) {
    outputLoop = &loop;
    outputFd = deviceFd;
    loop.watchReadable(uinputFd, [this] { passOutputs(); });
}

void UinputClone::passOutputs() {
    std::array<input_event, frameCapacity> in{};
    const std::size_t room = (in.size() - 1) * sizeof(input_event); // and the SYN_REPORT after
    for (ssize_t n; (n = ::read(uinputFd, in.data(), room)) > 0;) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < static_cast<std::size_t>(n) / sizeof(input_event); ++i) {
            if (in[i].type == EV_LED || in[i].type == EV_SND) {
                in[kept++] = in[i];
            }
        }
        if (kept > 0) {
            in[kept++] = input_event{{}, EV_SYN, SYN_REPORT, 0};
            [[maybe_unused]] const ssize_t written =
                ::write(outputFd, in.data(), kept * sizeof(input_event));
        }
    }
}

} // namespace tolvane::oslinux
