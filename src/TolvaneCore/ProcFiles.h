#pragma once

#include "TolvaneCore/StatsReadings.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tolvane {

// The tick counters of the first line of /proc/stat,
// "cpu  user nice system idle iowait irq softirq steal guest guest_nice":
// busy = user + nice + system + irq + softirq + steal, total = busy + idle + iowait.
// Kernels before 2.6.11 stop after idle, iowait or softirq; the columns they lack count as
// zero. Columns after steal are not read: guest time is already inside user and nice.
// Absent when the line is not the "cpu" line, has fewer than four counters, holds anything
// but plain decimals where a counter is read, or a sum would not fit in 64 bits.
std::optional<TickPair> cpuTicksFromProcStat(std::string_view text);

struct MemoryInfo {
    std::uint64_t totalBytes;
    std::optional<std::uint64_t> availableBytes;

    friend bool operator==(const MemoryInfo&, const MemoryInfo&) = default;
};

// MemTotal and MemAvailable of /proc/meminfo, in bytes. Absent when MemTotal is missing,
// malformed or zero. MemAvailable (kernel 3.14 on) is absent on its own when it is missing or
// malformed.
std::optional<MemoryInfo> memoryInfoFromProcMeminfo(std::string_view text);

// MemTotal - MemAvailable; absent without MemAvailable or when it exceeds MemTotal.
std::optional<std::uint64_t> memoryUsedBytes(const MemoryInfo& info);

struct VolumeBytes {
    std::int64_t capacity;
    std::int64_t available;

    friend bool operator==(const VolumeBytes&, const VolumeBytes&) = default;
};

// Capacity and space available to the user from statvfs counts: blocks and available blocks
// times the fragment size. Absent when a product does not fit in a signed 64-bit count.
std::optional<VolumeBytes> volumeBytes(std::uint64_t blocks, std::uint64_t availableBlocks,
                                       std::uint64_t fragmentSize);

} // namespace tolvane
