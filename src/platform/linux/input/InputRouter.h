#pragma once

#include "platform/PointerDevices.h"
#include "platform/ScrollTap.h"
#include "platform/linux/input/EventLoop.h"
#include "platform/linux/input/GrabWatchdog.h"
#include "platform/linux/input/RoutedDevice.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tolvane::oslinux {

// Knows every input event node, opens the ones some role needs, and keeps each device's grab,
// clone and watch in line with two roles: the wheel tap (every wheel device, from its start
// on) and the keyboard hold (every keyboard and media-key device, while held). The program's
// own clones are known by the node each was given and are never taken or reported.
class InputRouter {
public:
    InputRouter(EventLoop& loop, std::string deviceRoot, GrabWatchdog& watchdog);
    ~InputRouter();

    InputRouter(const InputRouter&) = delete;
    InputRouter& operator=(const InputRouter&) = delete;

    void nodeAppeared(const std::string& node);
    void nodeVanished(const std::string& node);

    // False, with nothing taken, when uinput or an event node cannot be opened or a clone
    // cannot be made. A device another program holds is left to it.
    bool startWheelTap(platform::WheelEventFilter filter, void* context);

    // False, with nothing held, when a node cannot be opened or a keyboard cannot be taken.
    // A keyboard with a key down is taken as soon as its keys are up.
    bool holdKeyboards();
    void releaseKeyboards();
    bool keyboardsHeld() const { return holding; }

    // While the login session is not the active one (another user's is, after a switch of
    // users), every device is let go of and closed; the roles stay and take their devices
    // again once the session is active.
    void setSessionActive(bool active);

    void setPointerCallbacks(platform::PointerDevices::Callbacks callbacks);
    std::vector<platform::PointerDevice> pointerDevices() const;

    // Whether `node` is one of the program's own clones.
    bool isOwnClone(const std::string& node) const { return cloneNodes.count(node) != 0; }

private:
    struct Known {
        std::optional<DeviceCapabilities> capabilities; // absent while unreadable
        DeviceProperties properties;
        bool pointer = false;
        std::unique_ptr<RoutedDevice> routed;
    };
    enum class Outcome { done, refused, failed };

    static bool takesWheel(const Known& entry);
    static bool takesKeys(const Known& entry);
    std::string pathOf(const std::string& node) const;
    bool learn(const std::string& node, Known& known);
    bool allNodesReadable();
    Outcome applyRoles(const std::string& node, Known& known);
    Outcome settle(RoutedDevice& device);
    void takeWhenIdle(RoutedDevice& device);
    void letGo(RoutedDevice& device);
    void watch(RoutedDevice& device);
    void onReadable(RoutedDevice& device);
    void dropClone(RoutedDevice& device);
    void recoverFromStall(const std::vector<int>& released);

    EventLoop& loop;
    const std::string root;
    GrabWatchdog& watchdog;
    std::map<std::string, Known> known;
    std::set<std::string> cloneNodes;
    platform::PointerDevices::Callbacks pointerCallbacks;
    bool tapping = false;
    platform::WheelEventFilter filter = nullptr;
    void* filterContext = nullptr;
    bool holding = false;
    bool sessionActive = true;
};

} // namespace tolvane::oslinux
