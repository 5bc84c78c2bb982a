// With no udevd, devtmpfs is the only witness of a device coming or going, and inotify on the
// input directory reports it. Only the directory's entries are watched: a watch on a node, or
// one for attribute changes on the directory, makes the kernel visit it on every read of the
// node, each wheel frame included. Nothing here needs a node's later change of permissions:
// the service owns the nodes and opens them from the start, and the app never opens them. The
// directory itself may not exist until the first input device does.
#include "platform/linux/devices/NodeWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace tolvane::oslinux {

bool isEventNodeName(const std::string& name) {
    return name.size() > 5 && name.compare(0, 5, "event") == 0 &&
           std::all_of(name.begin() + 5, name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::vector<std::string> listEventNodes(const std::string& deviceRoot) {
    std::vector<std::string> nodes;
    DIR* dir = ::opendir((deviceRoot + "/input").c_str());
    if (!dir) {
        return nodes;
    }
    while (const dirent* entry = ::readdir(dir)) {
        if (isEventNodeName(entry->d_name)) {
            nodes.emplace_back(entry->d_name);
        }
    }
    ::closedir(dir);
    std::sort(nodes.begin(), nodes.end(), [](const std::string& a, const std::string& b) {
        return std::atoi(a.c_str() + 5) < std::atoi(b.c_str() + 5);
    });
    return nodes;
}

namespace {

class InotifyNodeWatch final : public NodeWatch {
public:
    InotifyNodeWatch(EventLoop& loop, int fd, std::string root, NodeCallbacks callbacks)
        : loop(loop), fd(fd), root(std::move(root)), callbacks(std::move(callbacks)) {
        watchInputDirectory();
        loop.watchReadable(fd, [this] { readNotifications(); });
    }

    ~InotifyNodeWatch() override {
        loop.unwatch(fd);
        ::close(fd);
    }

private:
    static constexpr auto entryChanges = IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM;

    // Watches the input directory, or its parent until it exists; returns the nodes found.
    std::vector<std::string> watchInputDirectory() {
        inputWatch = inotify_add_watch(fd, (root + "/input").c_str(), entryChanges);
        if (inputWatch < 0) {
            if (rootWatch < 0) {
                rootWatch = inotify_add_watch(fd, root.c_str(), IN_CREATE | IN_MOVED_TO);
            }
            return {};
        }
        return listEventNodes(root);
    }

    void readNotifications() {
        alignas(inotify_event) std::array<char, 4096> buffer;
        for (;;) {
            const ssize_t n = ::read(fd, buffer.data(), buffer.size());
            if (n <= 0) {
                return;
            }
            for (ssize_t at = 0; at < n;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
                handle(*event, event->len ? std::string(event->name) : std::string());
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
    }

    void handle(const inotify_event& event, const std::string& name) {
        if (event.mask & IN_Q_OVERFLOW) {
            if (callbacks.lost) {
                callbacks.lost();
            }
        } else if (event.wd == rootWatch && name == "input" && inputWatch < 0) {
            for (const std::string& node : watchInputDirectory()) {
                callbacks.appeared(node);
            }
        } else if (event.wd == inputWatch && (event.mask & IN_IGNORED)) {
            inputWatch = -1;
            watchInputDirectory();
        } else if (event.wd == inputWatch && isEventNodeName(name)) {
            if (event.mask & (IN_DELETE | IN_MOVED_FROM)) {
                callbacks.vanished(name);
            } else {
                callbacks.appeared(name);
            }
        }
    }

    EventLoop& loop;
    int fd;
    std::string root;
    NodeCallbacks callbacks;
    int inputWatch = -1;
    int rootWatch = -1;
};

} // namespace

std::unique_ptr<NodeWatch> watchNodesWithInotify(EventLoop& loop, const std::string& deviceRoot,
                                                 NodeCallbacks callbacks) {
    const int fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0) {
        return nullptr;
    }
    return std::make_unique<InotifyNodeWatch>(loop, fd, deviceRoot, std::move(callbacks));
}

std::unique_ptr<NodeWatch> watchEventNodes(EventLoop& loop, const std::string& deviceRoot,
                                           const NodeCallbacks& callbacks) {
    if (deviceRoot == "/dev") {
        if (auto udev = watchNodesWithUdev(loop, callbacks)) {
            return udev;
        }
    }
    return watchNodesWithInotify(loop, deviceRoot, callbacks);
}

} // namespace tolvane::oslinux
