#pragma once

#include "InputService/router/EvdevDevice.h"
#include "InputService/router/UinputClone.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tolvane::oslinux {

// Keyboards opened and cloned on the background thread, on their way back to the loop. The
// loop orders one under a number; the thread opens the node, makes the clone, posts both under
// that number and wakes the loop through wakeFd(). Shared by the orders still out, so that it
// outlives the router that made them.
class MadeClones {
public:
    struct Arrival {
        std::uint64_t number = 0;
        std::string node;                    // the node's name, as the order gave it
        std::unique_ptr<EvdevDevice> device; // absent where the node could not be opened
        std::unique_ptr<UinputClone> clone;  // absent where uinput refused
    };

    MadeClones();
    ~MadeClones();
    MadeClones(const MadeClones&) = delete;
    MadeClones& operator=(const MadeClones&) = delete;

    // Readable while arrivals wait to be taken.
    int wakeFd() const { return eventFd; }

    // Has `node` (at nodePath) opened and cloned in the background; returns the order's number.
    static std::uint64_t order(const std::shared_ptr<MadeClones>& to, const std::string& node,
                               const std::string& nodePath, const std::string& uinputPath);

    // On the loop: what has arrived so far, in order.
    std::vector<Arrival> take();

private:
    void post(Arrival arrival);

    const int eventFd;
    std::uint64_t ordered = 0;
    std::mutex mutex;
    std::vector<Arrival> arrived;
};

} // namespace tolvane::oslinux
