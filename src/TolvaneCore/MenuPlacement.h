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

// How far a menu beside a panel keeps off the screen's sides and off the panel: Plasma 6 draws
// a floating panel a few pixels beyond the room it reserves.
inline constexpr int menuClearance = 8;

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

enum class ScreenEdge { top, bottom, left, right };

// A menu that the compositor lays against an edge of the screen, clear of the panels there
// (Wayland's layer shell): the edge and how far along it the menu starts, from the screen's
// left for the top and bottom edges, from its top for the others.
struct EdgePlacement {
    ScreenEdge edge = ScreenEdge::top;
    int along = 0;
};

// Where such a menu goes when it opens at `anchor` (the click on the tray icon) on `screen`:
// against the edge nearest the anchor, taken to be the panel's (a tie goes to the top or
// bottom), and along it where menuPlacement puts it on the whole screen.
EdgePlacement edgePlacement(ScreenPoint anchor, int width, int height, ScreenArea screen);

} // namespace tolvane
