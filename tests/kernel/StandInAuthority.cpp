// tolvane-stand-in-authority: polkit and logind as the input service sees them, on the guest's
// own system bus. It authorises (CheckAuthorization) a caller whose session (GetSessionByPID) is
// active and allowed, and tells of each change of a session's Active property. The test chooses
// through two methods of its own on logind's object, interface org.tolvane.test.Sessions:
//   Place(u pid, u session)                 the process belongs to that session from now on
//   Set(u session, b active, b allowed)     allowed false: a remote session, refused though active
// A session is active and allowed until Set says otherwise. With --everyone-active, a process
// never placed is in session 0 (for the lock session, whose one caller is the app).
// The thing easy to get wrong: polkit's subject is the caller's bus name, whose process the bus
// driver must be asked for.
#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <sys/types.h>

namespace {

struct Session {
    bool active = true, allowed = true;
};

sd_bus* bus = nullptr;
bool everyoneActive = false;
std::map<pid_t, unsigned> sessionOf;
std::map<unsigned, Session> sessions;
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";

std::string pathOf(unsigned session) {
    return "/org/freedesktop/login1/session/c" + std::to_string(session);
}

// The session of a process, if it has one.
const unsigned* sessionOfProcess(pid_t pid) {
    static constexpr unsigned anyone = 0;
    const auto found = sessionOf.find(pid);
    return found != sessionOf.end() ? &found->second : everyoneActive ? &anyone : nullptr;
}

int getSessionByPid(sd_bus_message* m, void*, sd_bus_error*) {
    std::uint32_t pid = 0;
    sd_bus_message_read(m, "u", &pid);
    const unsigned* session = sessionOfProcess(pid_t(pid));
    return session ? sd_bus_reply_method_return(m, "o", pathOf(*session).c_str())
                   : sd_bus_reply_method_errorf(m, "org.freedesktop.login1.NoSessionForPID",
                                                "PID %u belongs to no session", pid);
}

int getActive(sd_bus*, const char* path, const char*, const char*, sd_bus_message* reply, void*,
              sd_bus_error*) {
    const char* id = std::strrchr(path, 'c');
    return sd_bus_message_append(reply, "b", id && sessions[std::atoi(id + 1)].active);
}

// CheckAuthorization((sa{sv}) subject, s action, a{ss} details, u flags, s cancellation), the
// subject as the service gives it: its caller's bus name alone.
int checkAuthorization(sd_bus_message* m, void*, sd_bus_error*) {
    const char *kind = "", *key = "", *name = "", *action = "";
    sd_bus_message_read(m, "(sa{sv})s", &kind, 1, &key, "s", &name, &action);
    sd_bus_creds* creds = nullptr;
    pid_t pid = 0;
    const bool named = std::strcmp(kind, "system-bus-name") == 0 && std::strcmp(key, "name") == 0 &&
                       sd_bus_get_name_creds(bus, name, SD_BUS_CREDS_PID, &creds) >= 0 &&
                       sd_bus_creds_get_pid(creds, &pid) >= 0;
    sd_bus_creds_unref(creds);
    const unsigned* session = named ? sessionOfProcess(pid) : nullptr;
    const Session s = session ? sessions[*session] : Session{false, false};
    const int authorised =
        std::strcmp(action, "org.tolvane.input.use") == 0 && s.active && s.allowed;
    return sd_bus_reply_method_return(m, "(bba{ss})", authorised, 0, 0);
}

int place(sd_bus_message* m, void*, sd_bus_error*) {
    std::uint32_t pid = 0, session = 0;
    sd_bus_message_read(m, "uu", &pid, &session);
    sessionOf[pid_t(pid)] = session;
    return sd_bus_reply_method_return(m, "");
}

int set(sd_bus_message* m, void*, sd_bus_error*) {
    std::uint32_t session = 0;
    int active = 0, allowed = 0;
    sd_bus_message_read(m, "ubb", &session, &active, &allowed);
    sessions[session] = {bool(active), bool(allowed)};
    sd_bus_emit_properties_changed(bus, pathOf(session).c_str(), sessionInterface, "Active",
                                   nullptr);
    return sd_bus_reply_method_return(m, "");
}

constexpr sd_bus_vtable polkit[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("CheckAuthorization", "(sa{sv})sa{ss}us", "(bba{ss})", checkAuthorization, 0),
    SD_BUS_VTABLE_END};
constexpr sd_bus_vtable manager[] = {SD_BUS_VTABLE_START(0),
                                     SD_BUS_METHOD("GetSessionByPID", "u", "o", getSessionByPid, 0),
                                     SD_BUS_VTABLE_END};
constexpr sd_bus_vtable control[] = {SD_BUS_VTABLE_START(0),
                                     SD_BUS_METHOD("Place", "uu", "", place, 0),
                                     SD_BUS_METHOD("Set", "ubb", "", set, 0), SD_BUS_VTABLE_END};
constexpr sd_bus_vtable session[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Active", "b", getActive, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_VTABLE_END};

} // namespace

int main(int argc, char** argv) {
    everyoneActive = argc > 1 && std::strcmp(argv[1], "--everyone-active") == 0;
    const char* login = "/org/freedesktop/login1";
    if (sd_bus_open_system(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/PolicyKit1/Authority",
                                 "org.freedesktop.PolicyKit1.Authority", polkit, nullptr) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, login, "org.freedesktop.login1.Manager", manager,
                                 nullptr) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, login, "org.tolvane.test.Sessions", control,
                                 nullptr) < 0 ||
        sd_bus_add_fallback_vtable(bus, nullptr, "/org/freedesktop/login1/session",
                                   sessionInterface, session, nullptr, nullptr) < 0 ||
        sd_bus_request_name(bus, "org.freedesktop.PolicyKit1", 0) < 0 ||
        sd_bus_request_name(bus, "org.freedesktop.login1", 0) < 0) {
        return 1;
    }
    for (;;) {
        const int r = sd_bus_process(bus, nullptr);
        if (r < 0 || (r == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)) {
            return 1;
        }
    }
}
