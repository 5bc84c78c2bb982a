#include "TolvaneCore/MenuPlacement.h"

#include <algorithm>

namespace tolvane {

ScreenPoint menuPlacement(ScreenPoint anchor, int width, int height, ScreenArea free) {
    const int right = free.x + free.width;
    const int bottom = free.y + free.height;
    const int x = std::max(free.x, std::min(anchor.x, right - width));
    const int below = std::max(anchor.y, free.y);
    const int above = std::min(anchor.y, bottom) - height;
    const int y = below + height <= bottom ? below
                  : above >= free.y        ? above
                                           : std::max(free.y, bottom - height);
    return {x, y};
}

EdgePlacement edgePlacement(ScreenPoint anchor, int width, int height, ScreenArea screen) {
    const int toTop = anchor.y - screen.y;
    const int toBottom = screen.y + screen.height - anchor.y;
    const int toLeft = anchor.x - screen.x;
    const int toRight = screen.x + screen.width - anchor.x;
    const ScreenPoint at = menuPlacement(anchor, width, height, screen);
    const int vertical = std::min(toTop, toBottom);
    if (vertical <= std::min(toLeft, toRight)) {
        return {toTop <= toBottom ? ScreenEdge::top : ScreenEdge::bottom, at.x - screen.x};
    }
    return {toLeft <= toRight ? ScreenEdge::left : ScreenEdge::right, at.y - screen.y};
}

} // namespace tolvane
