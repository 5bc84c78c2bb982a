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

} // namespace tolvane
