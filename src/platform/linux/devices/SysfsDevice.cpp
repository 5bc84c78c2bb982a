// The mouse monitor needs no access to the input devices: name, ids and capability bitmaps are
// readable by anyone in sysfs. The thing easy to get wrong: the node's name is not the way
// there, since a device root other than /dev links its own names to real nodes; the node's
// device number is (/sys/dev/char/MAJOR:MINOR), and stat() needs no read access either.
#include "platform/linux/devices/SysfsDevice.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace tolvane::oslinux {

namespace {

// A device unplugged while it is described reads as ENODEV; that is an answer, not an error.
std::optional<std::string> attribute(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return std::nullopt;
    }
    std::string text;
    char buffer[4096];
    ssize_t n = 0;
    while ((n = ::read(fd, buffer, sizeof buffer)) > 0 && text.size() < 65536) {
        text.append(buffer, std::size_t(n));
    }
    ::close(fd);
    return n < 0 ? std::nullopt : std::optional(text);
}

} // namespace

std::optional<std::string> sysfsIdentity(const std::string& nodePath) {
    struct stat node {};
    if (::stat(nodePath.c_str(), &node) != 0) {
        return std::nullopt;
    }
    if (!S_ISCHR(node.st_mode)) {
        errno = ENOTTY;
        return std::nullopt;
    }
    const std::string link = "/sys/dev/char/" + std::to_string(major(node.st_rdev)) + ":" +
                             std::to_string(minor(node.st_rdev)) + "/device";
    char resolved[PATH_MAX];
    if (!::realpath(link.c_str(), resolved)) {
        errno = ENODEV;
        return std::nullopt;
    }
    return std::string(resolved);
}

std::optional<SysfsDevice> describeNode(const std::string& nodePath) {
    auto identity = sysfsIdentity(nodePath);
    if (!identity) {
        return std::nullopt;
    }
    SysfsDevice device{std::move(*identity), {}};
    bool gone = false;
    device.capabilities = capabilitiesFromSysfs([&](const char* file) {
        auto text = attribute(device.identity + "/" + file);
        gone = gone || (!text && errno == ENODEV);
        return text.value_or(std::string());
    });
    if (gone) {
        return std::nullopt;
    }
    return device;
}

} // namespace tolvane::oslinux
