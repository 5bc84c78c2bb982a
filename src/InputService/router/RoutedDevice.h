#pragma once

#include "InputService/router/EvdevDevice.h"
#include "InputService/router/ReaderThread.h"
#include "InputService/router/UinputClone.h"
#include "TolvaneCore/DeviceRoles.h"
#include "TolvaneCore/FrameAssembler.h"
#include "TolvaneCore/GrabState.h"
#include "platform/linux/devices/EventLoop.h"

#include <functional>
#include <memory>

namespace tolvane::oslinux {

// One opened device and what the program does with it: taken for its wheel (every frame goes
// on to its clone through the wheel filter), taken for its keys (keys are dropped, the rest
// goes on to its clone when it has one), or only watched until no key is down so it can be
// taken without leaving a key pressed. Its grab follows grabStep(); the owner sets the roles,
// has the clone made and adopted, then calls settle(). Taken for its wheel alone, it is read on
// a thread of its own (ReaderThread) and the loop only hears when that ends; setRoles() stops
// that thread first and settle() starts it again.
class RoutedDevice {
public:
    static constexpr std::size_t batchCapacity = ReaderThread::batchCapacity;

    RoutedDevice(std::string node, std::unique_ptr<EvdevDevice> device, EventLoop& loop,
                 std::function<void(RoutedDevice&)> onReadable);
    ~RoutedDevice();

    RoutedDevice(const RoutedDevice&) = delete;
    RoutedDevice& operator=(const RoutedDevice&) = delete;

    enum class ReadResult { drained, vanished };

    // Reads everything pending and routes it frame by frame. No allocation, no logging.
    ReadResult readPendingEvents();

    // The roles; the filter applies to the wheel role's frames.
    void setRoles(bool wheel, bool keys, FrameAssembler::Filter filter, void* context);
    // Whether the roles want a clone it does not have yet.
    bool needsClone() const { return wantsClone() && !clone; }
    // Takes the clone made for it, if it still needs one (absent where uinput refused).
    void adoptClone(std::unique_ptr<UinputClone> made);
    // Brings the grab, then the clone, in line with the roles. False when they want the device
    // and another program holds it; it is then loose.
    bool settle();
    bool wantsGrab() const { return wheelRole || keyRole; }

    const std::string& node() const { return nodeName; }
    EvdevDevice& evdev() { return *device; }
    const DeviceCapabilities& capabilities() const { return device->capabilities(); }
    GrabState state() const { return grabState; }

private:
    bool wantsClone() const {
        // Held for its keys without a clone only when keys are all it has: never a pointer.
        return wheelRole || (keyRole && keyHoldFor(capabilities()) != KeyHold::keysOnly);
    }
    bool settleGrab();
    void step(GrabEvent event);
    void readOnOwnThread();
    void readOnLoop();
    enum class Routed { routed, resynced, failed };
    Routed route(const input_event* events, std::size_t count);
    // One event read raw: into libevdev's state, then on to the frames.
    void take(const input_event& event);
    void forward(const input_event& event);
    // After SYN_DROPPED: the frame under way dropped, the state libevdev reports sent instead.
    // False when the device is gone.
    bool resync();
    void send(std::span<const InputEvent> frame);

    std::string nodeName;
    std::unique_ptr<EvdevDevice> device;
    EventLoop& loop;
    std::function<void(RoutedDevice&)> onReadable;
    GrabState grabState = GrabState::loose;
    bool wheelRole = false;
    bool keyRole = false;
    std::unique_ptr<UinputClone> clone;
    FrameAssembler frames;                // its held keys and its wheel filter follow the roles
    std::unique_ptr<ReaderThread> reader; // last: it stops before the rest goes
};

} // namespace tolvane::oslinux
