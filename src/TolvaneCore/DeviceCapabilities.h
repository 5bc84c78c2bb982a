#pragma once

#include "TolvaneCore/EventCodes.h"

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
