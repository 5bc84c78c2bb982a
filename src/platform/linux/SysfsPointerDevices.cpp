// The mouse monitor needs names and capabilities only, and sysfs gives them to anyone, so the
// program follows devices without access to a single node. The things easy to get wrong: a
// node's name is reused by the next device plugged in, and a removal can be announced after
// that device's arrival, so a device is known by its sysfs identity, never by its node alone;
// and announcements can be lost (a full queue), after which what is present is read anew.
#include "platform/linux/SysfsPointerDevices.h"

#include "TolvaneCore/DeviceRoles.h"

namespace tolvane::oslinux {

SysfsPointerDevices::SysfsPointerDevices(std::string deviceRoot, Describe describe)
    : root(std::move(deviceRoot)), describe(std::move(describe)) {
    // The watch starts before the first scan, or a device plugged in between the two is never
    // seen; a node reported twice is harmless.
    nodeWatch = watchEventNodes(loop, root,
                                {[this](const std::string& node) { nodeAppeared(node); },
                                 [this](const std::string& node) { nodeVanished(node); },
                                 [this] { reconcile(); }});
    for (const std::string& node : listEventNodes(root)) {
        nodeAppeared(node);
    }
}

SysfsPointerDevices::~SysfsPointerDevices() {
    nodeWatch.reset();
}

std::string SysfsPointerDevices::pathOf(const std::string& node) const {
    return root + "/input/" + node;
}

void SysfsPointerDevices::open(Callbacks given) {
    callbacks = std::move(given);
}

std::vector<platform::PointerDevice> SysfsPointerDevices::current() {
    std::vector<platform::PointerDevice> devices;
    for (const auto& [node, entry] : known) {
        if (entry.pointer) {
            devices.push_back({pathOf(node), entry.properties});
        }
    }
    return devices;
}

void SysfsPointerDevices::nodeAppeared(const std::string& node) {
    std::optional<SysfsDevice> device = describe(pathOf(node));
    if (!device) {
        return; // gone already, or sysfs does not know it; the monitor goes without it
    }
    if (const auto found = known.find(node); found != known.end()) {
        if (found->second.identity == device->identity) {
            return; // announced again, as when its permissions change
        }
        drop(node); // the name of a device gone, reused for a new one
    }
    learn(node, std::move(*device));
}

void SysfsPointerDevices::nodeVanished(const std::string& node) {
    const auto found = known.find(node);
    if (found == known.end()) {
        return;
    }
    // A removal announced after the node's new device was learned is about the device before
    // it: the news of a removal can come after sysfs already shows the node's next device.
    const std::optional<SysfsDevice> now = describe(pathOf(node));
    if (!now || now->identity != found->second.identity) {
        drop(node);
    }
}

void SysfsPointerDevices::reconcile() {
    reconcileNodes(
        root, known, [this](const std::string& node) { drop(node); },
        [this](const std::string& node) { nodeAppeared(node); });
}

void SysfsPointerDevices::learn(const std::string& node, SysfsDevice device) {
    Known& entry = known[node];
    entry.identity = std::move(device.identity);
    entry.properties = pointerPropertiesOf(device.capabilities);
    entry.pointer = matchesPointerUsage(entry.properties) && !isTolvaneClone(device.capabilities);
    if (entry.pointer && callbacks.added) {
        callbacks.added({pathOf(node), entry.properties});
    }
}

void SysfsPointerDevices::drop(const std::string& node) {
    const auto found = known.find(node);
    if (found == known.end()) {
        return;
    }
    const Known entry = std::move(found->second);
    known.erase(found);
    if (entry.pointer && callbacks.removed) {
        callbacks.removed({pathOf(node), entry.properties});
    }
}

} // namespace tolvane::oslinux
