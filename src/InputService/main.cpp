// tolvane-inputd: the one process that opens the input devices. systemd starts it on the
// first call (D-Bus activation), watches it (Type=notify, WatchdogSec=) and restarts it after
// a failure; the kernel drops its grabs and clones with its last descriptor, so a dead or
// killed service never strands a device. Without systemd (tests) it runs alike: sd_notify and
// the watchdog are then no-ops. DBUS_SYSTEM_BUS_ADDRESS points it at another system bus.
#include "InputService/InputBus.h"
#include "InputService/SdEventLoop.h"
#include "InputService/router/InputRouter.h"
#include "TolvaneCore/LogLine.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-daemon.h>
#include <systemd/sd-event.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

using namespace tolvane;

namespace {

void logLine(const std::string& message) {
    std::fprintf(stderr, "%s\n", escapedControls(message).c_str());
}

int usage(const char* program) {
    std::fprintf(stderr,
                 "Usage: %s [--device-root DIR]\n"
                 "Tolvane's input service: inverts the mouse wheel and holds the keyboards for\n"
                 "the active session's Tolvane, on the system bus as org.tolvane.Input1.\n",
                 program);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    std::string deviceRoot = "/dev";
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--device-root") == 0 && i + 1 < argc) {
            deviceRoot = argv[++i];
        } else {
            return usage(argv[0]);
        }
    }
    sd_event* event = nullptr;
    sd_bus* bus = nullptr;
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGTERM);
    sigaddset(&stops, SIGINT);
    sigprocmask(SIG_BLOCK, &stops, nullptr);
    if (sd_event_default(&event) < 0 ||
        sd_event_add_signal(event, nullptr, SIGTERM, nullptr, nullptr) < 0 ||
        sd_event_add_signal(event, nullptr, SIGINT, nullptr, nullptr) < 0) {
        logLine("cannot make the event loop");
        return 1;
    }
    sd_event_set_watchdog(event, 1);
    if (const int r = sd_bus_open_system(&bus); r < 0) {
        logLine(std::string("cannot reach the system bus: ") + std::strerror(-r));
        return 1;
    }
    int status = 1;
    {
        inputd::SdEventLoop loop(event);
        oslinux::InputRouter router(loop, deviceRoot, &logLine);
        inputd::InputBus face(bus, event, router);
        if (sd_bus_attach_event(bus, event, SD_EVENT_PRIORITY_NORMAL) < 0 || !face.publish()) {
            logLine("cannot serve org.tolvane.Input1 on the system bus");
        } else {
            sd_notify(0, "READY=1");
            status = loop.run() < 0 ? 1 : 0;
            sd_notify(0, "STOPPING=1");
        }
    }
    sd_bus_flush_close_unref(bus);
    sd_event_unref(event);
    return status;
}
