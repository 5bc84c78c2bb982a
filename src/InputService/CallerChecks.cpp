// polkit and logind over the system bus, asynchronously: the service's one loop also carries
// the wheel, so it never waits for an answer. The thing easy to get wrong: polkit must be
// asked about the caller's unique bus name ("system-bus-name"), never about a pid the caller
// states or a pid looked up first, which a process could hand to another before the check.
#include "InputService/CallerChecks.h"

#include <systemd/sd-bus.h>

#include <cstring>
#include <memory>

namespace tolvane::inputd {

namespace {

struct PendingReply {
    std::function<void(sd_bus_message*)> onReply;
};

int replied(sd_bus_message* reply, void* userdata, sd_bus_error*) {
    std::unique_ptr<PendingReply> pending(static_cast<PendingReply*>(userdata));
    pending->onReply(reply);
    return 0;
}

bool failed(sd_bus_message* reply) {
    return sd_bus_message_is_method_error(reply, nullptr) != 0;
}

} // namespace

CallerChecks::~CallerChecks() {
    sd_bus_slot_unref(sessionsSlot);
}

sd_bus_message* CallerChecks::newCall(const char* destination, const char* path,
                                      const char* interface, const char* member) {
    sd_bus_message* call = nullptr;
    if (sd_bus_message_new_method_call(bus, &call, destination, path, interface, member) < 0) {
        return nullptr;
    }
    return call;
}

void CallerChecks::send(sd_bus_message* call, Reply onReply) {
    auto pending = std::make_unique<PendingReply>(PendingReply{std::move(onReply)});
    // A floating slot: the bus keeps it until the reply, an error or the call's timeout.
    if (call && sd_bus_call_async(bus, nullptr, call, &replied, pending.get(), 0) >= 0) {
        static_cast<void>(pending.release()); // the reply callback owns it now
    } else {
        pending->onReply(nullptr);
    }
    sd_bus_message_unref(call);
}

void CallerChecks::authorize(const std::string& sender, Allowed done) {
    sd_bus_message* call =
        newCall("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
                "org.freedesktop.PolicyKit1.Authority", "CheckAuthorization");
    if (call && sd_bus_message_append(call, "(sa{sv})sa{ss}us", "system-bus-name", 1, "name", "s",
                                      sender.c_str(), polkitAction, 0, 0U, "") < 0) {
        call = sd_bus_message_unref(call);
    }
    send(call, [done = std::move(done)](sd_bus_message* reply) {
        int authorized = 0, challenge = 0;
        const bool read = reply && !failed(reply) &&
                          sd_bus_message_enter_container(reply, 'r', "bba{ss}") >= 0 &&
                          sd_bus_message_read(reply, "bb", &authorized, &challenge) >= 0;
        done(read && authorized);
    });
}

void CallerChecks::findSession(const std::string& sender, SessionFound done) {
    sd_bus_message* call = newCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                   "org.freedesktop.DBus", "GetConnectionUnixProcessID");
    if (call && sd_bus_message_append(call, "s", sender.c_str()) < 0) {
        call = sd_bus_message_unref(call);
    }
    send(call, [this, done = std::move(done)](sd_bus_message* reply) mutable {
        std::uint32_t pid = 0;
        if (!reply || failed(reply) || sd_bus_message_read(reply, "u", &pid) < 0) {
            done({}, true);
            return;
        }
        sessionOfProcess(pid, std::move(done));
    });
}

// No session manager, or a process in no session: polkit, which allowed the call, decides.
void CallerChecks::sessionOfProcess(std::uint32_t pid, SessionFound done) {
    sd_bus_message* call = newCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                   "org.freedesktop.login1.Manager", "GetSessionByPID");
    if (call && sd_bus_message_append(call, "u", pid) < 0) {
        call = sd_bus_message_unref(call);
    }
    send(call, [this, done = std::move(done)](sd_bus_message* reply) mutable {
        const char* path = nullptr;
        if (!reply || failed(reply) || sd_bus_message_read(reply, "o", &path) < 0) {
            done({}, true);
            return;
        }
        std::string session = path;
        sd_bus_message* get = newCall("org.freedesktop.login1", session.c_str(),
                                      "org.freedesktop.DBus.Properties", "Get");
        if (get &&
            sd_bus_message_append(get, "ss", "org.freedesktop.login1.Session", "Active") < 0) {
            get = sd_bus_message_unref(get);
        }
        send(get, [session, done = std::move(done)](sd_bus_message* value) {
            int active = 0;
            const bool read =
                value && !failed(value) && sd_bus_message_read(value, "v", "b", &active) >= 0;
            done(session, read && active);
        });
    });
}

bool CallerChecks::followSessions(SessionChanged changed) {
    sessionChanged = std::move(changed);
    return sd_bus_match_signal_async(bus, &sessionsSlot, "org.freedesktop.login1", nullptr,
                                     "org.freedesktop.DBus.Properties", "PropertiesChanged",
                                     &CallerChecks::propertiesChanged, nullptr, this) >= 0;
}

int CallerChecks::propertiesChanged(sd_bus_message* message, void* userdata, sd_bus_error*) {
    auto* checks = static_cast<CallerChecks*>(userdata);
    const char* interface = nullptr;
    if (sd_bus_message_read(message, "s", &interface) < 0 ||
        std::strcmp(interface, "org.freedesktop.login1.Session") != 0 ||
        sd_bus_message_enter_container(message, 'a', "{sv}") < 0) {
        return 0;
    }
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* name = nullptr;
        int active = 0;
        if (sd_bus_message_read(message, "s", &name) < 0) {
            return 0;
        }
        if (std::strcmp(name, "Active") == 0 &&
            sd_bus_message_read(message, "v", "b", &active) >= 0) {
            checks->sessionChanged(sd_bus_message_get_path(message), active != 0);
        } else if (sd_bus_message_skip(message, "v") < 0) {
            return 0;
        }
        sd_bus_message_exit_container(message);
    }
    return 0;
}

} // namespace tolvane::inputd
