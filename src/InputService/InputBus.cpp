// The service's calls on the system bus. The things easy to get wrong: a method handler must
// not wait for polkit, so it keeps a reference to the call, returns, and answers when polkit
// has; by then the caller may be gone, which NameOwnerChanged has already told. A hold is
// answered once the router has taken the keyboards, which may be turns later; the router tells
// that from the devices' side of the loop, where sd-event must not be touched, so its word comes
// through an eventfd that sd-event watches.
#include "InputService/InputBus.h"

#include "InputService/router/InputRouter.h"
#include "TolvaneCore/Utf8Text.h"
#include "TolvaneCore/WheelEvents.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <ctime>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tolvane::inputd {

namespace {

constexpr int maxAuthorisingPerCaller = 4;
constexpr const char* errorNotAuthorized = "org.tolvane.Input1.Error.NotAuthorized";
constexpr const char* errorNoKeyboard = "org.tolvane.Input1.Error.NoKeyboard";
constexpr const char* errorUnavailable = "org.tolvane.Input1.Error.Unavailable";
constexpr const char* errorNotHeld = "org.tolvane.Input1.Error.NotHeld";

} // namespace

InputBus::InputBus(sd_bus* bus, sd_event* event, oslinux::InputRouter& router)
    : bus(bus), event(event), router(router), checks(bus) {}

InputBus::~InputBus() {
    if (tapping) {
        router.stopTap(); // the wheel's reader threads call into this
    }
    sd_event_source_disable_unref(holdMadeSource);
    if (holdMadeFd >= 0) {
        ::close(holdMadeFd);
    }
    sd_event_source_disable_unref(expiry);
    sd_bus_slot_unref(objectSlot);
    sd_bus_slot_unref(ownersSlot);
}

