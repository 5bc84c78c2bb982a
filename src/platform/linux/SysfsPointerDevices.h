#pragma once

#include "platform/PointerDevices.h"
#include "platform/linux/QtEventLoop.h"
#include "platform/linux/devices/NodeWatch.h"
#include "platform/linux/devices/SysfsDevice.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::oslinux {

// The pointing devices behind the event nodes under deviceRoot/input, as sysfs describes them,
// followed on Qt's loop. No node is ever opened: one sysfs cannot describe is left out.
class SysfsPointerDevices final : public platform::PointerDevices {
public:
    using Describe = std::function<std::optional<SysfsDevice>(const std::string& nodePath)>;
    explicit SysfsPointerDevices(std::string deviceRoot = "/dev", Describe describe = describeNode);
    ~SysfsPointerDevices() override;

    SysfsPointerDevices(const SysfsPointerDevices&) = delete;
    SysfsPointerDevices& operator=(const SysfsPointerDevices&) = delete;

    void open(Callbacks callbacks) override;
    std::vector<platform::PointerDevice> current() override;

    // What the node watch announces. A removal may come late, once the node is a new device's.
    void nodeAppeared(const std::string& node);
    void nodeVanished(const std::string& node);
    // After announcements were lost: drops the nodes gone, learns the new ones and those whose
    // name now belongs to another device.
    void reconcile();

private:
    struct Known {
        std::string identity; // sysfs's, which no later device shares
        DeviceProperties properties;
        bool pointer = false;
    };

    std::string pathOf(const std::string& node) const;
    void learn(const std::string& node, SysfsDevice device);
    void drop(const std::string& node);

    const std::string root;
    const Describe describe;
    std::map<std::string, Known> known;
    Callbacks callbacks;
    QtEventLoop loop;
    std::unique_ptr<NodeWatch> nodeWatch; // last: its callbacks reach everything above
};

} // namespace tolvane::oslinux
