#include "TolvaneCore/GrabState.h"

namespace tolvane {

GrabStep grabStep(GrabState state, GrabEvent event) {
    using enum GrabState;
    const bool watched = state != loose;
    switch (event) {
    case GrabEvent::wantedKeyDown:
        return {state == grabbed ? grabbed : waiting, watched ? grabNone : grabWatch};
    case GrabEvent::wantedIdle:
        return {state, state == grabbed ? grabNone : grabTryGrab};
    case GrabEvent::grabRefused:
        return {loose, watched ? grabUnwatch : grabNone};
    case GrabEvent::grabbedKeyDown:
        return {waiting, grabUngrab | (watched ? grabNone : grabWatch)};
    case GrabEvent::grabbedIdle:
        return {grabbed, watched ? grabNone : grabWatch};
    case GrabEvent::unwanted:
        if (state == grabbed) {
            return {loose, grabUngrab | grabUnwatch};
        }
        return {loose, watched ? grabUnwatch : grabNone};
    }
    return {state, grabNone};
}

} // namespace tolvane
