// Drives the wheel benchmark inside the test kernel: virtual mice made through uinput, the
// subject started anew for each round, and each frame timed from its write on the mouse to
// its read on the subject's device. The thing easy to get wrong: a subject's device can
// appear before the subject holds the mouse, so a round times nothing until a first frame
// has come through; and a pipeline's processes must all be gone, their devices with them,
// before the next round looks for devices by name.
#include "bench/wheel/WheelLatency.h"

#include "bench/wheel/SubjectProcess.h"
#include "kernel/VirtualDevices.h"

#include <dirent.h>
#include <linux/input.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <thread>

namespace tolvane::bench {
namespace {

using Clock = std::chrono::steady_clock;
using kerneltest::VirtualDevice;

constexpr auto startLimit = std::chrono::seconds(10);
constexpr int frameWaitMs = 1000;
constexpr int firstFrameAttempts = 10;
constexpr int warmUpFrames = 100;

std::string mouseName(int index) {
    return "Tolvane Bench Mouse " + std::to_string(index + 1);
}

enum class Outcome { arrived, wrong, lost };

// One mouse and the subject's device for it.
class FramePath {
public:
    FramePath(int mouse, int output, bool negates)
        : mouse(mouse), output(output), sign(negates ? -1 : 1) {}

    Outcome send(int value, double& micros) {
        const std::array<input_event, 3> frame{{{{}, EV_REL, REL_WHEEL, value},
                                                {{}, EV_REL, REL_WHEEL_HI_RES, value * 120},
                                                {{}, EV_SYN, SYN_REPORT, 0}}};
        std::array<input_event, 16> got;
        std::size_t count = 0;
        const auto start = Clock::now();
        if (::write(mouse, frame.data(), sizeof frame) != ssize_t(sizeof frame)) {
            return Outcome::lost;
        }
        while (count == 0 || got[count - 1].type != EV_SYN || got[count - 1].code != SYN_REPORT) {
            pollfd ready{output, POLLIN, 0};
            if (count == got.size() || ::poll(&ready, 1, frameWaitMs) <= 0) {
                return count == 0 ? Outcome::lost : Outcome::wrong;
            }
            const ssize_t n =
                ::read(output, got.data() + count, (got.size() - count) * sizeof(input_event));
            if (n < 0 && errno != EAGAIN) {
                return Outcome::lost; // the device is gone
            }
            count += n > 0 ? std::size_t(n) / sizeof(input_event) : 0;
        }
        micros = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
        const bool expected = count == 3 && got[0].type == EV_REL && got[0].code == REL_WHEEL &&
                              got[0].value == sign * value && got[1].type == EV_REL &&
                              got[1].code == REL_WHEEL_HI_RES && got[1].value == sign * value * 120;
        return expected ? Outcome::arrived : Outcome::wrong;
    }

