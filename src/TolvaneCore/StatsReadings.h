#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tolvane {

// One gauge's value: the share in use (not clamped) and its short text.
struct Reading {
    double fraction = 0;
    std::string detail = "\u2014";

    friend bool operator==(const Reading&, const Reading&) = default;
};

struct TickPair {
    std::uint64_t busy;
    std::uint64_t total;
};

// "%.0f GB" from 100 on, "%.1f GB" below, judged before rounding.
std::string gigabyteText(double gigabytes);

// The CPU reading for new counters, given the last stored ones: since boot on the first
// sample, otherwise over the interval. Absent when the total has not advanced (a counter
// wrapped or was reset) or the busy count fell, which no real interval can give.
std::optional<Reading> cpuReading(std::optional<TickPair> last, TickPair now, int processors);

// Memory in use over installed memory, in binary gigabytes; absent when the installed memory
// is unknown (zero).
std::optional<Reading> memoryReading(std::uint64_t usedBytes, std::uint64_t totalBytes);

struct StorageUse {
    std::int64_t used;
    std::int64_t capacity;
};

// Used and capacity of the root volume, or absent when the capacity is unknown or below 1
// or the available space is unknown. More available than capacity counts as none used.
std::optional<StorageUse> storageUse(std::int64_t capacity, std::optional<std::int64_t> available);

// Share of the volume in use, with the free space in decimal gigabytes.
Reading storageReading(StorageUse use);

} // namespace tolvane
