#pragma once

#include "InputService/CallerChecks.h"
#include "TolvaneCore/InputEvent.h"
#include "TolvaneCore/ServiceCallers.h"

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <utility>
#include <vector>

namespace tolvane::oslinux {
class InputRouter;
}

namespace tolvane::inputd {

inline constexpr const char* serviceName = "org.tolvane.Input1";
inline constexpr const char* servicePath = "/org/tolvane/Input1";

// The service's face on the system bus: each call is authorised by polkit for its caller,
// recorded as that caller's in ServiceCallers, and the router follows what the callers add
// up to. Callers that leave the bus, miss their keep-alive or whose session goes inactive
// lose what was theirs.
class InputBus {
public:
    InputBus(sd_bus* bus, sd_event* event, oslinux::InputRouter& router);
    ~InputBus();

    InputBus(const InputBus&) = delete;
    InputBus& operator=(const InputBus&) = delete;

    // Serves the object and takes the bus name; false when either fails.
    bool publish();

private:
    enum class Call { setInversion, holdKeyboards, releaseKeyboards, listMice };
    using Message = std::shared_ptr<sd_bus_message>;

    static const sd_bus_vtable* methods();
    static int onSetInversion(sd_bus_message* message, void* userdata, sd_bus_error* error);
    static int onHoldKeyboards(sd_bus_message* message, void* userdata, sd_bus_error* error);
    static int onReleaseKeyboards(sd_bus_message* message, void* userdata, sd_bus_error* error);
    static int onListMice(sd_bus_message* message, void* userdata, sd_bus_error* error);
    static int onKeepAlive(sd_bus_message* message, void* userdata, sd_bus_error* error);
    static int onNameOwnerChanged(sd_bus_message* message, void* userdata, sd_bus_error* error);
    static int onExpiry(sd_event_source* source, std::uint64_t usec, void* userdata);
    static int onHoldMade(sd_event_source* source, int fd, std::uint32_t events, void* userdata);
    static void negateWhileInverting(void* context, InputEvent* events, std::size_t count);

    int accept(sd_bus_message* message, Call call, bool flag);
    void authorised(const Message& message, const std::string& sender, Call call, bool flag);
    void perform(const Message& message, const std::string& sender, Call call, bool flag);
    void replyMice(const Message& message);
    // Answers a caller's HoldKeyboards: held, or not, with its part of the hold ended.
    void answerHold(const std::string& sender, const Message& message);
    // Brings the router in line with the callers: the tap, the wheel's sign, the hold.
    void apply();
    void armExpiry();
    MonotonicMs now() const;

    sd_bus* bus;
    sd_event* event;
    oslinux::InputRouter& router;
    CallerChecks checks;
    ServiceCallers callers;
    std::map<std::string, int> authorising; // calls waiting for polkit, by caller
    bool tapping = false;
    std::atomic<bool> inverting{false}; // read by the wheel devices' reader threads
    bool holding = false;               // the router was asked to hold
    bool holdStands = false;            // and has told that it holds
    std::uint64_t holdsAsked = 0;
    std::pair<std::uint64_t, bool> holdMade; // which hold the router last told of, and whether
    std::vector<std::pair<std::string, Message>> holdWaiting; // callers, until holdMade
    int holdMadeFd = -1; // the router's word wakes the bus's side of the loop through it
    sd_event_source* holdMadeSource = nullptr;
    sd_event_source* expiry = nullptr;
    sd_bus_slot* objectSlot = nullptr;
    sd_bus_slot* ownersSlot = nullptr;
};

} // namespace tolvane::inputd
