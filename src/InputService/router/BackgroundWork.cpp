// One thread that runs what is handed to it, in order. The thing easy to get wrong: it must
// cost nothing while there is nothing to do, so it sleeps on a condition variable and is
// started only by the first task; it is never stopped, so a device destroyed while the process
// ends (a static, a test's teardown) still finds it there.
#include "InputService/router/BackgroundWork.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include <unistd.h>

namespace tolvane::oslinux {

namespace {

class Worker {
public:
    void add(std::function<void()> task) {
        {
            std::lock_guard<std::mutex> lock(mutex);
            pending.push_back(std::move(task));
            if (!started) {
                started = true;
                std::thread([this] { run(); }).detach();
            }
        }
        wake.notify_one();
    }

    void finish() {
        std::unique_lock<std::mutex> lock(mutex);
        idle.wait(lock, [this] { return pending.empty() && !busy; });
    }

private:
    [[noreturn]] void run() {
        std::unique_lock<std::mutex> lock(mutex);
        for (;;) {
            wake.wait(lock, [this] { return !pending.empty(); });
            const std::function<void()> task = std::move(pending.front());
            pending.pop_front();
            busy = true;
            lock.unlock();
            task();
            lock.lock();
            busy = false;
            idle.notify_all();
        }
    }

    std::mutex mutex;
    std::condition_variable wake, idle;
    std::deque<std::function<void()>> pending;
    bool started = false, busy = false;
};

Worker& worker() {
    static auto* worker = new Worker; // never destroyed: its thread outlives every caller
    return *worker;
}

} // namespace

void runInBackground(std::function<void()> task) {
    worker().add(std::move(task));
}

void finishBackgroundWork() {
    worker().finish();
}

void closeInBackground(int fd) {
    runInBackground([fd] { ::close(fd); });
}

} // namespace tolvane::oslinux
