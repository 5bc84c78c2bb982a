#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tolvane {

// The properties of a pointing device that decide whether it is an external mouse. Each is
// absent when the device does not give it.
struct DeviceProperties {
    std::optional<std::int64_t> primaryUsagePage;
    std::optional<std::int64_t> primaryUsage;
    std::optional<std::int64_t> builtIn;
    std::optional<std::string> product;
};

inline constexpr std::int64_t usagePageGenericDesktop = 1;
inline constexpr std::int64_t usagePointer = 1;
inline constexpr std::int64_t usageMouse = 2;

// Generic Desktop pointer or mouse, not built in, and not named like a trackpad.
bool isExternalMouse(const DeviceProperties& device);

// Whether the device monitor would deliver it at all: Generic Desktop pointer or mouse.
bool matchesPointerUsage(const DeviceProperties& device);

// The product name for a log line, "unknown device" when there is none.
std::string displayName(const DeviceProperties& device);

} // namespace tolvane
