// Why keyboards are opened and cloned off the loop: opening a node and describing it takes a
// few dozen ioctls, and registering a uinput device waits for the kernel to add it to sysfs and
// announce it, tens of milliseconds each under load; a hold of many keyboards did that one
// keyboard after another on the loop while wheel frames and bus calls waited. The thing easy to
// get wrong: the device and its libevdev belong to the thread until they are posted, and to the
// loop from then on; the thread never touches anything of the loop's.
#include "InputService/router/MadeClones.h"

#include "InputService/router/BackgroundWork.h"

#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace tolvane::oslinux {

MadeClones::MadeClones() : eventFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

MadeClones::~MadeClones() {
    if (eventFd >= 0) {
        ::close(eventFd);
    }
}

std::uint64_t MadeClones::order(const std::shared_ptr<MadeClones>& to, const std::string& node,
                                const std::string& nodePath, const std::string& uinputPath) {
    const std::uint64_t number = ++to->ordered;
    runInBackground([to, number, node, nodePath, uinputPath] {
        Arrival arrival{number, node, EvdevDevice::open(nodePath), nullptr};
        if (arrival.device) {
            arrival.clone = UinputClone::create(arrival.device->evdev(), uinputPath);
        }
        to->post(std::move(arrival));
    });
    return number;
}

void MadeClones::post(Arrival arrival) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        arrived.push_back(std::move(arrival));
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(eventFd, &one, sizeof one);
}

std::vector<MadeClones::Arrival> MadeClones::take() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t read = ::read(eventFd, &count, sizeof count);
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(arrived, {});
}

} // namespace tolvane::oslinux
