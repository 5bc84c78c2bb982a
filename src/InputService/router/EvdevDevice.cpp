// An evdev node is read through libevdev so that SYN_DROPPED can be resynchronised from the
// kernel's state. The thing easy to get wrong: EVIOCGRAB while a key or button is down leaves
// that key pressed for every other reader, because its release only reaches the grabber; so the
// node is opened for writing too where allowed, and the releases can be written to it first.
#include "InputService/router/EvdevDevice.h"

#include "InputService/router/BackgroundWork.h"

#include <libevdev/libevdev.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

namespace tolvane::oslinux {

std::unique_ptr<EvdevDevice> EvdevDevice::open(const std::string& path) {
    int fd = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 && (errno == EACCES || errno == EPERM || errno == EROFS)) {
        fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
    if (fd < 0) {
        return nullptr;
    }
    libevdev* dev = nullptr;
    const int rc = libevdev_new_from_fd(fd, &dev);
    if (rc < 0) {
        ::close(fd);
        errno = -rc;
        return nullptr;
    }
    return std::unique_ptr<EvdevDevice>(new EvdevDevice(fd, dev));
}

EvdevDevice::EvdevDevice(int fd, libevdev* dev)
    : descriptor(fd), dev(dev), caps(readCapabilities(dev)) {}

EvdevDevice::~EvdevDevice() {
    libevdev_free(dev);
    closeInBackground(descriptor);
}

bool EvdevDevice::grab() {
    return ::ioctl(descriptor, EVIOCGRAB, 1) == 0;
}

void EvdevDevice::ungrab() {
    ::ioctl(descriptor, EVIOCGRAB, 0);
}

bool EvdevDevice::anyKeyDown() const {
    std::array<unsigned char, KEY_CNT / 8 + 1> down{};
    if (::ioctl(descriptor, EVIOCGKEY(down.size()), down.data()) < 0) {
        return false;
    }
    for (unsigned char byte : down) {
        if (byte != 0) {
            return true;
        }
    }
    return false;
}

bool EvdevDevice::releaseKeysDown() {
    std::array<unsigned char, KEY_CNT / 8 + 1> down{};
    if (::ioctl(descriptor, EVIOCGKEY(down.size()), down.data()) < 0) {
        return false;
    }
    std::vector<input_event> out;
    for (unsigned c = 0; c < KEY_CNT; ++c) {
        if ((down[c / 8] >> (c % 8)) & 1) {
            out.push_back(input_event{{}, EV_KEY, static_cast<std::uint16_t>(c), 0});
        }
    }
    out.push_back(input_event{{}, EV_SYN, SYN_REPORT, 0});
    const auto size = static_cast<ssize_t>(out.size() * sizeof(input_event));
    return ::write(descriptor, out.data(), static_cast<std::size_t>(size)) == size;
}

DeviceCapabilities readCapabilities(const libevdev* dev) {
    DeviceCapabilities caps;
    const char* name = libevdev_get_name(dev);
    caps.name = name ? name : "";
    const char* phys = libevdev_get_phys(dev);
    caps.phys = phys ? phys : "";
    caps.busType = static_cast<std::uint16_t>(libevdev_get_id_bustype(dev));
    caps.vendor = static_cast<std::uint16_t>(libevdev_get_id_vendor(dev));
    caps.product = static_cast<std::uint16_t>(libevdev_get_id_product(dev));
    for (unsigned c = 0; c < caps.rel.size(); ++c) {
        caps.rel[c] = libevdev_has_event_code(dev, EV_REL, c);
    }
    for (unsigned c = 0; c < caps.abs.size(); ++c) {
        caps.abs[c] = libevdev_has_event_code(dev, EV_ABS, c);
    }
    for (unsigned c = 0; c < caps.key.size(); ++c) {
        caps.key[c] = libevdev_has_event_code(dev, EV_KEY, c);
    }
    for (unsigned c = 0; c < caps.sw.size(); ++c) {
        caps.sw[c] = libevdev_has_event_code(dev, EV_SW, c);
    }
    for (unsigned c = 0; c < caps.props.size(); ++c) {
        caps.props[c] = libevdev_has_property(dev, c);
    }
    return caps;
}

} // namespace tolvane::oslinux
