#pragma once

#include "platform/Platform.h"
#include "support/Recorder.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::testing {

// Recording fakes of every platform interface. Each records its calls in the shared journal
// ("scrollTap.create", "log: Tolvane: ...") and answers what the test has scripted.

class FakeInputAccess final : public platform::InputAccess {
public:
    explicit FakeInputAccess(Recorder& r) : recorder(r) {}
    bool isTrusted() override;
    void requestAccess() override { recorder.record("access.requestAccess"); }
    void openHelp() override { recorder.record("access.openHelp"); }

    bool trusted = true;

private:
    Recorder& recorder;
};

class FakeScrollTap final : public platform::ScrollTap {
public:
    explicit FakeScrollTap(Recorder& r) : recorder(r) {}
    bool create(platform::WheelEventFilter filter, void* context) override;

    // Passes events through the installed filter as the real tap would before re-emitting.
    std::vector<InputEvent> pass(std::vector<InputEvent> events) const;

    // Answers of create(), front first; once empty, `available` answers.
    std::deque<bool> answers;
    bool available = true;
    int created = 0;

private:
    Recorder& recorder;
    platform::WheelEventFilter filter = nullptr;
    void* context = nullptr;
};

class FakePointerDevices final : public platform::PointerDevices {
public:
    explicit FakePointerDevices(Recorder& r) : recorder(r) {}
    void open(Callbacks callbacks) override;
    std::vector<platform::PointerDevice> current() override;

    // What a device arrival or removal delivers after open().
    void plug(const platform::PointerDevice& device);
    void unplug(const std::string& id);

    std::vector<platform::PointerDevice> present;

private:
    Recorder& recorder;
    Callbacks callbacks;
};

class FakeKeyboardGrab final : public platform::KeyboardGrab {
public:
    explicit FakeKeyboardGrab(Recorder& r) : recorder(r) {}
    bool grab() override;
    void release() override;

    bool grantable = true;
    bool held = false;

private:
    Recorder& recorder;
};

class FakeHostStatistics final : public platform::HostStatistics {
public:
    explicit FakeHostStatistics(Recorder& r) : recorder(r) {}
    std::optional<platform::CpuTicks> cpuTicks() override;
    std::optional<std::uint64_t> memoryUsedBytes() override;
    std::uint64_t physicalMemoryBytes() override { return physicalMemory; }
    int activeProcessorCount() override { return processors; }
    std::optional<platform::RootVolume> rootVolume() override { return volume; }

    std::optional<platform::CpuTicks> ticks = platform::CpuTicks{1000, 4000};
    std::optional<std::uint64_t> memoryUsed = 6ull << 30;
    std::uint64_t physicalMemory = 16ull << 30;
    int processors = 8;
    std::optional<platform::RootVolume> volume = platform::RootVolume{1000000000000, 500000000000};
    int samples = 0;

private:
    Recorder& recorder;
};

class FakeLoginRegistration final : public platform::LoginRegistration {
public:
    explicit FakeLoginRegistration(Recorder& r) : recorder(r) {}
    bool isEnabled() override { return enabled; }
    bool setEnabled(bool enabled, std::string& failure) override;

    bool enabled = false;
    std::optional<std::string> failWith;

private:
    Recorder& recorder;
};

class FakeScrollSetting final : public platform::ScrollSetting {
public:
    explicit FakeScrollSetting(Recorder& r) : recorder(r) {}
    std::optional<bool> naturalScroll() override;

    std::optional<bool> natural;

private:
    Recorder& recorder;
};

class FakeSystemLog final : public platform::SystemLog {
public:
    explicit FakeSystemLog(Recorder& r) : recorder(r) {}
    void write(const std::string& text) override { recorder.record("log: " + text); }

private:
    Recorder& recorder;
};

// All fakes on one journal, and the Platform that hands them out.
struct FakePlatform {
    Recorder recorder;
    FakeInputAccess access{recorder};
    FakeScrollTap scrollTap{recorder};
    FakePointerDevices pointers{recorder};
    FakeKeyboardGrab keyboard{recorder};
    FakeHostStatistics host{recorder};
    FakeLoginRegistration login{recorder};
    FakeScrollSetting scrollSetting{recorder};
    FakeSystemLog systemLog{recorder};
    platform::Platform platform{access, scrollTap, pointers,      keyboard,
                                host,   login,     scrollSetting, systemLog};
};

} // namespace tolvane::testing
