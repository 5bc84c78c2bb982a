#include "TolvaneCore/DeviceRoles.h"
#include "TolvaneCore/WheelEvents.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace tolvane {
namespace {

using namespace code;

std::bitset<keyCount> keyboardKeys() {
    std::bitset<keyCount> keys;
    for (std::uint16_t k = keyEsc; k <= 248; ++k) { // up to the microphone mute key
        keys.set(k);
    }
    return keys;
}

const auto xy = codeSet<relCount>({relX, relY});
const auto mouseRel = codeSet<relCount>({relX, relY, relWheel, relHWheel});
const auto mouseButtons = codeSet<keyCount>({btnLeft, btnRight, 0x112});
const auto absXY = codeSet<absCount>({absX, absY});
const auto touchpadAbs = codeSet<absCount>({absX, absY, absMtPositionX});
const auto touchpadKeys = codeSet<keyCount>({btnLeft, btnToolFinger, btnTouch});
const auto mediaKeys = codeSet<keyCount>(
    {keyMute, keyVolumeDown, keyVolumeUp, keyPlayPause, keyBrightnessDown, keyBrightnessUp});
const auto tabletSwitch = codeSet<swCount>({swTabletMode});
const auto wheel = codeSet<relCount>({relWheel});
const auto hWheel = codeSet<relCount>({relHWheel});
const auto volume = codeSet<absCount>({0x20});
const auto systemKeys = codeSet<keyCount>({keyPower, keySleep, keyWakeUp});
const auto keyboardAndTouchpad = keyboardKeys() | touchpadKeys;
const auto penKeys = codeSet<keyCount>({btnLeft, btnToolPen, btnStylus, btnTouch});
const auto touchKeys = codeSet<keyCount>({btnLeft, btnTouch});
const auto pointerProp = codeSet<propCount>({propPointer});
const auto directProp = codeSet<propCount>({propDirect});

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
    struct Row {
        const char* name;
        std::uint16_t bus;
        const char* roles;
        std::bitset<relCount> rel{};
        std::bitset<absCount> abs{};
        std::bitset<keyCount> key{};
        std::bitset<swCount> sw{};
        std::bitset<propCount> props{};
    };
    const Row rows[] = {
        {"USB Keyboard", busUsb, "keys+rest", {}, {}, keyboardKeys()}, // its power key passes
        {"Letters Only", busUsb, "keys", {}, {}, codeSet<keyCount>({keyEsc, keyA, keyF1})},
        {"USB Keyboard Consumer Control", busUsb, "wheel keys+rest", hWheel, volume, mediaKeys},
        {"USB Keyboard System Control", busUsb, "", {}, {}, systemKeys},
        {"USB Keyboard Mouse", busUsb, "mouse external wheel", mouseRel, {}, mouseButtons},
        {"USB Keyboard Mouse", busUsb, "", xy},
        {"Power Button", busHost, "built-in", {}, {}, codeSet<keyCount>({keyPower})},
        {"Lid Switch", busHost, "built-in", {}, {}, {}, codeSet<swCount>({swLid})},
        {"MX Anywhere", busBluetooth, "mouse external wheel", mouseRel, {}, mouseButtons},
        {"ELAN Touchpad", busI2c, "built-in", {}, touchpadAbs, touchpadKeys, {}, pointerProp},
        {"TPPS/2 IBM TrackPoint", busI8042, "mouse built-in", xy, {}, mouseButtons},
        {"Acme Wireless TrackPad", busUsb, "mouse wheel", mouseRel, {}, mouseButtons},
        {"Keyboard with Touchpad", busUsb, "keys+rest", {}, touchpadAbs, keyboardAndTouchpad},
        {"AT Translated Set 2 keyboard", busI8042, "built-in keys+rest", {}, {}, keyboardKeys()},
        {"ThinkPad Extra Buttons", busHost, "built-in keys+rest", {}, {}, mediaKeys, tabletSwitch},
        {"QEMU USB Tablet", busUsb, "pointer external wheel", wheel, absXY, mouseButtons},
        {"Wacom Intuos Pen", busUsb, "", {}, absXY, penKeys},
        {"Goodix Touchscreen", busI2c, "built-in", {}, absXY, touchKeys, {}, directProp},
        {"Virtual", busVirtual, "mouse bus-unknown external wheel", mouseRel, {}, mouseButtons},
    };
    for (const Row& row : rows) {
        DeviceCapabilities caps;
        caps.name = row.name;
        caps.busType = row.bus;
        caps.rel = row.rel;
        caps.abs = row.abs;
        caps.key = row.key;
        caps.sw = row.sw;
        caps.props = row.props;
        EXPECT_EQ(rolesOf(caps), row.roles) << row.name;
        EXPECT_EQ(pointerPropertiesOf(caps).product, row.name);
        caps.name.clear();
        EXPECT_EQ(pointerPropertiesOf(caps).product, std::nullopt);
    }
}

// What anyone may read of a device in sysfs, where the monitor learns it without access.
TEST(DeviceRoles, SysfsBitmapsAndFilesGiveTheCapabilities) {
    const std::pair<const char*, std::vector<std::size_t>> bitmaps[] = {
        {"0\n", {}},
        {"1943\n", {0, 1, 6, 8, 11, 12}},
        {"1 0", {64}},
        {"1f0000 0 0 0 0\n", {272, 273, 274, 275, 276}},
        {"8000000000000000 1", {0, 127}},
        {"12 zz", {}},
        {"10000000000000000", {}},
    };
    for (const auto& [text, bits] : bitmaps) {
        EXPECT_EQ(sysfsBitmapBits(text), bits) << text;
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

TEST(DeviceRoles, OnlyAMarkedPhysMakesAClone) {
    DeviceCapabilities device;
    EXPECT_FALSE(isTolvaneClone(device));
    device.phys = "usb-0000:00:14.0-1/input0";
    EXPECT_FALSE(isTolvaneClone(device));
    device.phys = markedPhys(device.phys);
    EXPECT_TRUE(isTolvaneClone(device));
}

} // namespace
} // namespace tolvane
