// With no udevd, devtmpfs is the only witness of a device coming or going, and inotify on the
// input directory reports it. The things easy to get wrong: a node can appear before it is
// readable (its permissions fixed a moment later), so a change of attributes counts as an
// arrival too; and that change is watched on each node, not on the directory, because a
// directory watch for attribute changes makes the kernel visit the directory's watchers on
// every read of every node in it, each wheel frame included; only while a node cannot be watched
// (inotify needs read access to it) does the directory watch them. The directory itself may not
// exist until the first input device does.
#include "platform/linux/devices/NodeWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <map>
#include <set>
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

    // Watches the input directory and the nodes in it, or its parent until it exists; returns
    // the nodes found.
    std::vector<std::string> watchInputDirectory() {
        inputWatch = inotify_add_watch(fd, (root + "/input").c_str(), entryChanges);
        if (inputWatch < 0) {
            if (rootWatch < 0) {
                rootWatch = inotify_add_watch(fd, root.c_str(), IN_CREATE | IN_MOVED_TO);
            }
            return {};
        }
        std::vector<std::string> nodes = listEventNodes(root);
        for (const std::string& node : nodes) {
            watchAttributes(node);
        }
        return nodes;
    }

    void watchAttributes(const std::string& node) {
        const int wd = inotify_add_watch(fd, (root + "/input/" + node).c_str(), IN_ATTRIB);
        if (wd >= 0) {
            nodeWatches[wd] = node;
            unwatchable.erase(node);
        } else {
            unwatchable.insert(node);
        }
        inotify_add_watch(fd, (root + "/input").c_str(),
                          entryChanges | (unwatchable.empty() ? 0 : IN_ATTRIB));
    }

    void forgetAttributes(const std::string& node) {
        const auto found = std::find_if(nodeWatches.begin(), nodeWatches.end(),
                                        [&](const auto& watch) { return watch.second == node; });
        if (found != nodeWatches.end()) {
            inotify_rm_watch(fd, found->first);
            nodeWatches.erase(found);
        }
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
            rewatchNodes();
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
                unwatchable.erase(name);
                forgetAttributes(name);
                callbacks.vanished(name);
            } else if ((event.mask & IN_ATTRIB) && unwatchable.count(name) == 0) {
                return; // that node's own watch reports it
            } else {
                watchAttributes(name);
                callbacks.appeared(name);
            }
        } else if (const auto node = nodeWatches.find(event.wd); node != nodeWatches.end()) {
            if (event.mask & IN_IGNORED) {
                nodeWatches.erase(node);
            } else {
                callbacks.appeared(node->second);
            }
        }
    }

    // The removals and arrivals lost may have left watches on nodes gone and none on new ones.
    void rewatchNodes() {
        for (const auto& [wd, node] : nodeWatches) {
            inotify_rm_watch(fd, wd);
        }
        nodeWatches.clear();
        unwatchable.clear();
        if (inputWatch >= 0) {
            watchInputDirectory();
        }
    }

    EventLoop& loop;
    int fd;
    std::string root;
    NodeCallbacks callbacks;
    int inputWatch = -1;
    int rootWatch = -1;
    std::map<int, std::string> nodeWatches; // watch descriptor to node name
    std::set<std::string> unwatchable;
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
