#pragma once

namespace tolvane {

// A rectangle of the screen in its own pixels: the whole screen, or the part that the panels
// leave free.
struct ScreenArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

struct ScreenPoint {
    int x = 0;
    int y = 0;
};

// Where the top left corner of a menu of `width` by `height` goes when it opens at `anchor`
// (the pointer on the tray icon), given the `free` area: beside the panel the icon is on, never
// over it. The menu opens down and to the right of the anchor where it fits, else up; else it
// moves up from the anchor just as far as it must. It moves left or right as far as it takes to
// lie inside the free area; a menu larger than the area keeps its top left corner inside it.
ScreenPoint menuPlacement(ScreenPoint anchor, int width, int height, ScreenArea free);

} // namespace tolvane