    // True once a frame has come through, after which a few more go untimed.
    bool warmUp() {
        double ignored = 0;
        bool through = false;
        for (int i = 0; i < firstFrameAttempts && !through; ++i) {
            through = send(1, ignored) != Outcome::lost;
        }
        for (int i = 0; through && i < warmUpFrames; ++i) {
            send(1 + i % 5, ignored);
        }
        return through;
    }

private:
    int mouse;
    int output;
    int sign;
};

// Event nodes by device name, read from sysfs: opening each node to ask would cost an RCU
// grace period per close, seconds for a few dozen nodes under emulation. A device shows in
// sysfs a moment before devtmpfs has made its node, so only nodes that exist count.
std::map<std::string, std::vector<std::string>> nodesByName() {
    std::map<std::string, std::vector<std::string>> nodes;
    DIR* dir = ::opendir("/sys/class/input");
    while (const dirent* entry = dir ? ::readdir(dir) : nullptr) {
        const std::string node = entry->d_name;
        std::ifstream file("/sys/class/input/" + node + "/device/name");
        std::string name;
        const std::string path = "/dev/input/" + node;
        if (node.rfind("event", 0) == 0 && std::getline(file, name) &&
            ::access(path.c_str(), R_OK) == 0) {
            nodes[name].push_back(path);
        }
    }
    if (dir) {
        ::closedir(dir);
    }
    return nodes;
}

// The subject's device for each mouse, once all are there or the time is up; empty, with
// the reason in `error`, when not even the first mouse has one.
std::vector<std::string> waitForOutputs(const std::vector<std::string>& originals,
                                        SubjectProcess& subject, std::string& error) {
    const auto end = Clock::now() + startLimit;
    std::vector<std::string> outputs;
    while (Clock::now() < end) {
        outputs.clear();
        auto nodes = nodesByName();
        for (std::size_t i = 0; i < originals.size(); ++i) {
            std::vector<std::string>& named = nodes[mouseName(int(i))];
            std::erase(named, originals[i]);
            if (named.empty()) {
                break;
            }
            outputs.push_back(named[0]);
        }
        if (outputs.size() == originals.size()) {
            return outputs;
        }
        if (const auto status = subject.ended()) {
            error = "the subject ended with status " + std::to_string(*status) +
                    " before its device appeared";
            return {};
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    if (outputs.empty()) {
        error = "no device of the subject's appeared";
    }
    return outputs;
}

int countGrabbed(const std::vector<std::string>& originals) {
    int grabbed = 0;
    for (const std::string& path : originals) {
        kerneltest::NodeReader reader(path);
        grabbed += reader.isOpen() && !reader.tryGrab();
    }
    return grabbed;
}

void runRound(const WheelSubject& subject, int frames, int idleSeconds, WheelFigures& figures) {
    std::vector<std::unique_ptr<VirtualDevice>> mice;
    std::vector<std::string> originals;
    for (int i = 0; i < subject.devices; ++i) {
        mice.push_back(VirtualDevice::plug(kerneltest::usbMouse(mouseName(i))));
        if (!mice.back()) {
            figures.error = "uinput refused a virtual mouse";
            return;
        }
        originals.push_back(mice.back()->path());
    }
    const auto started = Clock::now();
    SubjectProcess process(subject.command, originals[0]);
    if (!process.started()) {
        figures.error = "the subject cannot be started";
        return;
    }
    const auto outputs = waitForOutputs(originals, process, figures.error);
    if (outputs.empty()) {
        return;
    }
    const double startMs =
        std::chrono::duration<double, std::milli>(Clock::now() - started).count();
    figures.slowestStartMs = std::max(figures.slowestStartMs, startMs);
    kerneltest::NodeReader output(outputs[0]);
    FramePath path(mice[0]->descriptor(), output.descriptor(), subject.negates);
    const bool through = path.warmUp();
    const int grabbed = countGrabbed(originals);
    if (!through) {
        figures.error = "no frame came through the subject, which holds " +
                        std::to_string(grabbed) + " of " + std::to_string(subject.devices) +
                        (process.ended() ? " mice and has ended" : " mice");
        return;
    }
    figures.grabbed = figures.grabbed < 0 ? grabbed : std::min(figures.grabbed, grabbed);
    const auto clock = process.processorClock();
    std::uint64_t cpuBefore = clock.nanoseconds();
    for (int i = 0; i < frames; ++i) {
        // Both directions and several sizes; the input core drops a value of 0.
        const int value = (i % 2 ? -1 : 1) * (1 + i % 7);
        double micros = 0;
        const Outcome outcome = path.send(value, micros);
        ++figures.sent;
        const std::uint64_t cpuAfter = clock.nanoseconds();
        if (outcome == Outcome::arrived) {
            ++figures.arrived;
            figures.micros.push_back(micros);
            figures.cpuMicros.push_back(double(cpuAfter - cpuBefore) / 1000);
        }
        cpuBefore = cpuAfter;
        figures.wrong += outcome == Outcome::wrong;
        if (outcome == Outcome::lost && process.ended()) {
            figures.error = "the subject ended while frames were sent";
            return;
        }
    }
    if (idleSeconds > 0) {
        // First as long again for what the last frames set off to end (the grab watchdog
        // looks once, its timeout after input), then the count.
        std::this_thread::sleep_for(std::chrono::seconds(idleSeconds));
        const long before = process.voluntarySwitches();
        std::this_thread::sleep_for(std::chrono::seconds(idleSeconds));
        figures.idleWakeUps = process.voluntarySwitches() - before;
    }
}

} // namespace

std::vector<WheelFigures> measureWheelPath(const std::vector<WheelSubject>& subjects, int frames,
                                           int rounds, int idleSeconds) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1); // so that a pipeline's processes are reaped here
    std::vector<WheelFigures> figures(subjects.size());
    for (auto& f : figures) {
        f.micros.reserve(std::size_t(frames));
    }
    for (int round = 0; round < rounds; ++round) {
        const int share = frames / rounds + (round < frames % rounds ? 1 : 0);
        for (std::size_t s = 0; s < subjects.size(); ++s) {
            if (figures[s].error.empty()) {
                runRound(subjects[s], share, round + 1 == rounds ? idleSeconds : 0, figures[s]);
            }
        }
    }
    return figures;
}

double percentile(std::vector<double> values, double fraction) {
    if (values.empty()) {
        return 0;
    }
    const auto rank = std::size_t(std::ceil(fraction * double(values.size())));
    const std::size_t index = rank == 0 ? 0 : std::min(rank, values.size()) - 1;
    std::nth_element(values.begin(), values.begin() + long(index), values.end());
    return values[index];
}

} // namespace tolvane::bench
