#pragma once

#include "TolvaneCore/ExternalMouse.h"

#include <functional>
#include <string>
#include <vector>

namespace tolvane::platform {

// A pointing device as the monitor sees it. `id` is unique among the devices present.
struct PointerDevice {
    std::string id;
    DeviceProperties properties;
};

// Arrival and removal of pointing devices whose usage is Generic Desktop pointer or mouse.
// The program's own virtual devices are never delivered.
class PointerDevices {
public:
    struct Callbacks {
        std::function<void(const PointerDevice&)> added;
        std::function<void(const PointerDevice&)> removed; // with the properties seen on arrival
    };

    virtual ~PointerDevices() = default;

    // Starts following arrivals and removals; callbacks come on the main thread, never
    // from inside this call.
    virtual void open(Callbacks callbacks) = 0;

    // The matching devices present now.
    virtual std::vector<PointerDevice> current() = 0;
};

} // namespace tolvane::platform
