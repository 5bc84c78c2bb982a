#pragma once

#include <bitset>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

// What an input device says it can send, as the kernel's event interface reports it. The
// numbers are those of the kernel's input protocol; the platform side fills the record in.
namespace code {
inline constexpr std::uint16_t evAbs = 0x03;
inline constexpr std::uint16_t evMsc = 0x04;
inline constexpr std::uint16_t evSw = 0x05;
inline constexpr std::uint16_t mscScan = 0x04;

inline constexpr std::uint16_t relX = 0x00;
inline constexpr std::uint16_t relY = 0x01;
inline constexpr std::uint16_t absX = 0x00;
inline constexpr std::uint16_t absY = 0x01;
inline constexpr std::uint16_t absMtPositionX = 0x35;

inline constexpr std::uint16_t keyEsc = 1;
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
inline constexpr std::uint16_t btnMisc = 0x100;
inline constexpr std::uint16_t btnLeft = 0x110;
inline constexpr std::uint16_t btnRight = 0x111;
inline constexpr std::uint16_t btnToolPen = 0x140;
inline constexpr std::uint16_t btnToolFinger = 0x145;
inline constexpr std::uint16_t btnTouch = 0x14a;
inline constexpr std::uint16_t btnStylus = 0x14b;
inline constexpr std::uint16_t keyOk = 0x160;
inline constexpr std::uint16_t keyPower2 = 0x164;
inline constexpr std::uint16_t btnDpadUp = 0x220;
inline constexpr std::uint16_t btnDpadRight = 0x223;
inline constexpr std::uint16_t btnTriggerHappy = 0x2c0;

inline constexpr std::uint16_t swLid = 0x00;
inline constexpr std::uint16_t swTabletMode = 0x01;

inline constexpr std::uint16_t propPointer = 0x00;
inline constexpr std::uint16_t propDirect = 0x01;

inline constexpr std::uint16_t busUsb = 0x03;
inline constexpr std::uint16_t busBluetooth = 0x05;
inline constexpr std::uint16_t busVirtual = 0x06;
inline constexpr std::uint16_t busI8042 = 0x11;
inline constexpr std::uint16_t busXtKbd = 0x12;
inline constexpr std::uint16_t busI2c = 0x18;
inline constexpr std::uint16_t busHost = 0x19;
inline constexpr std::uint16_t busSpi = 0x1c;
inline constexpr std::uint16_t busRmi = 0x1d;

inline constexpr std::size_t relCount = 0x10;
inline constexpr std::size_t absCount = 0x40;
inline constexpr std::size_t keyCount = 0x300;
inline constexpr std::size_t swCount = 0x11;
inline constexpr std::size_t propCount = 0x20;
} // namespace code

struct DeviceCapabilities {
    std::string name;
    std::string phys; // where the device sits; Tolvane's clones carry a mark here
    std::uint16_t busType = 0;
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::bitset<code::relCount> rel;
    std::bitset<code::absCount> abs;
    std::bitset<code::keyCount> key;
    std::bitset<code::swCount> sw;
    std::bitset<code::propCount> props;

    bool hasRel(std::uint16_t c) const { return c < rel.size() && rel.test(c); }
    bool hasAbs(std::uint16_t c) const { return c < abs.size() && abs.test(c); }
    bool hasKey(std::uint16_t c) const { return c < key.size() && key.test(c); }
    bool hasProp(std::uint16_t c) const { return c < props.size() && props.test(c); }
};

// Sets every listed code that fits the set; a short way to describe a device in a table.
template <std::size_t N> std::bitset<N> codeSet(std::initializer_list<std::uint16_t> codes) {
    std::bitset<N> set;
    for (std::uint16_t c : codes) {
        if (c < N) {
            set.set(c);
        }
    }
    return set;
}

// What sysfs shows of an input device, readable by anyone (/sys/class/input/eventN/device):
// `read` gives the text of a file there ("name", "id/bustype", "capabilities/key",
// "properties"...), empty when it cannot be read.
DeviceCapabilities capabilitiesFromSysfs(const std::function<std::string(const char* file)>& read);

// The bits set in one of sysfs's bitmaps: 64-bit words in hexadecimal, the most significant
// first. None when the text is no such bitmap.
std::vector<std::size_t> sysfsBitmapBits(std::string_view text);

} // namespace tolvane
