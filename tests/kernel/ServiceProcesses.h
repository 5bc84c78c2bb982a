#pragma once

#include <string>
#include <sys/types.h>

namespace tolvane::kerneltest {

// A program from /bin on the guest's system bus, for as long as the object lives: the input
// service, or the stand-in for polkit and logind.
class BusProgram {
public:
    BusProgram(const std::string& program, const char* busName);
    ~BusProgram();
    // It took its bus name within 15 s (a sanitized start under emulation).
    bool isServing() const { return serving; }
    pid_t pid() const { return child; }

private:
    pid_t child;
    bool serving = false;
};

// A client as the app is, in a forked process of the desktop user (uid 1000) that the test can
// stop, freeze and kill: its own bus connection, the calls the test asks for, and a KeepAlive
// every 500 ms while it holds the keyboards. Killed with the object.
class ServiceClient {
public:
    enum Call : char { invert = 'I', stopInverting = 'i', hold = 'H', keepAlive = 'K' };

    ServiceClient();
    ~ServiceClient();
    pid_t pid() const { return child; }
    // "" when the service answered, else the error's name ("no answer" after 30 s: a hold
    // of many keyboards under emulation takes seconds).
    std::string call(Call member);
    // The same in two steps, for what the test does while the call is under way.
    bool send(Call member);
    std::string answer();

private:
    pid_t child = -1;
    int commands = -1, outcomes = -1;
};

// Freezes the process with the cgroup v2 freezer, in a group of its own, for the rest of its
// life; "" once it is frozen, else what failed.
std::string freeze(pid_t pid);

} // namespace tolvane::kerneltest
