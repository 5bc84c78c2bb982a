#include "support/FakePlatform.h"

#include <algorithm>

namespace tolvane::testing {

std::vector<std::string> Recorder::matching(const std::string& prefix) const {
    std::vector<std::string> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&prefix](const std::string& call) { return call.rfind(prefix, 0) == 0; });
    return found;
}

bool FakeScrollTap::create(platform::WheelEventFilter f, void* c) {
    recorder.record(available ? "scrollTap.create -> true" : "scrollTap.create -> false");
    if (available) {
        filter = f;
        context = c;
        ++created;
    }
    return available;
}

std::vector<InputEvent> FakeScrollTap::pass(std::vector<InputEvent> events) const {
    if (filter) {
        filter(context, events.data(), events.size());
    }
    return events;
}

void FakePointerDevices::plug(const platform::PointerDevice& device) {
    present.push_back(device);
    if (callbacks.added) {
        callbacks.added(device);
    }
}

void FakePointerDevices::unplug(const std::string& id) {
    const auto found = std::find_if(present.begin(), present.end(),
                                    [&id](const platform::PointerDevice& d) { return d.id == id; });
    if (found != present.end()) {
        const platform::PointerDevice device = *found;
        present.erase(found);
        if (callbacks.removed) {
            callbacks.removed(device);
        }
    }
}

bool FakeLoginRegistration::setEnabled(bool value, std::string& failure) {
    recorder.record(value ? "login.setEnabled true" : "login.setEnabled false");
    if (failWith) {
        failure = *failWith;
        return false;
    }
    enabled = value;
    return true;
}

} // namespace tolvane::testing
