// The registry of input nodes and the roles that decide which of them are opened and taken.
// The thing easy to get wrong: clones appear as new input nodes too, this program's and any
// other Tolvane's, and taking one would feed its events back into a chain of clones; they are
// recognised by the mark in their phys, never by name or by the node this program made.
#include "InputService/router/InputRouter.h"

#include "platform/linux/devices/NodeWatch.h"
#include "platform/linux/devices/SysfsDevice.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace tolvane::oslinux {

InputRouter::InputRouter(EventLoop& loop, std::string deviceRoot, LogLine log)
    : loop(loop), root(std::move(deviceRoot)), log(std::move(log)) {
    loop.watchReadable(madeClones->wakeFd(), [this] { takeMadeClones(); });
    // The node watch runs before the first scan, or a device plugged in between the two is
    // never seen; a node reported twice is harmless, as what is known is ignored.
    NodeCallbacks callbacks{[this](const std::string& node) { nodeAppeared(node); },
                            [this](const std::string& node) { nodeVanished(node); },
                            [this] { reconcile(); }};
    nodeWatch = watchEventNodes(loop, root, callbacks);
    for (const std::string& node : listEventNodes(root)) {
        nodeAppeared(node);
    }
}

InputRouter::~InputRouter() {
    loop.unwatch(madeClones->wakeFd());
    nodeWatch.reset();
    for (auto& [node, entry] : known) {
        entry.routed.reset();
    }
}

std::string InputRouter::pathOf(const std::string& node) const {
    return root + "/input/" + node;
}

void InputRouter::nodeAppeared(const std::string& node) {
    if (const auto found = known.find(node); found != known.end() && found->second.capabilities) {
        const auto now = sysfsIdentity(pathOf(node));
        if (!now || *now == found->second.identity) {
            // Announced again, as when its permissions change: the roles may take it now.
            if (!found->second.routed) {
                applyRoles(node, found->second);
            }
            return;
        }
        drop(node); // the name of a device gone, reused for a new one
    }
    Known& entry = known[node];
    if (!learn(node, entry)) {
        if (errno == ENOENT || errno == ENODEV || errno == ENXIO) {
            known.erase(node);
        }
    } else {
        applyRoles(node, entry);
    }
    finishHoldIfDone();
}

void InputRouter::nodeVanished(const std::string& node) {
    const auto found = known.find(node);
    // A removal announced after the node's new device was learned is about the device before
    // it: the news of a removal can come after sysfs already shows the node's next device.
    if (found != known.end() &&
        (found->second.identity.empty() ||
         sysfsIdentity(pathOf(node)) != std::optional(found->second.identity))) {
        drop(node);
        finishHoldIfDone();
    }
}

void InputRouter::drop(const std::string& node) {
    const auto found = known.find(node);
    if (found == known.end()) {
        return;
    }
    found->second.routed.reset();
    known.erase(found);
    heldOrLeftOut(node, Outcome::failed);
}

void InputRouter::reconcile() {
    reconcileNodes(
        root, known, [this](const std::string& node) { drop(node); },
        [this](const std::string& node) { nodeAppeared(node); });
    finishHoldIfDone();
}

bool InputRouter::learn(const std::string& node, Known& entry) {
    // From sysfs, so that the monitor sees devices before access to them is granted; from the
    // node itself where sysfs does not know it.
    if (auto described = describeNode(pathOf(node))) {
        entry.identity = std::move(described->identity);
        entry.capabilities = std::move(described->capabilities);
    } else if (const auto device = errno != ENOENT ? EvdevDevice::open(pathOf(node)) : nullptr) {
        entry.identity.clear();
        entry.capabilities = device->capabilities();
    } else {
        return false;
    }
    entry.properties = pointerPropertiesOf(*entry.capabilities);
    entry.pointer = matchesPointerUsage(entry.properties) && !isTolvaneClone(*entry.capabilities);
    return true;
}

