#include "TolvaneCore/StatsReadings.h"

#include <cstdio>

namespace tolvane {

std::string gigabyteText(double gigabytes) {
    char text[64];
    std::snprintf(text, sizeof text, gigabytes >= 100 ? "%.0f GB" : "%.1f GB", gigabytes);
    return text;
}

std::optional<Reading> cpuReading(std::optional<TickPair> last, TickPair now, int processors) {
    double fraction = 0;
    if (!last) {
        fraction = now.total == 0 ? 0.0 : double(now.busy) / double(now.total);
    } else if (now.total > last->total && now.busy >= last->busy) {
        fraction = double(now.busy - last->busy) / double(now.total - last->total);
    } else {
        return std::nullopt;
    }
    return Reading{fraction, std::to_string(processors) + " cores"};
}

std::optional<Reading> memoryReading(std::uint64_t usedBytes, std::uint64_t totalBytes) {
    constexpr double gibibyte = 1073741824.0;
    if (totalBytes == 0) {
        return std::nullopt;
    }
    return Reading{double(usedBytes) / double(totalBytes),
                   gigabyteText(double(usedBytes) / gibibyte) + " / " +
                       gigabyteText(double(totalBytes) / gibibyte)};
}

std::optional<StorageUse> storageUse(std::int64_t capacity, std::optional<std::int64_t> available) {
    if (capacity < 1 || !available) {
        return std::nullopt;
    }
    const std::int64_t used = capacity - *available;
    return StorageUse{used < 0 ? 0 : used, capacity};
}

Reading storageReading(StorageUse use) {
    constexpr double gigabyte = 1000000000.0;
    const std::int64_t freeBytes = use.capacity - use.used;
    return Reading{double(use.used) / double(use.capacity),
                   gigabyteText(double(freeBytes) / gigabyte) + " free"};
}

} // namespace tolvane
