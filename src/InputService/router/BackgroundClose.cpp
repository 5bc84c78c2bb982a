// One thread that only closes descriptors handed to it, in order. The thing easy to get wrong:
// it must cost nothing while there is nothing to close, so it sleeps on a condition variable
// and is started only by the first descriptor; it is never stopped, so a device destroyed while
// the process ends (a static, a test's teardown) still finds it there.
#include "InputService/router/BackgroundClose.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include <unistd.h>

namespace tolvane::oslinux {

namespace {

class Closer {
public:
    void add(int fd) {
        {
            std::lock_guard<std::mutex> lock(mutex);
            pending.push_back(fd);
            if (!started) {
                started = true;
                std::thread([this] { run(); }).detach();
            }
        }
        wake.notify_one();
    }

private:
    [[noreturn]] void run() {
        std::unique_lock<std::mutex> lock(mutex);
        for (;;) {
            wake.wait(lock, [this] { return !pending.empty(); });
            const int fd = pending.front();
            pending.pop_front();
            lock.unlock();
            ::close(fd);
            lock.lock();
        }
    }

    std::mutex mutex;
    std::condition_variable wake;
    std::deque<int> pending;
    bool started = false;
};

} // namespace

void closeInBackground(int fd) {
    static auto* closer = new Closer; // never destroyed: its thread outlives every caller
    closer->add(fd);
}

} // namespace tolvane::oslinux