bool InputBus::publish() {
    holdMadeFd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const bool served =
        holdMadeFd >= 0 &&
        sd_event_add_io(event, &holdMadeSource, holdMadeFd, EPOLLIN, &InputBus::onHoldMade, this) >=
            0 &&
        sd_bus_add_object_vtable(bus, &objectSlot, servicePath, serviceName, methods(), this) >=
            0 &&
        sd_bus_match_signal_async(bus, &ownersSlot, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "NameOwnerChanged",
                                  &InputBus::onNameOwnerChanged, nullptr, this) >= 0 &&
        checks.followSessions([this](const std::string& session, bool active) {
            callers.sessionActivity(session, active);
            apply();
        }) &&
        sd_event_add_time(event, &expiry, CLOCK_MONOTONIC, 0, 10'000, &InputBus::onExpiry, this) >=
            0;
    if (!served) {
        return false;
    }
    sd_event_source_set_enabled(expiry, SD_EVENT_OFF);
    // Below the bus: after a long turn (a hold of many keyboards) the keep-alives that came
    // meanwhile are read before a hold is judged silent.
    sd_event_source_set_priority(expiry, SD_EVENT_PRIORITY_IDLE);
    // Taken last: a client that sees the name finds every call served.
    return sd_bus_request_name(bus, serviceName, 0) >= 0;
}

// The clock itself, not the loop's turn: a turn that took long must not age what it records.
MonotonicMs InputBus::now() const {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return MonotonicMs(std::int64_t(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000);
}

int InputBus::onSetInversion(sd_bus_message* message, void* userdata, sd_bus_error*) {
    int flag = 0;
    if (const int r = sd_bus_message_read(message, "b", &flag); r < 0) {
        return r;
    }
    return static_cast<InputBus*>(userdata)->accept(message, Call::setInversion, flag != 0);
}

int InputBus::onHoldKeyboards(sd_bus_message* message, void* userdata, sd_bus_error*) {
    return static_cast<InputBus*>(userdata)->accept(message, Call::holdKeyboards, false);
}

int InputBus::onReleaseKeyboards(sd_bus_message* message, void* userdata, sd_bus_error*) {
    return static_cast<InputBus*>(userdata)->accept(message, Call::releaseKeyboards, false);
}

int InputBus::onListMice(sd_bus_message* message, void* userdata, sd_bus_error*) {
    return static_cast<InputBus*>(userdata)->accept(message, Call::listMice, false);
}

// Not asked of polkit: it only keeps up a hold that polkit allowed, and comes twice a second.
int InputBus::onKeepAlive(sd_bus_message* message, void* userdata, sd_bus_error*) {
    auto* self = static_cast<InputBus*>(userdata);
    if (!self->callers.keepAlive(sd_bus_message_get_sender(message), self->now())) {
        return sd_bus_reply_method_errorf(message, errorNotHeld,
                                          "This caller holds no keyboard (any more).");
    }
    self->armExpiry();
    return sd_bus_reply_method_return(message, "");
}

int InputBus::accept(sd_bus_message* message, Call call, bool flag) {
    const char* senderName = sd_bus_message_get_sender(message);
    if (!senderName) {
        return sd_bus_reply_method_errorf(message, errorNotAuthorized, "A call without a sender.");
    }
    std::string sender = senderName;
    int& waiting = authorising[sender];
    if (waiting >= maxAuthorisingPerCaller || !callers.admit(sender)) {
        if (waiting == 0) {
            authorising.erase(sender);
        }
        return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_LIMITS_EXCEEDED,
                                          "Too many callers or calls at once; try again later.");
    }
    ++waiting;
    Message kept(sd_bus_message_ref(message), &sd_bus_message_unref);
    checks.authorize(sender, [this, kept, sender, call, flag](bool allowed) {
        const auto found = authorising.find(sender);
        if (found == authorising.end()) {
            return; // the caller left meanwhile; nobody waits for the answer
        }
        if (--found->second == 0) {
            authorising.erase(found);
        }
        if (!allowed) {
            if (callers.idle(sender)) {
                callers.forget(sender);
            }
            sd_bus_reply_method_errorf(kept.get(), errorNotAuthorized,
                                       "Only the active local session may use the input "
                                       "service (polkit action %s).",
                                       polkitAction);
            return;
        }
        authorised(kept, sender, call, flag);
    });
    return 1;
}

void InputBus::authorised(const Message& message, const std::string& sender, Call call, bool flag) {
    if (callers.hasSession(sender)) {
        perform(message, sender, call, flag);
        return;
    }
    checks.findSession(
        sender, [this, message, sender, call, flag](const std::string& session, bool active) {
            if (!callers.knows(sender)) {
                return;
            }
            callers.setSession(sender, session, active);
            perform(message, sender, call, flag);
        });
}

void InputBus::perform(const Message& message, const std::string& sender, Call call, bool flag) {
    switch (call) {
    case Call::setInversion:
        callers.setInversion(sender, flag);
        apply();
        if (callers.effect().tap && !tapping) {
            callers.stopTap(sender);
            sd_bus_reply_method_errorf(message.get(), errorUnavailable,
                                       "The input devices or /dev/uinput cannot be opened.");
            return;
        }
        break;
    case Call::holdKeyboards:
        callers.hold(sender, now());
        apply();
        if (holdStands || !callers.holds(sender)) {
            answerHold(sender, message);
            apply();
        } else {
            holdWaiting.emplace_back(sender, message); // answered once the router has told
        }
        armExpiry();
        return;
    case Call::releaseKeyboards:
        callers.release(sender);
        apply();
        break;
    case Call::listMice:
        replyMice(message);
        return;
    }
    sd_bus_reply_method_return(message.get(), "");
}

void InputBus::replyMice(const Message& message) {
    sd_bus_message* reply = nullptr;
    bool built = sd_bus_message_new_method_return(message.get(), &reply) >= 0 &&
                 sd_bus_message_open_container(reply, 'a', "(ss)") >= 0;
    for (const DeviceProperties& device : router.pointers()) {
        const bool mouse = device.primaryUsage == usageMouse;
        const std::string name = withValidUtf8(device.product.value_or(""));
        built = built && sd_bus_message_append(reply, "(ss)", mouse ? "mouse" : "pointer",
                                               name.c_str()) >= 0;
    }
    if (built && sd_bus_message_close_container(reply) >= 0) {
        sd_bus_send(bus, reply, nullptr);
    }
    sd_bus_message_unref(reply);
}

int InputBus::onNameOwnerChanged(sd_bus_message* message, void* userdata, sd_bus_error*) {
    auto* self = static_cast<InputBus*>(userdata);
    const char *name = nullptr, *before = nullptr, *after = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &after) < 0 || *after != '\0') {
        return 0;
    }
    self->authorising.erase(name);
    if (self->callers.knows(name)) {
        self->callers.forget(name);
        self->apply();
    }
    return 0;
}

