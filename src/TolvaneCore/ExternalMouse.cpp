#include "TolvaneCore/ExternalMouse.h"

#include <algorithm>
#include <string_view>

namespace tolvane {

namespace {

char asciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

bool containsIgnoringCase(std::string_view text, std::string_view word) {
    const auto found = std::search(text.begin(), text.end(), word.begin(), word.end(),
                                   [](char a, char b) { return asciiLower(a) == asciiLower(b); });
    return found != text.end();
}

} // namespace

bool matchesPointerUsage(const DeviceProperties& device) {
    return device.primaryUsagePage == usagePageGenericDesktop &&
           (device.primaryUsage == usagePointer || device.primaryUsage == usageMouse);
}

bool isExternalMouse(const DeviceProperties& device) {
    if (!matchesPointerUsage(device)) {
        return false;
    }
    if (device.builtIn && *device.builtIn != 0) {
        return false;
    }
    if (!device.product) {
        return true;
    }
    return !containsIgnoringCase(*device.product, "trackpad");
}

std::string displayName(const DeviceProperties& device) {
    return device.product.value_or("unknown device");
}

} // namespace tolvane
