#include "TolvaneCore/FrameAssembler.h"
#include "TolvaneCore/DeviceCapabilities.h"
#include "TolvaneCore/WheelEvents.h"

#include <gtest/gtest.h>

#include <vector>

namespace tolvane {
namespace {

using Events = std::vector<InputEvent>;
using namespace code;

constexpr InputEvent syn{evSyn, 0, 0};
constexpr InputEvent dropped{0xffff, 0, 0};  // libevdev reports SYN_DROPPED
constexpr InputEvent resynced{0xfffe, 0, 0}; // libevdev's resync is read to its end

Events repeated(InputEvent event, std::size_t times) {
    return Events(times, event);
}

Events operator+(Events a, const Events& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Every frame the clone gets, in order, for what is read from the device.
std::vector<Events> framesOut(const Events& read, bool dropKeys, bool invert) {
    FrameAssembler frames;
    frames.dropKeys = dropKeys;
    if (invert) {
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

TEST(FrameAssembler, FramesGoOutWholeCutOnlyByTheBufferAndNeverMixedAcrossALoss) {
    const InputEvent x{evRel, relX, 1}, x2{evRel, relX, 2}, up{evKey, btnLeft, 0};
    const InputEvent wheel{evRel, relWheel, 1}, a{evKey, keyA, 1}, scan{evMsc, mscScan, 4};
    const InputEvent power{evKey, keyPower, 1}, sleep{evKey, keySleep, 1},
        wake{evKey, keyWakeUp, 1};
    const InputEvent stamp{evMsc, 0x05, 1000}; // MSC_TIMESTAMP
    const auto big = FrameAssembler::capacity;
    struct Row {
        const char* what;
        Events read;
        bool dropKeys, invert;
        std::vector<Events> out;
    };
    const Row rows[] = {
        {"a frame passes whole", {x, x2, syn}, false, false, {{x, x2, syn}}},
        {"nothing before its SYN_REPORT", {x, x2}, false, false, {}},
        {"the wheel inverted", {wheel, syn}, false, true, {{{evRel, relWheel, -1}, syn}}},
        {"a frame cut by SYN_DROPPED is discarded",
         {x, dropped, up, syn, resynced, x2, syn},
         false,
         false,
         {{up, syn}, {x2, syn}}},
        {"a resync without its end is closed",
         {x, dropped, up, resynced},
         false,
         false,
         {{up, syn}}},
        {"a frame too long still ends",
         repeated(x, big) + Events{syn},
         false,
         false,
         {repeated(x, big), {syn}}},
        {"held keys dropped, their frame too", {scan, a, syn, x, a, syn}, true, false, {{x, syn}}},
        {"power, sleep and wake pass a held keyboard",
         {scan, power, syn, sleep, wake, syn},
         true,
         false,
         {{power, syn}, {sleep, wake, syn}}},
        {"a held keyboard keeps all but its keys, in order",
         {scan,
          a,
          {evKey, btnLeft, 1},
          x,
          {evKey, keyVolumeUp, 1},
          power,
          {evKey, keyOk, 1},
          {evSw, swTabletMode, 1},
          {evKey, btnTouch, 1},
          {evKey, btnDpadUp, 1},
          {evKey, btnTriggerHappy, 1},
          syn},
         true,
         false,
         {{{evKey, btnLeft, 1},
           x,
           power,
           {evSw, swTabletMode, 1},
           {evKey, btnTouch, 1},
           {evKey, btnDpadUp, 1},
           {evKey, btnTriggerHappy, 1},
           syn}}},
        {"a frame of EV_MSC alone passes", {stamp, syn}, true, false, {{stamp, syn}}},
        {"a long frame of held keys ends",
         Events{x} + repeated(a, big - 1) + Events{a, syn},
         true,
         false,
         {{x}, {syn}}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(framesOut(row.read, row.dropKeys, row.invert), row.out) << row.what;
    }
}

} // namespace
} // namespace tolvane
