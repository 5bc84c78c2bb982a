#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>

namespace tolvane::kerneltest {

// The input service, started from /bin on the guest's system bus ($DBUS_SYSTEM_BUS_ADDRESS),
// for as long as the object lives. Its log goes to the guest's console.
class ServiceProcess {
public:
    ServiceProcess();
    ~ServiceProcess();
    bool isServing() const { return serving; } // it owns org.tolvane.Input1
    pid_t pid() const { return child; }

private:
    pid_t child = -1;
    bool serving = false;
};

// A client as the app is, in a process of its own (forked, as the desktop user, uid 1000) that
// the test can stop, freeze and kill: its own bus connection, the calls the test asks for in
// order, and while it holds the keyboards a KeepAlive every 500 ms.
class ServiceClient {
public:
    enum Call : char {
        invert = 'I',
        stopInverting = 'i',
        hold = 'H',
        release = 'R',
        keepAlive = 'K',
    };

    ServiceClient();
    ~ServiceClient(); // kills it

    pid_t pid() const { return child; }
    // "" when the service answered, else the error's name ("no answer" after 5 s).
    std::string call(Call member);
    // Waits for the next keep-alive to be answered; false when none was within a second.
    bool keptAlive();
    void signal(int number) const;

private:
    std::string outcomeOf(Call member, std::chrono::milliseconds limit);

    pid_t child = -1;
    int commands = -1, outcomes = -1;
    std::string unread;
};

// The cgroup v2 freezer over one process, moved into a group of its own: frozen while the
// object lives. isFrozen() is false, with the reason in why(), where the kernel has no freezer.
class FrozenProcess {
public:
    explicit FrozenProcess(pid_t pid);
    ~FrozenProcess();
    bool isFrozen() const { return why.empty(); }
    std::string why;
};

} // namespace tolvane::kerneltest
