// Where udevd runs, its netlink announcements are the reliable sign that a new input node is
// ready: they come after udev has set the node's owner and access list. The thing easy to get
// wrong: the kernel's own uevents come earlier, before permissions are set, so the monitor
// must listen to "udev", not "kernel".
#include "platform/linux/devices/NodeWatch.h"

#include <libudev.h>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace tolvane::oslinux {

namespace {

class UdevNodeWatch final : public NodeWatch {
public:
    UdevNodeWatch(EventLoop& loop, udev* context, udev_monitor* monitor, NodeCallbacks callbacks)
        : loop(loop), context(context), monitor(monitor), callbacks(std::move(callbacks)) {
        loop.watchReadable(udev_monitor_get_fd(monitor), [this] { readAnnouncements(); });
    }

    ~UdevNodeWatch() override {
        loop.unwatch(udev_monitor_get_fd(monitor));
        udev_monitor_unref(monitor);
        udev_unref(context);
    }

private:
    void readAnnouncements() {
        errno = 0;
        while (udev_device* device = udev_monitor_receive_device(monitor)) {
            const char* action = udev_device_get_action(device);
            const char* sysname = udev_device_get_sysname(device);
            if (action && sysname && isEventNodeName(sysname)) {
                if (std::strcmp(action, "remove") == 0) {
                    callbacks.vanished(sysname);
                } else {
                    callbacks.appeared(sysname);
                }
            }
            udev_device_unref(device);
        }
        if (errno == ENOBUFS) { // the socket's buffer overran: announcements were dropped
            callbacks.lost();
        }
    }

    EventLoop& loop;
    udev* context;
    udev_monitor* monitor;
    NodeCallbacks callbacks;
};

} // namespace

std::unique_ptr<NodeWatch> watchNodesWithUdev(EventLoop& loop, NodeCallbacks callbacks) {
    if (::access("/run/udev/control", F_OK) != 0) {
        return nullptr; // no udevd: its monitor would stay silent
    }
    udev* context = udev_new();
    if (!context) {
        return nullptr;
    }
    udev_monitor* monitor = udev_monitor_new_from_netlink(context, "udev");
    if (!monitor ||
        udev_monitor_filter_add_match_subsystem_devtype(monitor, "input", nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor) < 0) {
        if (monitor) {
            udev_monitor_unref(monitor);
        }
        udev_unref(context);
        return nullptr;
    }
    return std::make_unique<UdevNodeWatch>(loop, context, monitor, std::move(callbacks));
}

} // namespace tolvane::oslinux
