#include "TolvaneCore/GrabState.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <vector>

namespace tolvane {
using testing::TableRow, testing::readTable;
namespace {

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