bool InputRouter::allNodesReadable() {
    for (const std::string& node : listEventNodes(root)) {
        // A name whose news has not come yet may be another device's by now: a keyboard
        // unplugged and another plugged in while the announcements lag behind, under load.
        const auto found = known.find(node);
        if (found == known.end() || (!found->second.identity.empty() &&
                                     sysfsIdentity(pathOf(node)) != found->second.identity)) {
            nodeAppeared(node);
        }
    }
    for (auto& [node, entry] : known) {
        if (!entry.capabilities && !learn(node, entry)) {
            return false;
        }
        // access() and not a trial open: closing an evdev descriptor waits for an RCU grace
        // period, which would make every hold cost a few milliseconds per device.
        if (!entry.routed && ::access(pathOf(node).c_str(), R_OK) != 0 && errno != ENOENT) {
            return false;
        }
    }
    return true;
}

bool InputRouter::create(FrameAssembler::Filter wheelFilter, void* context) {
    const int uinput = ::open((root + "/uinput").c_str(), O_RDWR | O_CLOEXEC);
    if (uinput < 0) {
        return false;
    }
    ::close(uinput);
    if (!allNodesReadable()) {
        return false;
    }
    tapping = true;
    filter = wheelFilter;
    filterContext = context;
    for (auto& [node, entry] : known) {
        if (takesWheel(entry) && applyRoles(node, entry) == Outcome::failed) {
            tapping = false;
            for (auto& [other, otherEntry] : known) {
                if (takesWheel(otherEntry)) {
                    applyRoles(other, otherEntry);
                }
            }
            return false;
        }
    }
    finishHoldIfDone();
    return true;
}

void InputRouter::stopTap() {
    tapping = false;
    filter = nullptr;
    filterContext = nullptr;
    for (auto& [node, entry] : known) {
        if (takesWheel(entry)) {
            applyRoles(node, entry);
        }
    }
    finishHoldIfDone();
}

void InputRouter::hold(std::function<void(bool held)> done) {
    if (holding) {
        if (!holdDone) {
            done(true);
            return;
        }
        holdDone = [first = std::move(holdDone), then = std::move(done)](bool held) {
            first(held);
            then(held);
        };
        return;
    }
    if (!allNodesReadable()) {
        done(false);
        return;
    }
    holding = true;
    holdDone = std::move(done);
    // A keyboard another program holds is left to it, and one uinput will not clone is skipped;
    // the hold fails only when there were keyboards and none of them could be taken.
    holdTried = holdTaken = false;
    for (auto& [node, entry] : known) {
        if (takesKeys(entry)) {
            holdTried = true;
            const Outcome outcome = applyRoles(node, entry);
            if (outcome == Outcome::ordered) {
                holdWaitsFor.insert(node);
            }
            holdTaken = holdTaken || outcome == Outcome::done;
        }
    }
    finishHoldIfDone();
}

void InputRouter::release() {
    holding = false;
    holdWaitsFor.clear();
    for (auto& [node, entry] : known) {
        if (takesKeys(entry)) {
            applyRoles(node, entry);
        }
    }
    if (holdDone) {
        std::exchange(holdDone, nullptr)(false);
    }
}

void InputRouter::heldOrLeftOut(const std::string& node, Outcome outcome) {
    if (holdWaitsFor.erase(node) > 0) {
        holdTaken = holdTaken || outcome == Outcome::done;
    }
}

void InputRouter::finishHoldIfDone() {
    if (!holdDone || !holdWaitsFor.empty()) {
        return;
    }
    const bool held = holdTaken || !holdTried;
    auto done = std::exchange(holdDone, nullptr);
    if (!held) {
        release();
    }
    done(held);
}

bool InputRouter::takesWheel(const Known& entry) {
    return entry.capabilities && !isTolvaneClone(*entry.capabilities) &&
           hasWheel(*entry.capabilities);
}

bool InputRouter::takesKeys(const Known& entry) {
    return entry.capabilities && !isTolvaneClone(*entry.capabilities) &&
           keyHoldFor(*entry.capabilities) != KeyHold::none;
}

std::vector<DeviceProperties> InputRouter::pointers() const {
    std::vector<DeviceProperties> devices;
    for (const auto& [node, entry] : known) {
        if (entry.pointer) {
            devices.push_back(entry.properties);
        }
    }
    return devices;
}

} // namespace tolvane::oslinux
