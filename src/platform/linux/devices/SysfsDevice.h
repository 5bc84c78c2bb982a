#pragma once

#include "TolvaneCore/DeviceCapabilities.h"

#include <optional>
#include <string>

namespace tolvane::oslinux {

// An input device as sysfs describes it: what it can send and `identity`, the path of its
// device in sysfs (…/input/input42), which no later device ever shares.
struct SysfsDevice {
    std::string identity;
    DeviceCapabilities capabilities;
};

// The `identity` of the device behind an event node, found without opening the node. Absent
// when the node is gone (errno ENOENT), is no character device or sysfs does not know it.
std::optional<std::string> sysfsIdentity(const std::string& nodePath);

// The device behind an event node, learned without opening the node, so without access to it.
// Absent as sysfsIdentity() is.
std::optional<SysfsDevice> describeNode(const std::string& nodePath);

} // namespace tolvane::oslinux
