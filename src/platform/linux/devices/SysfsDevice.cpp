// The mouse monitor needs no access to the input devices: name, ids and capability bitmaps are
// readable by anyone in sysfs. The thing easy to get wrong: the node's name is not the way
// there, since a device root other than /dev links its own names to real nodes; the node's
// device number is (/sys/dev/char/MAJOR:MINOR), and stat() needs no read access either.
#include "platform/linux/devices/SysfsDevice.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tolvane::oslinux {

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
    device.capabilities = capabilitiesFromSysfs([&](const char* file) {
        std::ifstream in(device.identity + "/" + file);
        return std::string(std::istreambuf_iterator<char>(in), {});
    });
    return device;
}

} // namespace tolvane::oslinux
