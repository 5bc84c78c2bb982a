#include "support/FakePlatform.h"

#include <algorithm>

namespace tolvane::testing {

bool FakeInputAccess::isTrusted() {
    recorder.record("access.isTrusted");
    return trusted;
}

bool FakeScrollTap::create(platform::WheelEventFilter f, void* c) {
    bool answer = available;
    if (!answers.empty()) {
        answer = answers.front();
        answers.pop_front();
    }
    recorder.record(std::string("scrollTap.create -> ") + (answer ? "true" : "false"));
    if (answer) {
        filter = f;
        context = c;
        ++created;
    }
    return answer;
}

std::vector<InputEvent> FakeScrollTap::pass(std::vector<InputEvent> events) const {
    if (filter) {
        filter(context, events.data(), events.size());
    }
    return events;
}

void FakePointerDevices::open(Callbacks c) {
    recorder.record("pointers.open");
    callbacks = std::move(c);
}

std::vector<platform::PointerDevice> FakePointerDevices::current() {
    recorder.record("pointers.current");
    return present;
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
    if (found == present.end()) {
        return;
    }
    const platform::PointerDevice device = *found;
    present.erase(found);
    if (callbacks.removed) {
        callbacks.removed(device);
    }
}

bool FakeKeyboardGrab::grab() {
    recorder.record(std::string("keyboard.grab -> ") + (grantable ? "true" : "false"));
    held = grantable;
    return grantable;
}

void FakeKeyboardGrab::release() {
    recorder.record("keyboard.release");
    held = false;
}

std::optional<platform::CpuTicks> FakeHostStatistics::cpuTicks() {
    ++samples;
    recorder.record("host.cpuTicks");
    return ticks;
}

std::optional<std::uint64_t> FakeHostStatistics::memoryUsedBytes() {
    return memoryUsed;
}

bool FakeLoginRegistration::setEnabled(bool value, std::string& failure) {
    recorder.record(std::string("login.setEnabled ") + (value ? "true" : "false"));
    if (failWith) {
        failure = *failWith;
        return false;
    }
    enabled = value;
    return true;
}

std::optional<bool> FakeScrollSetting::naturalScroll() {
    recorder.record("scrollSetting.naturalScroll");
    return natural;
}

} // namespace tolvane::testing
