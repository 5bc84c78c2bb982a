#include "TolvaneCore/DeviceRoles.h"
#include "TolvaneCore/WheelEvents.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace tolvane {
namespace {

using namespace code;

constexpr std::uint16_t relWheelCode = relWheel, relHWheelCode = relHWheel;
constexpr std::uint16_t absVolume = 0x20, btnMiddle = 0x112, keyMicMute = 248;

std::bitset<keyCount> fullKeyboardKeys() {
    std::bitset<keyCount> keys;
    for (std::uint16_t k = keyEsc; k <= keyMicMute; ++k) {
        keys.set(k);
    }
    return keys;
}

struct Device {
    const char* name;
    std::uint16_t bus;
    std::bitset<relCount> rel{};
    std::bitset<absCount> abs{};
    std::bitset<keyCount> key{};
    std::bitset<swCount> sw{};
    std::bitset<propCount> props{};

    DeviceCapabilities capabilities() const {
        DeviceCapabilities c;
        c.name = name;
        c.busType = bus;
        c.rel = rel;
        c.abs = abs;
        c.key = key;
        c.sw = sw;
        c.props = props;
        return c;
    }
};

struct Row {
    Device device;
    std::optional<std::int64_t> usage; // usage on page 1, absent when no pointer usage
    std::optional<std::int64_t> builtIn;
    bool external;
    bool wheel;
    KeyHold keys;
};

const auto mouseRel = codeSet<relCount>({relX, relY, relWheelCode, relHWheelCode});
const auto mouseButtons = codeSet<keyCount>({btnLeft, btnRight, btnMiddle});
const auto touchpadAbs = codeSet<absCount>({absX, absY, absMtPositionX});
const auto touchpadKeys = codeSet<keyCount>({btnLeft, btnToolFinger, btnTouch});
const auto mediaKeys = codeSet<keyCount>(
    {keyMute, keyVolumeDown, keyVolumeUp, keyPlayPause, keyBrightnessDown, keyBrightnessUp});

const Row rows[] = {
    {{"Acme USB Keyboard", busUsb, {}, {}, fullKeyboardKeys()},
     std::nullopt,
     0,
     false,
     false,
     KeyHold::keysOnly},
    {{"Acme USB Keyboard Consumer Control", busUsb, codeSet<relCount>({relHWheelCode}),
      codeSet<absCount>({absVolume}), mediaKeys},
     std::nullopt,
     0,
     false,
     true,
     KeyHold::keysAndPassThrough},
    {{"Acme USB Keyboard System Control",
      busUsb,
      {},
      {},
      codeSet<keyCount>({keyPower, keySleep, keyWakeUp})},
     std::nullopt,
     0,
     false,
     false,
     KeyHold::none},
    {{"Acme USB Keyboard Mouse", busUsb, mouseRel, {}, mouseButtons},
     2,
     0,
     true,
     true,
     KeyHold::none},
    {{"Acme USB Keyboard Mouse", busUsb, codeSet<relCount>({relX, relY})},
     std::nullopt,
     0,
     false,
     false,
     KeyHold::none},
    {{"Power Button", busHost, {}, {}, codeSet<keyCount>({keyPower})},
     std::nullopt,
     1,
     false,
     false,
     KeyHold::none},
    {{"Lid Switch", busHost, {}, {}, {}, codeSet<swCount>({swLid})},
     std::nullopt,
     1,
     false,
     false,
     KeyHold::none},
    {{"Intel HID switches", busHost, {}, {}, {}, codeSet<swCount>({swTabletMode})},
     std::nullopt,
     1,
     false,
     false,
     KeyHold::none},
    {{"Logitech USB Optical Mouse", busUsb, mouseRel, {}, mouseButtons},
     2,
     0,
     true,
     true,
     KeyHold::none},
    {{"MX Anywhere", busBluetooth, mouseRel, {}, mouseButtons}, 2, 0, true, true, KeyHold::none},
    {{"ELAN0001:00 04F3:3140 Touchpad",
      busI2c,
      {},
      touchpadAbs,
      touchpadKeys,
      {},
      codeSet<propCount>({propPointer})},
     std::nullopt,
     1,
     false,
     false,
     KeyHold::none},
    {{"TPPS/2 IBM TrackPoint", busI8042, codeSet<relCount>({relX, relY}), {}, mouseButtons},
     2,
     1,
     false,
     false,
     KeyHold::none},
    {{"Acme Wireless TrackPad", busUsb, mouseRel, {}, mouseButtons},
     2,
     0,
     false,
     true,
     KeyHold::none},
    {{"Acme Keyboard with Touchpad", busUsb, {}, touchpadAbs, fullKeyboardKeys() | touchpadKeys},
     std::nullopt,
     0,
     false,
     false,
     KeyHold::keysAndPassThrough},
    {{"AT Translated Set 2 keyboard", busI8042, {}, {}, fullKeyboardKeys()},
     std::nullopt,
     1,
     false,
     false,
     KeyHold::keysOnly},
    {{"ThinkPad Extra Buttons", busHost, {}, {}, mediaKeys, codeSet<swCount>({swTabletMode})},
     std::nullopt,
     1,
     false,
     false,
     KeyHold::keysAndPassThrough},
    {{"QEMU USB Tablet", busUsb, codeSet<relCount>({relWheelCode}), codeSet<absCount>({absX, absY}),
      mouseButtons},
     1,
     0,
     true,
     true,
     KeyHold::none},
    {{"Wacom Intuos Pen",
      busUsb,
      {},
      codeSet<absCount>({absX, absY}),
      codeSet<keyCount>({btnLeft, btnToolPen, btnStylus, btnTouch})},
     std::nullopt,
     0,
     false,
     false,
     KeyHold::none},
    {{"Goodix Touchscreen",
      busI2c,
      {},
      codeSet<absCount>({absX, absY}),
      codeSet<keyCount>({btnLeft, btnTouch}),
      {},
      codeSet<propCount>({propDirect})},
     std::nullopt,
     1,
     false,
     false,
     KeyHold::none},
    {{"Virtual pointer", busVirtual, mouseRel, {}, mouseButtons},
     2,
     std::nullopt,
     true,
     true,
     KeyHold::none},
};

TEST(DeviceRoles, PointerUsageBuiltInWheelAndKeyHoldFollowCapabilities) {
    for (const Row& row : rows) {
        const DeviceCapabilities caps = row.device.capabilities();
        const DeviceProperties p = pointerPropertiesOf(caps);
        SCOPED_TRACE(row.device.name);
        EXPECT_EQ(p.primaryUsagePage, row.usage ? std::optional<std::int64_t>(1) : std::nullopt);
        EXPECT_EQ(p.primaryUsage, row.usage);
        EXPECT_EQ(p.builtIn, row.builtIn);
        EXPECT_EQ(p.product, std::optional<std::string>(row.device.name));
        EXPECT_EQ(isExternalMouse(p), row.external);
        EXPECT_EQ(hasWheel(caps), row.wheel);
        EXPECT_EQ(keyHoldFor(caps), row.keys);
    }
}

TEST(DeviceRoles, ANamelessDeviceHasNoProduct) {
    DeviceCapabilities caps;
    caps.rel = mouseRel;
    caps.key = mouseButtons;
    EXPECT_EQ(pointerPropertiesOf(caps).product, std::nullopt);
}

TEST(DropSwallowedKeys, KeepsPointerButtonsMotionAndSwitchesInOrder) {
    std::vector<InputEvent> frame{
        {evMsc, mscScan, 0x70004}, {evKey, keyA, 1},        {evKey, btnLeft, 1},
        {evRel, relX, 3},          {evKey, keyVolumeUp, 1}, {evKey, keyPower, 1},
        {evSw, swTabletMode, 1},   {evKey, btnTouch, 1},    {evSyn, 0, 0}};
    frame.resize(dropSwallowedKeys(frame.data(), frame.size()));
    EXPECT_EQ(frame, (std::vector<InputEvent>{{evKey, btnLeft, 1},
                                              {evRel, relX, 3},
                                              {evSw, swTabletMode, 1},
                                              {evKey, btnTouch, 1},
                                              {evSyn, 0, 0}}));
    EXPECT_TRUE(carriesInput(frame.data(), frame.size()));
}

TEST(DropSwallowedKeys, AKeyOnlyFrameLeavesNothingToSend) {
    std::vector<InputEvent> frame{
        {evMsc, mscScan, 0x70004}, {evKey, keyLeftShift, 2}, {evKey, keyF1, 0}, {evSyn, 0, 0}};
    frame.resize(dropSwallowedKeys(frame.data(), frame.size()));
    EXPECT_EQ(frame, (std::vector<InputEvent>{{evSyn, 0, 0}}));
    EXPECT_FALSE(carriesInput(frame.data(), frame.size()));
}

TEST(IsSwallowedKey, CoversKeyboardAndMediaKeysButNoButtons) {
    for (std::uint16_t k : {keyEsc, keyA, keyLeftShift, keyF1, keyVolumeUp, keyBrightnessUp,
                            keyPlayPause, keyPower, keyOk}) {
        EXPECT_TRUE(isSwallowedKey(k)) << k;
    }
    for (std::uint16_t k : {std::uint16_t(0), btnMisc, btnLeft, btnRight, btnToolFinger, btnTouch,
                            btnDpadUp, btnDpadRight, btnTriggerHappy}) {
        EXPECT_FALSE(isSwallowedKey(k)) << k;
    }
}

} // namespace
} // namespace tolvane
