#include "TolvaneCore/FrameAssembler.h"
#include "TolvaneCore/DeviceCapabilities.h"
#include "TolvaneCore/WheelEvents.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace tolvane {
namespace {

using Events = std::vector<InputEvent>;
using namespace code;

constexpr InputEvent syn{evSyn, 0, 0};
constexpr InputEvent dropped{0xffff, 0, 0};  // libevdev reports SYN_DROPPED
constexpr InputEvent resynced{0xfffe, 0, 0}; // libevdev's resync is read to its end

Events operator+(Events a, const Events& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

enum Mode { plain, held, inverted };

// Every frame the clone gets, in order, for what is read from the device.
std::vector<Events> framesOut(const Events& read, Mode mode) {
    FrameAssembler frames;
    frames.dropKeys = mode == held;
    if (mode == inverted) {
        frames.filter = [](void*, InputEvent* e, std::size_t n) { negateWheelAxes(e, n); };
    }
    std::vector<Events> out;
    for (const InputEvent& e : read) {
        const auto frame = e == dropped    ? (frames.dropped(), std::span<const InputEvent>{})
                           : e == resynced ? frames.resynced()
                                           : frames.take(e);
        if (!frame.empty()) {
            out.emplace_back(frame.begin(), frame.end());
        }
    }
    return out;
}

InputEvent rel(std::uint16_t code, std::int32_t value) {
    return {evRel, code, value};
}
InputEvent key(std::uint16_t code) {
    return {evKey, code, 1};
}

TEST(FrameAssembler, FramesGoOutWholeCutOnlyByTheBufferAndNeverMixedAcrossALoss) {
    const InputEvent x = rel(relX, 1), x2 = rel(relX, 2), up{evKey, btnLeft, 0}, a = key(keyA);
    const InputEvent scan{evMsc, mscScan, 4}, stamp{evMsc, 0x05, 1000}; // MSC_TIMESTAMP
    const InputEvent power = key(keyPower), sleep = key(keySleep), wake = key(keyWakeUp);
    const InputEvent sw{evSw, swTabletMode, 1}, dpad = key(btnDpadUp), happy = key(btnTriggerHappy);
    const Events big(FrameAssembler::capacity, x), almost(FrameAssembler::capacity - 1, a);
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    const Events wheels{rel(relWheel, 1),          rel(relWheelHiRes, 120), rel(relHWheel, -2),
                        rel(relHWheelHiRes, -240), rel(relWheel, least),    rel(relWheel, most),
                        rel(0x07, 4) /* a dial */, {evKey, relWheel, 1},    syn};
    const Events negated{rel(relWheel, -1),
                         rel(relWheelHiRes, -120),
                         rel(relHWheel, 2),
                         rel(relHWheelHiRes, 240),
                         rel(relWheel, most),
                         rel(relWheel, -most),
                         rel(0x07, 4),
                         {evKey, relWheel, 1},
                         syn};
    struct Row {
        const char* what;
        Events read;
        Mode mode;
        std::vector<Events> out;
    };
    // clang-format off
    const Row rows[] = {
        {"a frame passes whole", {x, x2, syn}, plain, {{x, x2, syn}}},
        {"nothing before its SYN_REPORT", {x, x2}, plain, {}},
        {"every wheel axis negated, nothing else", wheels, inverted, {negated}},
        {"a frame cut by SYN_DROPPED is discarded", {x, dropped, up, syn, resynced, x2, syn}, plain,
         {{up, syn}, {x2, syn}}},
        {"a resync without its end is closed", {x, dropped, up, resynced}, plain, {{up, syn}}},
        {"a frame too long still ends", big + Events{syn}, plain, {big, {syn}}},
        {"held keys dropped, their frame too", {scan, a, syn, x, a, syn}, held, {{x, syn}}},
        {"power, sleep and wake pass a held keyboard", {scan, power, syn, sleep, wake, syn}, held,
         {{power, syn}, {sleep, wake, syn}}},
        {"a held device keeps all but its keys, in order",
         {scan, a, key(btnLeft), x, key(keyVolumeUp), power, key(keyOk), sw, key(btnTouch), dpad,
          happy, syn}, held, {{key(btnLeft), x, power, sw, key(btnTouch), dpad, happy, syn}}},
        {"a frame of EV_MSC alone passes", {stamp, syn}, held, {{stamp, syn}}},
        {"a long frame of held keys ends", Events{x} + almost + Events{a, syn}, held, {{x}, {syn}}},
    };
    // clang-format on
    for (const Row& row : rows) {
        EXPECT_EQ(framesOut(row.read, row.mode), row.out) << row.what;
    }
}

} // namespace
} // namespace tolvane
