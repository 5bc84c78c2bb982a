#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

// The numbers of the kernel's input protocol that Tolvane looks at, written once, with the
// kernel's own name for each. The core takes no OS header, so the Linux side holds them against
// <linux/input-event-codes.h> at compile time (platform/linux/devices/KernelCodes.cpp).
namespace tolvane::code {

// Event types
inline constexpr std::uint16_t evSyn = 0x00;
inline constexpr std::uint16_t evKey = 0x01;
inline constexpr std::uint16_t evRel = 0x02;
inline constexpr std::uint16_t evAbs = 0x03;
inline constexpr std::uint16_t evMsc = 0x04;
inline constexpr std::uint16_t evSw = 0x05;

// Synchronisation and miscellaneous events
inline constexpr std::uint16_t synReport = 0;
inline constexpr std::uint16_t mscScan = 0x04;
inline constexpr std::uint16_t mscTimestamp = 0x05;

// Relative and absolute axes
inline constexpr std::uint16_t relX = 0x00;
inline constexpr std::uint16_t relY = 0x01;
inline constexpr std::uint16_t relHWheel = 0x06;
inline constexpr std::uint16_t relDial = 0x07;
inline constexpr std::uint16_t relWheel = 0x08;
inline constexpr std::uint16_t relWheelHiRes = 0x0b;
inline constexpr std::uint16_t relHWheelHiRes = 0x0c;
inline constexpr std::uint16_t absX = 0x00;
inline constexpr std::uint16_t absY = 0x01;
inline constexpr std::uint16_t absVolume = 0x20;
inline constexpr std::uint16_t absMtPositionX = 0x35;

// Keys and buttons
inline constexpr std::uint16_t keyEsc = 1;
inline constexpr std::uint16_t key7 = 8;
inline constexpr std::uint16_t keyA = 30;
inline constexpr std::uint16_t keyLeftShift = 42;
inline constexpr std::uint16_t keyF1 = 59;
inline constexpr std::uint16_t keyMute = 113;
inline constexpr std::uint16_t keyVolumeDown = 114;
inline constexpr std::uint16_t keyVolumeUp = 115;
inline constexpr std::uint16_t keyPower = 116;
inline constexpr std::uint16_t keySleep = 142;
inline constexpr std::uint16_t keyWakeUp = 143;
inline constexpr std::uint16_t keyPlayPause = 164;
inline constexpr std::uint16_t keySuspend = 205;
inline constexpr std::uint16_t keyBrightnessDown = 224;
inline constexpr std::uint16_t keyBrightnessUp = 225;
inline constexpr std::uint16_t keyMicMute = 248;
inline constexpr std::uint16_t btnMisc = 0x100;
inline constexpr std::uint16_t btnLeft = 0x110;
inline constexpr std::uint16_t btnRight = 0x111;
inline constexpr std::uint16_t btnMiddle = 0x112;
inline constexpr std::uint16_t btnToolPen = 0x140;
inline constexpr std::uint16_t btnToolFinger = 0x145;
inline constexpr std::uint16_t btnTouch = 0x14a;
inline constexpr std::uint16_t btnStylus = 0x14b;
inline constexpr std::uint16_t keyOk = 0x160;
inline constexpr std::uint16_t keyPower2 = 0x164;
inline constexpr std::uint16_t btnDpadUp = 0x220;
inline constexpr std::uint16_t btnDpadRight = 0x223;
inline constexpr std::uint16_t btnTriggerHappy = 0x2c0;

// Switches and device properties
inline constexpr std::uint16_t swLid = 0x00;
inline constexpr std::uint16_t swTabletMode = 0x01;
inline constexpr std::uint16_t propPointer = 0x00;
inline constexpr std::uint16_t propDirect = 0x01;

// Buses (linux/input.h)
inline constexpr std::uint16_t busUsb = 0x03;
inline constexpr std::uint16_t busBluetooth = 0x05;
inline constexpr std::uint16_t busVirtual = 0x06;
inline constexpr std::uint16_t busI8042 = 0x11;
inline constexpr std::uint16_t busXtKbd = 0x12;
inline constexpr std::uint16_t busI2c = 0x18;
inline constexpr std::uint16_t busHost = 0x19;
inline constexpr std::uint16_t busSpi = 0x1c;
inline constexpr std::uint16_t busRmi = 0x1d;

// How many codes of each kind the kernel knows: the sizes of its capability bitmaps.
inline constexpr std::size_t relCount = 0x10;
inline constexpr std::size_t absCount = 0x40;
inline constexpr std::size_t keyCount = 0x300;
inline constexpr std::size_t swCount = 0x11;
inline constexpr std::size_t propCount = 0x20;

struct NamedCode {
    std::string_view name;
    std::uint16_t value;
};

// Every code above by the kernel's name for it.
inline constexpr NamedCode kernelNames[] = {
    {"EV_SYN", evSyn},
    {"EV_KEY", evKey},
    {"EV_REL", evRel},
    {"EV_ABS", evAbs},
    {"EV_MSC", evMsc},
    {"EV_SW", evSw},
    {"SYN_REPORT", synReport},
    {"MSC_SCAN", mscScan},
    {"MSC_TIMESTAMP", mscTimestamp},
    {"REL_X", relX},
    {"REL_Y", relY},
    {"REL_HWHEEL", relHWheel},
    {"REL_DIAL", relDial},
    {"REL_WHEEL", relWheel},
    {"REL_WHEEL_HI_RES", relWheelHiRes},
    {"REL_HWHEEL_HI_RES", relHWheelHiRes},
    {"ABS_X", absX},
    {"ABS_Y", absY},
    {"ABS_VOLUME", absVolume},
    {"ABS_MT_POSITION_X", absMtPositionX},
    {"KEY_ESC", keyEsc},
    {"KEY_7", key7},
    {"KEY_A", keyA},
    {"KEY_LEFTSHIFT", keyLeftShift},
    {"KEY_F1", keyF1},
    {"KEY_MUTE", keyMute},
    {"KEY_VOLUMEDOWN", keyVolumeDown},
    {"KEY_VOLUMEUP", keyVolumeUp},
    {"KEY_POWER", keyPower},
    {"KEY_SLEEP", keySleep},
    {"KEY_WAKEUP", keyWakeUp},
    {"KEY_PLAYPAUSE", keyPlayPause},
    {"KEY_SUSPEND", keySuspend},
    {"KEY_BRIGHTNESSDOWN", keyBrightnessDown},
    {"KEY_BRIGHTNESSUP", keyBrightnessUp},
    {"KEY_MICMUTE", keyMicMute},
    {"BTN_MISC", btnMisc},
    {"BTN_LEFT", btnLeft},
    {"BTN_RIGHT", btnRight},
    {"BTN_MIDDLE", btnMiddle},
    {"BTN_TOOL_PEN", btnToolPen},
    {"BTN_TOOL_FINGER", btnToolFinger},
    {"BTN_TOUCH", btnTouch},
    {"BTN_STYLUS", btnStylus},
    {"KEY_OK", keyOk},
    {"KEY_POWER2", keyPower2},
    {"BTN_DPAD_UP", btnDpadUp},
    {"BTN_DPAD_RIGHT", btnDpadRight},
    {"BTN_TRIGGER_HAPPY", btnTriggerHappy},
    {"SW_LID", swLid},
    {"SW_TABLET_MODE", swTabletMode},
    {"INPUT_PROP_POINTER", propPointer},
    {"INPUT_PROP_DIRECT", propDirect},
    {"BUS_USB", busUsb},
    {"BUS_BLUETOOTH", busBluetooth},
    {"BUS_VIRTUAL", busVirtual},
    {"BUS_I8042", busI8042},
    {"BUS_XTKBD", busXtKbd},
    {"BUS_I2C", busI2c},
    {"BUS_HOST", busHost},
    {"BUS_SPI", busSpi},
    {"BUS_RMI", busRmi},
};

// The code the kernel calls `name` (REL_WHEEL), if it is one of the above.
constexpr std::optional<std::uint16_t> named(std::string_view name) {
    for (const NamedCode& entry : kernelNames) {
        if (entry.name == name) {
            return entry.value;
        }
    }
    return std::nullopt;
}

} // namespace tolvane::code
