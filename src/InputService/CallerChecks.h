#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace tolvane::inputd {

inline constexpr const char* polkitAction = "org.tolvane.input.use";

// What the service asks about a caller, each question one asynchronous call whose answer
// comes later on the loop: polkit for permission, logind for the caller's session and its
// state. The loop never waits for either.
class CallerChecks {
public:
    using Allowed = std::function<void(bool allowed)>;
    // session: logind's object path of it, empty where there is no session manager.
    using SessionFound = std::function<void(const std::string& session, bool active)>;
    using SessionChanged = std::function<void(const std::string& session, bool active)>;

    explicit CallerChecks(sd_bus* bus) : bus(bus) {}
    ~CallerChecks();

    CallerChecks(const CallerChecks&) = delete;
    CallerChecks& operator=(const CallerChecks&) = delete;

    // Whether polkit lets the bus name `sender` use the service, without asking the user.
    void authorize(const std::string& sender, Allowed done);
    // The sender's login session through its process, or none.
    void findSession(const std::string& sender, SessionFound done);
    // Every later change of a session's Active property.
    bool followSessions(SessionChanged changed);

private:
    using Reply = std::function<void(sd_bus_message* reply)>;
    // Sends a call already filled in; `onReply` gets the reply or the error (a timeout too).
    void send(sd_bus_message* call, Reply onReply);
    sd_bus_message* newCall(const char* destination, const char* path, const char* interface,
                            const char* member);
    void sessionOfProcess(std::uint32_t pid, SessionFound done);
    static int propertiesChanged(sd_bus_message* message, void* userdata, sd_bus_error* error);

    sd_bus* bus;
    sd_bus_slot* sessionsSlot = nullptr;
    SessionChanged sessionChanged;
};

} // namespace tolvane::inputd
