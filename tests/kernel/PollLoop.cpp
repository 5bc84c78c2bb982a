#include "kernel/PollLoop.h"

#include <poll.h>

#include <vector>

namespace tolvane::kerneltest {

void PollLoop::watchReadable(int fd, std::function<void()> onReadable) {
    watches[fd] = Watch{std::move(onReadable), ++generation};
}

void PollLoop::unwatch(int fd) {
    watches.erase(fd);
}

void PollLoop::turn(std::chrono::milliseconds timeout) {
    std::vector<pollfd> fds;
    std::vector<unsigned> generations;
    for (const auto& [fd, watch] : watches) {
        fds.push_back({fd, POLLIN, 0});
        generations.push_back(watch.generation);
    }
    ::poll(fds.data(), fds.size(), static_cast<int>(timeout.count()));
    for (std::size_t i = 0; i < fds.size(); ++i) {
        if (fds[i].revents == 0) {
            continue;
        }
        // A callback may unwatch or replace any watch, its own included.
        const auto found = watches.find(fds[i].fd);
        if (found == watches.end() || found->second.generation != generations[i]) {
            continue;
        }
        const std::function<void()> callback = found->second.callback;
        callback();
    }
}

void PollLoop::settle() {
    for (int i = 0; i < 1000; ++i) {
        std::vector<pollfd> fds;
        for (const auto& [fd, watch] : watches) {
            fds.push_back({fd, POLLIN, 0});
        }
        if (::poll(fds.data(), fds.size(), 0) <= 0) {
            return;
        }
        turn();
    }
}

bool PollLoop::turnUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        turn(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace tolvane::kerneltest
