#include "TolvaneCore/DeviceRoles.h"

#include "TolvaneCore/WheelEvents.h"

namespace tolvane {

namespace {

bool isTouchpad(const DeviceCapabilities& d) {
    return d.hasKey(code::btnToolFinger) && !d.hasKey(code::btnToolPen);
}

bool isTablet(const DeviceCapabilities& d) {
    return d.hasKey(code::btnToolPen) || d.hasKey(code::btnStylus);
}

bool isTouchscreen(const DeviceCapabilities& d) {
    return d.hasProp(code::propDirect) ||
           (d.hasKey(code::btnTouch) && !d.hasKey(code::btnToolFinger));
}

bool isRelativeMouse(const DeviceCapabilities& d) {
    return d.hasRel(code::relX) && d.hasRel(code::relY) && d.hasKey(code::btnLeft);
}

bool isAbsolutePointer(const DeviceCapabilities& d) {
    return d.hasAbs(code::absX) && d.hasAbs(code::absY) && d.hasKey(code::btnLeft) &&
           !isTouchpad(d) && !isTablet(d) && !isTouchscreen(d);
}

std::optional<std::int64_t> builtInOf(std::uint16_t bus) {
    switch (bus) {
    case code::busI8042:
    case code::busXtKbd:
    case code::busI2c:
    case code::busSpi:
    case code::busHost:
    case code::busRmi:
        return 1;
    case code::busUsb:
    case code::busBluetooth:
        return 0;
    default:
        return std::nullopt;
    }
}

bool isSystemKey(std::uint16_t c) {
    return c == code::keyPower || c == code::keyPower2 || c == code::keySleep ||
           c == code::keyWakeUp || c == code::keySuspend;
}

bool hasSwallowedKeys(const DeviceCapabilities& d) {
    for (std::size_t c = 1; c < d.key.size(); ++c) {
        const auto k = static_cast<std::uint16_t>(c);
        if (d.key.test(c) && isSwallowedKey(k)) {
            return true;
        }
    }
    return false;
}

bool hasOtherInput(const DeviceCapabilities& d) {
    if (d.rel.any() || d.abs.any() || d.sw.any()) {
        return true;
    }
    for (std::size_t c = 1; c < d.key.size(); ++c) {
        const auto k = static_cast<std::uint16_t>(c);
        if (d.key.test(c) && !isSwallowedKey(k)) {
            return true;
        }
    }
    return false;
}

} // namespace

DeviceProperties pointerPropertiesOf(const DeviceCapabilities& device) {
    DeviceProperties properties;
    if (isRelativeMouse(device)) {
        properties.primaryUsagePage = usagePageGenericDesktop;
        properties.primaryUsage = usageMouse;
    } else if (isAbsolutePointer(device)) {
        properties.primaryUsagePage = usagePageGenericDesktop;
        properties.primaryUsage = usagePointer;
    }
    properties.builtIn = builtInOf(device.busType);
    if (!device.name.empty()) {
        properties.product = device.name;
    }
    return properties;
}

namespace {
constexpr std::string_view cloneMark = "tolvane-clone:";
}

std::string markedPhys(std::string_view phys) {
    return std::string(cloneMark).append(phys);
}

bool isTolvaneClone(const DeviceCapabilities& device) {
    return device.phys.starts_with(cloneMark);
}

bool hasWheel(const DeviceCapabilities& device) {
    return device.hasRel(code::relWheel) || device.hasRel(code::relHWheel);
}

bool isSwallowedKey(std::uint16_t c) {
    const bool keyboardRange = c >= code::keyEsc && c < code::btnMisc;
    const bool extendedKeys = c >= code::keyOk && c < code::btnTriggerHappy &&
                              !(c >= code::btnDpadUp && c <= code::btnDpadRight);
    return (keyboardRange || extendedKeys) && !isSystemKey(c);
}

KeyHold keyHoldFor(const DeviceCapabilities& device) {
    if (!hasSwallowedKeys(device)) {
        return KeyHold::none;
    }
    return hasOtherInput(device) ? KeyHold::keysAndPassThrough : KeyHold::keysOnly;
}

std::size_t dropSwallowedKeys(InputEvent* events, std::size_t count) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const InputEvent& e = events[i];
        const bool swallowed = (e.type == code::evKey && isSwallowedKey(e.code)) ||
                               (e.type == code::evMsc && e.code == code::mscScan);
        if (!swallowed) {
            events[kept++] = e;
        }
    }
    return kept;
}

bool carriesInput(const InputEvent* events, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (events[i].type != code::evSyn) {
            return true;
        }
    }
    return false;
}

} // namespace tolvane
