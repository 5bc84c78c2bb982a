#pragma once

#include "platform/HostStatistics.h"

#include <optional>
#include <string>

namespace tolvane::oslinux {

// Processor ticks and memory from /proc, the root file system from statvfs, the processor
// count from sysconf.
class ProcHostStatistics final : public platform::HostStatistics {
public:
    // `procRoot` and `volumePath` are for tests; the program uses the defaults.
    explicit ProcHostStatistics(const std::string& procRoot = "/proc",
                                std::string volumePath = "/");

    std::optional<TickPair> cpuTicks() override;
    std::optional<std::uint64_t> memoryUsedBytes() override;
    std::uint64_t physicalMemoryBytes() override;
    int activeProcessorCount() override;
    std::optional<platform::RootVolume> rootVolume() override;

private:
    std::string statPath;
    std::string meminfoPath;
    std::string volumePath;
    std::optional<std::uint64_t> installedMemory;
};

} // namespace tolvane::oslinux
