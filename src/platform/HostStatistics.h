#pragma once

#include "TolvaneCore/StatsReadings.h"

#include <cstdint>
#include <optional>

namespace tolvane::platform {

struct RootVolume {
    std::int64_t totalBytes;
    std::optional<std::int64_t> availableBytes;
};

// What the host says about its processors, memory and root file system. Each reading is
// absent when the system would not give it.
class HostStatistics {
public:
    virtual ~HostStatistics() = default;

    virtual std::optional<TickPair> cpuTicks() = 0;
    virtual std::optional<std::uint64_t> memoryUsedBytes() = 0;
    virtual std::uint64_t physicalMemoryBytes() = 0;
    virtual int activeProcessorCount() = 0;
    virtual std::optional<RootVolume> rootVolume() = 0;
};

} // namespace tolvane::platform
