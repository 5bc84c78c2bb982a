#include "TolvaneCore/MenuPlacement.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tolvane {
namespace {

TEST(MenuPlacement, OpensBesideThePanelInsideTheFreeArea) {
    for (const testing::TableRow& row : testing::readTable("menu-placement.txt", 4)) {
        std::istringstream cells(row[1] + " " + row[2]);
        ScreenArea free;
        ScreenPoint anchor;
        cells >> free.x >> free.y >> free.width >> free.height >> anchor.x >> anchor.y;
        const ScreenPoint at = menuPlacement(anchor, 300, 500, free);
        EXPECT_EQ(std::to_string(at.x) + " " + std::to_string(at.y), row[3]) << row.where;
    }
}

TEST(MenuPlacement, LiesAgainstTheEdgeNearestTheClickWhereTheCompositorPlacesIt) {
    const char* edges[] = {"top", "bottom", "left", "right"};
    for (const testing::TableRow& row : testing::readTable("edge-placement.txt", 4)) {
        std::istringstream cells(row[1]);
        ScreenPoint anchor;
        cells >> anchor.x >> anchor.y;
        const EdgePlacement at = edgePlacement(anchor, 300, 500, {0, 0, 1280, 800});
        EXPECT_EQ(std::string(edges[static_cast<int>(at.edge)]) + " " + std::to_string(at.along),
                  row[2] + " " + row[3])
            << row.where;
    }
}

} // namespace
} // namespace tolvane
