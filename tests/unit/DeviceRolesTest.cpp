#include "TolvaneCore/DeviceRoles.h"
#include "TolvaneCore/WheelEvents.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <sstream>
#include <vector>

namespace tolvane {
namespace {

using testing::TableRow, testing::readTable, testing::codeOf;

// A device of the table of devices: each name, or each A..B, sets its codes.
DeviceCapabilities deviceOf(const TableRow& row) {
    DeviceCapabilities caps;
    caps.name = row[0];
    caps.busType = codeOf(row[1]);
    std::istringstream names(row[3]);
    for (std::string name; names >> name;) {
        const std::size_t dots = name.find("..");
        const std::uint16_t last = codeOf(name.substr(dots == name.npos ? 0 : dots + 2));
        for (std::uint16_t c = codeOf(name.substr(0, dots)); c <= last; ++c) {
            if (name.starts_with("REL_")) {
                caps.rel.set(c);
            } else if (name.starts_with("ABS_")) {
                caps.abs.set(c);
            } else if (name.starts_with("SW_")) {
                caps.sw.set(c);
            } else if (name.starts_with("INPUT_PROP_")) {
                caps.props.set(c);
            } else {
                caps.key.set(c);
            }
        }
    }
    return caps;
}

// What the monitor, the scroll tap and the keyboard lock make of a device, in a few words.
std::string rolesOf(const DeviceCapabilities& caps) {
    const DeviceProperties p = pointerPropertiesOf(caps);
    std::string roles;
    const auto add = [&roles](bool on, const char* word) {
        roles += on ? std::string(roles.empty() ? "" : " ") + word : "";
    };
    add(p.primaryUsagePage == 1 && p.primaryUsage == 2, "mouse");
    add(p.primaryUsagePage == 1 && p.primaryUsage == 1, "pointer");
    add(p.builtIn == 1, "built-in");
    add(!p.builtIn, "bus-unknown");
    add(isExternalMouse(p), "external");
    add(hasWheel(caps), "wheel");
    add(keyHoldFor(caps) == KeyHold::keysOnly, "keys");
    add(keyHoldFor(caps) == KeyHold::keysAndPassThrough, "keys+rest");
    return roles;
}

TEST(DeviceRoles, PointerUsageBuiltInWheelAndKeyHoldFollowCapabilities) {
    for (const TableRow& row : readTable("devices.txt", 4)) {
        DeviceCapabilities caps = deviceOf(row);
        EXPECT_EQ(rolesOf(caps), row[2] == "-" ? "" : row[2]) << row.where;
        EXPECT_EQ(pointerPropertiesOf(caps).product, row[0]) << row.where;
        caps.name.clear();
        EXPECT_EQ(pointerPropertiesOf(caps).product, std::nullopt) << row.where;
    }
}

// What anyone may read of a device in sysfs, where the monitor learns it without access.
TEST(DeviceRoles, SysfsBitmapsAndFilesGiveTheCapabilities) {
    for (const TableRow& row : readTable("sysfs-bitmaps.txt", 2)) {
        std::istringstream codes(row[1] == "-" ? "" : row[1]);
        const std::vector<std::size_t> bits{std::istream_iterator<std::size_t>(codes), {}};
        EXPECT_EQ(sysfsBitmapBits(row[0]), bits) << row.where;
    }
    const std::map<std::string, std::string> mouse{{"name", "Logitech USB Receiver\n"},
                                                   {"id/bustype", "0003\n"},
                                                   {"capabilities/rel", "1943\n"},
                                                   {"capabilities/key", "1f0000 0 0 0 0\n"}};
    const DeviceCapabilities caps = capabilitiesFromSysfs([&](const char* file) {
        const auto found = mouse.find(file);
        return found == mouse.end() ? std::string() : found->second;
    });
    EXPECT_EQ(rolesOf(caps), "mouse external wheel");
    EXPECT_EQ(caps.name, "Logitech USB Receiver");
}

} // namespace
} // namespace tolvane
