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

int PollLoop::turn(std::chrono::milliseconds timeout) {
    std::vector<pollfd> fds;
    std::vector<unsigned> generations;
    for (const auto& [fd, watch] : watches) {
        fds.push_back({fd, POLLIN, 0});
        generations.push_back(watch.generation);
    }
    const int ready = ::poll(fds.data(), fds.size(), static_cast<int>(timeout.count()));
    for (std::size_t i = 0; i < fds.size(); ++i) {
        // A callback may unwatch or replace any watch, its own included.
        const auto found = watches.find(fds[i].fd);
        if (fds[i].revents != 0 && found != watches.end() &&
            found->second.generation == generations[i]) {
            const std::function<void()> callback = found->second.callback;
            callback();
        }
    }
    return ready;
}

void PollLoop::settle() {
    for (int i = 0; i < 1000 && turn() > 0; ++i) {
    }
}

bool PollLoop::turnUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!done() && std::chrono::steady_clock::now() < end) {
        turn(std::chrono::milliseconds(5));
    }
    return done();
}

} // namespace tolvane::kerneltest