int InputBus::onHoldMade(sd_event_source*, int fd, std::uint32_t, void* userdata) {
    auto* self = static_cast<InputBus*>(userdata);
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t read = ::read(fd, &count, sizeof count);
    const auto [asked, held] = self->holdMade;
    if (asked == self->holdsAsked) { // else about a hold let go of and asked for again since
        self->holdStands = held && self->holding;
        for (const auto& [sender, message] : std::exchange(self->holdWaiting, {})) {
            self->answerHold(sender, message);
        }
        self->apply();
    }
    return 0;
}

void InputBus::answerHold(const std::string& sender, const Message& message) {
    if (holdStands && callers.holds(sender)) {
        callers.keepAlive(sender, now()); // its keep-alives start with the answer
        sd_bus_reply_method_return(message.get(), "");
        return;
    }
    callers.release(sender);
    sd_bus_reply_method_errorf(message.get(), errorNoKeyboard, "No keyboard could be held.");
}

int InputBus::onExpiry(sd_event_source*, std::uint64_t, void* userdata) {
    auto* self = static_cast<InputBus*>(userdata);
    self->callers.expireHolds(self->now());
    self->apply();
    return 0;
}

void InputBus::negateWhileInverting(void* context, InputEvent* events, std::size_t count) {
    if (static_cast<const InputBus*>(context)->inverting.load(std::memory_order_relaxed)) {
        negateWheelAxes(events, count);
    }
}

void InputBus::apply() {
    const InputEffect wanted = callers.effect();
    inverting.store(wanted.inverting, std::memory_order_relaxed);
    if (wanted.tap && !tapping) {
        tapping = router.create(&InputBus::negateWhileInverting, this);
    } else if (!wanted.tap && tapping) {
        router.stopTap();
        tapping = false;
    }
    if (wanted.hold && !holding) {
        holding = true;
        holdStands = false;
        router.hold([this, asked = ++holdsAsked](bool held) {
            holdMade = {asked, held};
            const std::uint64_t one = 1;
            [[maybe_unused]] const ssize_t written = ::write(holdMadeFd, &one, sizeof one);
        });
    } else if (!wanted.hold && holding) {
        router.release();
        holding = false;
        holdStands = false;
    }
    armExpiry();
}

// Armed only while a hold stands: an idle service has no timer at all. Not while a hold is
// being made either: its callers' keep-alives begin with its answer.
void InputBus::armExpiry() {
    const auto next = callers.nextExpiry();
    if (!next || !holdWaiting.empty()) {
        sd_event_source_set_enabled(expiry, SD_EVENT_OFF);
        return;
    }
    sd_event_source_set_time(expiry, std::uint64_t(*next) * 1000);
    sd_event_source_set_enabled(expiry, SD_EVENT_ONESHOT);
}

const sd_bus_vtable* InputBus::methods() {
    static const sd_bus_vtable table[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("SetInversion", "b", "", &InputBus::onSetInversion,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("HoldKeyboards", "", "", &InputBus::onHoldKeyboards,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("KeepAlive", "", "", &InputBus::onKeepAlive, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("ReleaseKeyboards", "", "", &InputBus::onReleaseKeyboards,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("ListMice", "", "a(ss)", &InputBus::onListMice, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    return table;
}

} // namespace tolvane::inputd
