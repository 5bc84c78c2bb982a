#pragma once

#include "platform/Platform.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::testing {

using Lines = std::vector<std::string>;

// One journal shared by every fake of a test, so a test can check the order of calls across
// interfaces and log lines together: "keyboard.grab -> true", "log: Tolvane: ...".
class Recorder {
public:
    void record(std::string call) { calls.push_back(std::move(call)); }
    void clear() { calls.clear(); }

    // The calls whose text starts with `prefix`, in order.
    Lines matching(const std::string& prefix) const {
        Lines found;
        std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                     [&prefix](const std::string& call) { return call.starts_with(prefix); });
        return found;
    }

    Lines calls;
};

// Recording fakes of the platform interfaces. Each records the calls the OS would see and
// answers what the test has scripted.
class Recording {
public:
    explicit Recording(Recorder& r) : recorder(r) {}

protected:
    Recorder& recorder;
};

class FakeInputAccess final : public platform::InputAccess, Recording {
public:
    using Recording::Recording;
    bool isTrusted() override { return trusted; }
    void requestAccess() override { recorder.record("access.requestAccess"); }
    bool openHelp() override {
        recorder.record("access.openHelp");
        return helpOpens;
    }
    std::string helpPage() override { return "/usr/share/tolvane/help/input-access.html"; }

    bool trusted = true;
    bool helpOpens = true;
};

class FakeScrollTap final : public platform::ScrollTap, Recording {
public:
    using Recording::Recording;
    bool create(bool value) override {
        recorder.record(available ? "scrollTap.create -> true" : "scrollTap.create -> false");
        inverting = available ? std::optional(value) : inverting;
        return available;
    }
    void setInverting(bool value) override { inverting = value; }

    bool available = true;         // the answer of create()
    std::optional<bool> inverting; // what the service was told last, once the tap exists
};

class FakePointerDevices final : public platform::PointerDevices {
public:
    void open(Callbacks c) override { callbacks = std::move(c); }
    std::vector<platform::PointerDevice> current() override { return present; }

    // What a device arrival or removal delivers after open().
    void plug(const platform::PointerDevice& device) {
        present.push_back(device);
        callbacks.added(device);
    }
    void unplug(const std::string& id) {
        const auto gone = std::ranges::find(present, id, &platform::PointerDevice::id);
        if (gone != present.end()) {
            const platform::PointerDevice device = *gone;
            present.erase(gone);
            callbacks.removed(device);
        }
    }

    std::vector<platform::PointerDevice> present;

private:
    Callbacks callbacks;
};

class FakeKeyboardGrab final : public platform::KeyboardGrab, Recording {
public:
    using Recording::Recording;
    bool grab() override {
        recorder.record(grantable ? "keyboard.grab -> true" : "keyboard.grab -> false");
        return grantable;
    }
    void release() override { recorder.record("keyboard.release"); }

    bool grantable = true;
};

class FakeHostStatistics final : public platform::HostStatistics {
public:
    std::optional<TickPair> cpuTicks() override {
        ++samples;
        return ticks;
    }
    std::optional<std::uint64_t> memoryUsedBytes() override { return 6ull << 30; }
    std::uint64_t physicalMemoryBytes() override { return 16ull << 30; }
    int activeProcessorCount() override { return 8; }
    std::optional<platform::RootVolume> rootVolume() override {
        return platform::RootVolume{1000000000000, 500000000000};
    }

    std::optional<TickPair> ticks = TickPair{1000, 4000};
    int samples = 0;
};

class FakeLoginRegistration final : public platform::LoginRegistration, Recording {
public:
    using Recording::Recording;
    bool isEnabled() override { return enabled; }
    bool setEnabled(bool value, std::string& failure) override {
        recorder.record(value ? "login.setEnabled true" : "login.setEnabled false");
        failure = failWith.value_or("");
        enabled = failWith ? enabled : value;
        return !failWith;
    }

    bool enabled = false;
    std::optional<std::string> failWith;
};

class FakeScrollSetting final : public platform::ScrollSetting {
public:
    std::optional<bool> naturalScroll() override { return natural; }

    std::optional<bool> natural;
};

class FakeSystemLog final : public platform::SystemLog, Recording {
public:
    using Recording::Recording;
    void write(const std::string& text) override { recorder.record("log: " + text); }
};

// All fakes on one journal, and the Platform that hands them out.
struct FakePlatform {
    Recorder recorder;
    FakeInputAccess access{recorder};
    FakeScrollTap scrollTap{recorder};
    FakePointerDevices pointers;
    FakeKeyboardGrab keyboard{recorder};
    FakeHostStatistics host;
    FakeLoginRegistration login{recorder};
    FakeScrollSetting scrollSetting;
    FakeSystemLog systemLog{recorder};
    platform::Platform platform{access, scrollTap, pointers,      keyboard,
                                host,   login,     scrollSetting, systemLog};
};

} // namespace tolvane::testing
