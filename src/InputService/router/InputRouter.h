#pragma once

#include "InputService/router/MadeClones.h"
#include "InputService/router/RoutedDevice.h"
#include "platform/linux/devices/EventLoop.h"
#include "platform/linux/devices/NodeWatch.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tolvane::oslinux {

// The whole input layer on one loop: it follows the event nodes under deviceRoot/input, opens
// the ones some role needs, and keeps each device's grab, clone and watch in line with two
// roles: the wheel tap (every wheel device, from its start on) and the keyboard hold (every
// keyboard and media-key device, while held). Virtual devices marked as Tolvane's clones,
// whoever made them, are never taken or reported. A device left out is told to `log`.
class InputRouter {
public:
    using LogLine = std::function<void(const std::string&)>;
    explicit InputRouter(EventLoop& loop, std::string deviceRoot = "/dev", LogLine log = {});
    ~InputRouter();

    InputRouter(const InputRouter&) = delete;
    InputRouter& operator=(const InputRouter&) = delete;

    // What the node watch announces. A removal may come late, once the node is a new device's.
    void nodeAppeared(const std::string& node);
    void nodeVanished(const std::string& node);
    // After announcements were lost: drops the nodes gone, learns the new ones and those whose
    // name now belongs to another device.
    void reconcile();

    // The wheel tap. False, with nothing taken, when uinput or an event node cannot be opened.
    // A device another program holds is left to it, one uinput will not clone is left out.
    bool create(FrameAssembler::Filter filter, void* context);
    // Lets go of every wheel device the tap alone took.
    void stopTap();

    // The keyboard hold. `done` is told whether it stands once every keyboard is taken or left
    // out: false, with nothing held, when a node cannot be opened or no keyboard can be taken;
    // one another program holds, or uinput will not clone, is left out. A keyboard with a key
    // down is taken as soon as its keys are up. A keyboard's clone is made off the loop, so
    // `done` may come on a later turn; release() before then tells it false.
    void hold(std::function<void(bool held)> done);
    void release();

    // The pointing devices present, clones left out.
    std::vector<DeviceProperties> pointers() const;

private:
    struct Known {
        std::optional<DeviceCapabilities> capabilities; // absent until learned
        std::string identity;                           // sysfs's, where it knows the device
        DeviceProperties properties;
        bool pointer = false;
        std::unique_ptr<RoutedDevice> routed;
        std::uint64_t ordered = 0; // while it is being opened and cloned off the loop
    };
    // refused: another program holds the device; unclonable: uinput will not make its clone;
    // ordered: it is being opened and cloned off the loop.
    enum class Outcome { done, refused, unclonable, failed, ordered };

    static bool takesWheel(const Known& entry);
    static bool takesKeys(const Known& entry);
    std::string pathOf(const std::string& node) const;
    void drop(const std::string& node); // forgets the node's device, its grab and its clone
    bool learn(const std::string& node, Known& known);
    bool allNodesReadable();
    // `made`: the clone made off the loop for it, if any.
    Outcome applyRoles(const std::string& node, Known& known,
                       std::unique_ptr<UinputClone> made = nullptr);
    void route(const std::string& node, Known& known, std::unique_ptr<EvdevDevice> device);
    Outcome settleRoles(Known& known);
    void onReadable(RoutedDevice& device);
    void takeMadeClones();
    // Counts a keyboard the hold waited for, and tells the hold's end once none is left.
    void heldOrLeftOut(const std::string& node, Outcome outcome);
    void finishHoldIfDone();

    EventLoop& loop;
    const std::string root;
    const LogLine log;
    std::map<std::string, Known> known;
    bool tapping = false;
    FrameAssembler::Filter filter = nullptr;
    void* filterContext = nullptr;
    bool holding = false;
    std::function<void(bool)> holdDone; // until the hold has taken or left out every keyboard
    std::set<std::string> holdWaitsFor; // the keyboards being opened and cloned for it
    bool holdTried = false, holdTaken = false;
    std::shared_ptr<MadeClones> madeClones = std::make_shared<MadeClones>();
    std::unique_ptr<NodeWatch> nodeWatch; // last: its callbacks reach everything above
};

} // namespace tolvane::oslinux
