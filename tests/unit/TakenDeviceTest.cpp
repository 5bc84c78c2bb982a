// What the input service does with a device it has taken: the frames its clone gets, and
// whether it holds the device's grab.
#include "TolvaneCore/DeviceCapabilities.h"
#include "TolvaneCore/FrameAssembler.h"
#include "TolvaneCore/GrabState.h"
#include "TolvaneCore/WheelEvents.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <vector>

namespace tolvane {
using testing::TableRow, testing::readTable, testing::codeOf;
namespace {

using Events = std::vector<InputEvent>;
using namespace code;

constexpr InputEvent dropped{0xffff, 0, 0};  // libevdev reports SYN_DROPPED
constexpr InputEvent resynced{0xfffe, 0, 0}; // libevdev's resync is read to its end
constexpr InputEvent cut{0xfffd, 0, 0};      // one frame out ends, the next begins

// The events of a cell of the frame table, `cut` for each '/'.
Events eventsOf(std::string text) {
    Events events;
    for (std::size_t at = text.find('/'); at != text.npos; at = text.find('/', at + 2)) {
        text.replace(at, 1, ",/,");
    }
    std::istringstream items(text == "-" ? "" : text);
    for (std::string item; std::getline(items, item, ',');) {
        std::istringstream words(item);
        std::size_t times = 1;
        if (item.find('*') != item.npos && words >> times) {
            words.ignore(1);
        }
        std::string name;
        std::int32_t value = 1;
        words >> name >> value;
        const std::uint16_t type = name.starts_with("REL_")   ? evRel
                                   : name.starts_with("MSC_") ? evMsc
                                   : name.starts_with("SW_")  ? evSw
                                                              : evKey;
        const std::map<std::string, InputEvent> marks{
            {"SYN", {evSyn, 0, 0}}, {"dropped", dropped}, {"resynced", resynced}, {"/", cut}};
        const bool mark = marks.contains(name);
        events.insert(events.end(), times,
                      mark ? marks.at(name) : InputEvent{type, codeOf(name), words ? value : 1});
    }
    return events;
}

// What the clone gets, in order, for what is read from the device.
Events framesOut(const Events& read, const std::string& mode) {
    FrameAssembler frames;
    frames.dropKeys = mode == "held";
    if (mode == "inverted") {
        frames.filter = [](void*, InputEvent* e, std::size_t n) { negateWheelAxes(e, n); };
    }
    Events out;
    for (const InputEvent& e : read) {
        const auto frame = e == dropped    ? (frames.dropped(), std::span<const InputEvent>{})
                           : e == resynced ? frames.resynced()
                                           : frames.take(e);
        if (!frame.empty()) {
            out.insert(out.end(), out.empty() ? 0 : 1, cut);
            out.insert(out.end(), frame.begin(), frame.end());
        }
    }
    return out;
}

TEST(FrameAssembler, FramesGoOutWholeCutOnlyByTheBufferAndNeverMixedAcrossALoss) {
    for (const TableRow& row : readTable("frames.txt", 3)) {
        EXPECT_EQ(framesOut(eventsOf(row[1]), row[0]), eventsOf(row[2])) << row.where;
    }
}

// The place of `name` in `names`: an enum's values or the action bits, in their order.
unsigned indexOf(const std::vector<std::string>& names, const std::string& name,
                 const TableRow& row) {
    const auto found = std::find(names.begin(), names.end(), name);
    EXPECT_NE(found, names.end()) << row.where << ": no " << name;
    return unsigned(found - names.begin());
}

TEST(GrabState, EachStateAndEventGivesTheNextStateAndTheActionsInOrder) {
    const std::vector<std::string> states{"loose", "waiting", "grabbed"};
    const std::vector<std::string> events{"wantedKeyDown",  "wantedIdle",  "grabRefused",
                                          "grabbedKeyDown", "grabbedIdle", "unwanted"};
    const std::vector<std::string> actions{"ungrab", "unwatch", "tryGrab", "watch"};
    for (const TableRow& row : readTable("grab-steps.txt", 4)) {
        unsigned bits = grabNone;
        std::istringstream words(row[3] == "-" ? "" : row[3]);
        for (std::string word; words >> word;) {
            bits |= 1U << indexOf(actions, word, row);
        }
        const auto state = GrabState(indexOf(states, row[0], row));
        const auto next = GrabState(indexOf(states, row[2], row));
        EXPECT_EQ(grabStep(state, GrabEvent(indexOf(events, row[1], row))), (GrabStep{next, bits}))
            << row.where;
    }
}

} // namespace
} // namespace tolvane
