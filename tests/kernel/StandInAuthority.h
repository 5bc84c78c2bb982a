#pragma once

// polkit and logind as the input service sees them, on the guest's private system bus, served
// from a thread of the test program: it owns org.freedesktop.PolicyKit1 and
// org.freedesktop.login1, puts each process the test names in a session of the test's choosing
// (GetSessionByPID), serves each session's Active property with PropertiesChanged when the test
// flips it, and authorises (CheckAuthorization) a caller whose session is active and allowed.
// The easy thing to get wrong: the subject is the caller's bus name, whose process the bus
// driver must be asked for; and every sd-bus call happens on the loop's thread, never the test's.

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tolvane::kerneltest {

class StandInAuthority {
public:
    StandInAuthority() {
        ready =
            sd_event_new(&event) >= 0 && sd_bus_open_system(&bus) >= 0 &&
            sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/PolicyKit1/Authority",
                                     "org.freedesktop.PolicyKit1.Authority", polkit, this) >= 0 &&
            sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/login1",
                                     "org.freedesktop.login1.Manager", manager, this) >= 0 &&
            sd_bus_add_fallback_vtable(bus, nullptr, "/org/freedesktop/login1/session",
                                       "org.freedesktop.login1.Session", session, nullptr,
                                       this) >= 0 &&
            sd_bus_request_name(bus, "org.freedesktop.PolicyKit1", 0) >= 0 &&
            sd_bus_request_name(bus, "org.freedesktop.login1", 0) >= 0 &&
            sd_bus_attach_event(bus, event, 0) >= 0 &&
            sd_event_add_io(event, nullptr, wake, EPOLLIN, onWake, this) >= 0;
        if (ready) {
            loop = std::thread([this] { sd_event_loop(event); });
        }
    }
    ~StandInAuthority() {
        request(-1);
        if (loop.joinable()) {
            loop.join();
        }
        sd_bus_flush_close_unref(bus);
        sd_event_unref(event);
        ::close(wake);
    }

    bool isReady() const { return ready; }
    static std::string pathOf(int session) {
        return "/org/freedesktop/login1/session/c" + std::to_string(session);
    }
    // The process belongs to the session from now on. A session is active and allowed until
    // setSession says otherwise.
    void place(pid_t pid, int session) {
        const std::lock_guard lock(mutex);
        sessionOf[pid] = session;
    }
    // allowed false: a session polkit refuses though it is active (a remote one).
    void setSession(int session, bool active, bool allowed = true) {
        {
            const std::lock_guard lock(mutex);
            sessions[session] = {active, allowed};
        }
        request(session); // the loop says PropertiesChanged, active or not
    }

private:
    struct Session {
        bool active = true, allowed = true;
    };

    void request(int session) {
        {
            const std::lock_guard lock(mutex);
            changed.push_back(session);
        }
        [[maybe_unused]] auto n = ::eventfd_write(wake, 1);
    }
    static int onWake(sd_event_source*, int fd, std::uint32_t, void* self) {
        auto& me = *static_cast<StandInAuthority*>(self);
        eventfd_t count;
        ::eventfd_read(fd, &count);
        std::vector<int> now;
        {
            const std::lock_guard lock(me.mutex);
            now.swap(me.changed);
        }
        for (int session : now) {
            if (session < 0) {
                return sd_event_exit(me.event, 0);
            }
            sd_bus_emit_properties_changed(me.bus, pathOf(session).c_str(),
                                           "org.freedesktop.login1.Session", "Active", nullptr);
        }
        return 0;
    }

    static int getSessionByPid(sd_bus_message* m, void* self, sd_bus_error*) {
        auto& me = *static_cast<StandInAuthority*>(self);
        std::uint32_t pid = 0;
        sd_bus_message_read(m, "u", &pid);
        const std::lock_guard lock(me.mutex);
        const auto found = me.sessionOf.find(pid_t(pid));
        if (found == me.sessionOf.end()) {
            return sd_bus_reply_method_errorf(m, "org.freedesktop.login1.NoSessionForPID",
                                              "PID %u belongs to no session", pid);
        }
        return sd_bus_reply_method_return(m, "o", pathOf(found->second).c_str());
    }
    static int getActive(sd_bus*, const char* path, const char*, const char*, sd_bus_message* reply,
                         void* self, sd_bus_error*) {
        auto& me = *static_cast<StandInAuthority*>(self);
        const char* id = std::strrchr(path, 'c');
        const std::lock_guard lock(me.mutex);
        const int active = id && me.sessions[std::atoi(id + 1)].active;
        return sd_bus_message_append(reply, "b", active);
    }
    // CheckAuthorization((sa{sv}) subject, s action, a{ss} details, u flags, s cancellation), the
    // subject as the service gives it: its caller's bus name alone.
    static int checkAuthorization(sd_bus_message* m, void* self, sd_bus_error*) {
        auto& me = *static_cast<StandInAuthority*>(self);
        const char *kind = "", *key = "", *name = "", *action = "";
        sd_bus_message_read(m, "(sa{sv})s", &kind, 1, &key, "s", &name, &action);
        sd_bus_creds* creds = nullptr;
        pid_t pid = 0;
        const bool named = std::strcmp(kind, "system-bus-name") == 0 &&
                           std::strcmp(key, "name") == 0 &&
                           sd_bus_get_name_creds(me.bus, name, SD_BUS_CREDS_PID, &creds) >= 0 &&
                           sd_bus_creds_get_pid(creds, &pid) >= 0;
        sd_bus_creds_unref(creds);
        const std::lock_guard lock(me.mutex);
        const auto found = me.sessionOf.find(pid);
        const Session s =
            found == me.sessionOf.end() ? Session{false, false} : me.sessions[found->second];
        const int authorised =
            named && std::strcmp(action, "org.tolvane.input.use") == 0 && s.active && s.allowed;
        return sd_bus_reply_method_return(m, "(bba{ss})", authorised, 0, 0);
    }

    static constexpr sd_bus_vtable polkit[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("CheckAuthorization", "(sa{sv})sa{ss}us", "(bba{ss})", checkAuthorization,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable manager[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("GetSessionByPID", "u", "o", getSessionByPid, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable session[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("Active", "b", getActive, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_VTABLE_END};

    std::mutex mutex; // guards the three below, which the test changes and the loop reads
    std::map<pid_t, int> sessionOf;
    std::map<int, Session> sessions;
    std::vector<int> changed; // sessions whose Active to announce; -1 ends the loop
    sd_event* event = nullptr;
    sd_bus* bus = nullptr;
    int wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    bool ready = false;
    std::thread loop;
};

} // namespace tolvane::kerneltest
