#include "TolvaneCore/GrabState.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(GrabState, EachStateAndEventGivesTheNextStateAndTheActionsInOrder) {
    using enum GrabState;
    using enum GrabEvent;
    struct Row {
        GrabState state;
        GrabEvent event;
        GrabState next;
        unsigned actions;
    };
    // clang-format off
    const Row rows[] = {
        {loose,   wantedKeyDown,   waiting, grabWatch},
        {loose,   wantedIdle,      loose,   grabTryGrab},
        {loose,   grabRefused,     loose,   grabNone},
        {loose,   grabbedKeyDown,  waiting, grabUngrab | grabWatch},
        {loose,   grabbedIdle,     grabbed, grabTrack | grabWatch},
        {loose,   unwanted,        loose,   grabNone},
        {waiting, wantedKeyDown,   waiting, grabNone},
        {waiting, wantedIdle,      waiting, grabTryGrab},
        {waiting, grabRefused,     loose,   grabUnwatch},
        {waiting, grabbedKeyDown,  waiting, grabUngrab},
        {waiting, grabbedIdle,     grabbed, grabTrack},
        {waiting, unwanted,        loose,   grabUnwatch},
        {grabbed, wantedKeyDown,   grabbed, grabNone},
        {grabbed, wantedIdle,      grabbed, grabNone},
        {grabbed, unwanted,        loose,   grabUntrack | grabUngrab | grabUnwatch},
        {grabbed, watchdogRelease, waiting, grabNone},
        {waiting, watchdogRelease, waiting, grabNone},
    };
    // clang-format on
    for (const Row& row : rows) {
        EXPECT_EQ(grabStep(row.state, row.event), (GrabStep{row.next, row.actions}))
            << "state " << int(row.state) << ", event " << int(row.event);
    }
}

} // namespace
} // namespace tolvane
