// Processes around the input service in the guest. The things easy to get wrong: a forked child
// inherits every descriptor of the test, a grabbing one included, so each child closes all but
// its own at once; and it may only _exit, never return into the test or run its destructors.
#include "kernel/ServiceProcesses.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tolvane::kerneltest {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr const char* service = "org.tolvane.Input1";
constexpr const char* group = "/sys/fs/cgroup/tolvane-client";

// The signal, then up to 2 s for the child to end before SIGKILL.
void end(pid_t pid, int signal) {
    ::kill(pid, signal);
    for (const auto until = Clock::now() + 2s; ::waitpid(pid, nullptr, WNOHANG) != pid;) {
        if (Clock::now() > until) {
            ::kill(pid, SIGKILL);
        }
        std::this_thread::sleep_for(2ms);
    }
}

bool write(const std::string& path, const std::string& text) {
    return bool(std::ofstream(path) << text << std::flush);
}

std::string callService(sd_bus* bus, char member) {
    const char* name = member == ServiceClient::hold        ? "HoldKeyboards"
                       : member == ServiceClient::keepAlive ? "KeepAlive"
                                                            : "SetInversion";
    sd_bus_error error = SD_BUS_ERROR_NULL; // SetInversion's one argument, the others' none
    const int rc = sd_bus_call_method(bus, service, "/org/tolvane/Input1", service, name, &error,
                                      nullptr, std::string(name) == "SetInversion" ? "b" : "",
                                      int(member == ServiceClient::invert));
    std::string outcome = rc >= 0 ? "" : error.name ? error.name : "no reply";
    sd_bus_error_free(&error);
    return outcome;
}

// The client's side: one call per command byte, its outcome as a line back, and a keep-alive
// every 500 ms while holding; ends when the test closes its end.
[[noreturn]] void serveCommands(int commands, int outcomes) {
    sd_bus* bus = nullptr;
    const char* name = nullptr; // waits for the bus's answer to Hello
    if (::setresgid(1000, 1000, 1000) != 0 || ::setresuid(1000, 1000, 1000) != 0 ||
        sd_bus_open_system(&bus) < 0 || sd_bus_get_unique_name(bus, &name) < 0) {
        ::_exit(2);
    }
    bool holding = false;
    for (auto next = Clock::now();;) {
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
        pollfd ready{commands, POLLIN, 0};
        if (!holding || ::poll(&ready, 1, std::max(0, int(wait.count()))) > 0) {
            char member;
            if (::read(commands, &member, 1) != 1) {
                ::_exit(0);
            }
            const std::string line = callService(bus, member) + "\n";
            holding = holding || (member == ServiceClient::hold && line == "\n");
            [[maybe_unused]] auto n = ::write(outcomes, line.data(), line.size());
        } else {
            callService(bus, ServiceClient::keepAlive);
        }
        next = Clock::now() + 500ms;
    }
}

} // namespace

BusProgram::BusProgram(const std::string& program, const char* busName) : child(::fork()) {
    if (child == 0) {
        ::close_range(3, ~0U, 0);
        ::execl(("/bin/" + program).c_str(), program.c_str(), nullptr);
        ::_exit(127);
    }
    sd_bus* bus = nullptr;
    sd_bus_open_system(&bus);
    for (const auto until = Clock::now() + 15s; bus && !serving && Clock::now() < until;) {
        std::this_thread::sleep_for(10ms);
        sd_bus_creds* owner = nullptr; // none while nobody owns the name
        serving = sd_bus_get_name_creds(bus, busName, 0, &owner) >= 0;
        sd_bus_creds_unref(owner);
    }
    sd_bus_flush_close_unref(bus);
}

BusProgram::~BusProgram() {
    end(child, SIGTERM);
}

ServiceClient::ServiceClient() {
    int down[2]{-1, -1}, up[2]{-1, -1};
    if (::pipe2(down, O_CLOEXEC) == 0 && ::pipe2(up, O_CLOEXEC) == 0 && (child = ::fork()) == 0) {
        ::dup2(down[0], 3), ::dup2(up[1], 4);
        ::close_range(5, ~0U, 0);
        serveCommands(3, 4);
    }
    ::close(down[0]), ::close(up[1]);
    commands = down[1], outcomes = up[0];
}

ServiceClient::~ServiceClient() {
    ::close(commands), ::close(outcomes);
    end(child, SIGKILL);
}

std::string ServiceClient::call(Call member) {
    return send(member) ? answer() : "no client";
}

bool ServiceClient::send(Call member) {
    return ::write(commands, &member, 1) == 1;
}

std::string ServiceClient::answer() {
    std::string line;
    pollfd ready{outcomes, POLLIN, 0};
    for (char c = 0; c != '\n'; line += c) {
        if (::poll(&ready, 1, 30000) <= 0 || ::read(outcomes, &c, 1) != 1) {
            return "no answer";
        }
    }
    line.pop_back();
    return line;
}

std::string freeze(pid_t pid) {
    if (::access("/sys/fs/cgroup/cgroup.procs", F_OK) != 0) {
        ::mount("cgroup2", "/sys/fs/cgroup", "cgroup2", 0, nullptr);
    }
    ::mkdir(group, 0755);
    const std::string at = group;
    if (!write(at + "/cgroup.procs", std::to_string(pid)) || !write(at + "/cgroup.freeze", "1")) {
        return "the guest kernel has no cgroup v2 freezer";
    }
    for (const auto until = Clock::now() + 2s; Clock::now() < until;) {
        std::ifstream events(at + "/cgroup.events");
        for (std::string line; std::getline(events, line);) {
            if (line == "frozen 1") {
                return "";
            }
        }
        std::this_thread::sleep_for(2ms);
    }
    return "the client's group did not freeze in 2 s";
}

} // namespace tolvane::kerneltest
