#pragma once

#include "platform/linux/devices/EventLoop.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tolvane::oslinux {

// Arrival and removal of input event nodes, by node name ("event7"). An arrival may repeat
// for a node already known, for instance when its permissions change. `lost`: announcements
// were lost (a queue overflowed), so what is present must be looked at anew.
struct NodeCallbacks {
    std::function<void(const std::string& node)> appeared;
    std::function<void(const std::string& node)> vanished;
    std::function<void()> lost;
};

class NodeWatch {
public:
    virtual ~NodeWatch() = default;
};

// Follows udevd's announcements, which come after udev has set the node's permissions.
// Absent when this build has no udev or no udevd answers.
std::unique_ptr<NodeWatch> watchNodesWithUdev(EventLoop& loop, NodeCallbacks callbacks);

// Follows the device directory itself; works with no udevd at all. Absent when inotify fails.
std::unique_ptr<NodeWatch> watchNodesWithInotify(EventLoop& loop, const std::string& deviceRoot,
                                                 NodeCallbacks callbacks);

// The watch to use: udevd's where the root is /dev and udevd answers, else the directory's.
std::unique_ptr<NodeWatch> watchEventNodes(EventLoop& loop, const std::string& deviceRoot,
                                           const NodeCallbacks& callbacks);

// The event nodes present now under deviceRoot/input, in number order.
std::vector<std::string> listEventNodes(const std::string& deviceRoot);

bool isEventNodeName(const std::string& name);

// After announcements were lost: `vanished` for each node of `known` (a map keyed by node name)
// that is no longer present, then `appeared` for every node present, in number order.
template <class KnownNodes, class Vanished, class Appeared>
void reconcileNodes(const std::string& deviceRoot, const KnownNodes& known, Vanished vanished,
                    Appeared appeared) {
    const std::vector<std::string> present = listEventNodes(deviceRoot);
    std::vector<std::string> gone;
    for (const auto& [node, entry] : known) {
        if (std::find(present.begin(), present.end(), node) == present.end()) {
            gone.push_back(node);
        }
    }
    for (const std::string& node : gone) {
        vanished(node);
    }
    for (const std::string& node : present) {
        appeared(node);
    }
}

} // namespace tolvane::oslinux
