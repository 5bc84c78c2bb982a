#include "TolvaneCore/StatsReadings.h"
#include "TolvaneCore/GaugeValues.h"
#include "TolvaneCore/ProcFiles.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace tolvane {
namespace {

using testing::TableRow, testing::readTable;

TEST(CpuTicksFromProcStat, SumsBusyAndTotalFromTheFirstLineWithPlainCountersThatFit) {
    const auto sum = [](const std::string& terms) {
        std::istringstream in(terms);
        std::uint64_t total = 0, term = 0;
        for (char plus = 0; in >> term; in >> plus) {
            total += term;
        }
        return terms == "-" ? std::nullopt : std::optional(total);
    };
    for (const TableRow& row : readTable("proc-stat.txt", 3)) {
        const auto ticks = cpuTicksFromProcStat(row[0]);
        const auto busy = sum(row[1]), idle = sum(row[2]);
        ASSERT_EQ(ticks.has_value(), busy.has_value()) << row.where;
        if (ticks) {
            EXPECT_EQ(ticks->busy, *busy) << row.where;
            EXPECT_EQ(ticks->total, *busy + *idle) << row.where;
        }
    }
}

TEST(MemoryInfoFromProcMeminfo, ReadsTotalAndAvailableInBytes) {
    const auto bytes = [](const std::string& kB) {
        return kB == "-" ? std::nullopt : std::optional(std::stoull(kB) * 1024);
    };
    for (const TableRow& row : readTable("proc-meminfo.txt", 4)) {
        const auto info = memoryInfoFromProcMeminfo(row[0]);
        const auto total = bytes(row[1]);
        EXPECT_EQ(info, total ? std::optional(MemoryInfo{*total, bytes(row[2])}) : std::nullopt)
            << row.where;
        EXPECT_EQ(info ? memoryUsedBytes(*info) : std::nullopt, bytes(row[3])) << row.where;
    }
}

TEST(VolumeBytes, MultipliesBlocksByTheFragmentSizeWhileTheProductFits) {
    EXPECT_EQ(volumeBytes(244190646, 100000000, 4096),
              (VolumeBytes{244190646ll * 4096, 100000000ll * 4096}));
    EXPECT_TRUE(volumeBytes(9223372036854775807ull / 4096, 1, 4096));
    EXPECT_FALSE(volumeBytes(9223372036854775807ull / 4096 + 1, 1, 4096));
    EXPECT_FALSE(volumeBytes(1, 18446744073709551615ull, 2));
}

constexpr std::uint64_t gib = 1ull << 30;

TEST(CpuReading, IsTheBusyShareSinceBootFirstAndOfTheIntervalLater) {
    const auto ticks = [](const std::string& cell) {
        const auto slash = cell.find('/');
        return cell == "-" ? std::nullopt
                           : std::optional(TickPair{std::stoull(cell.substr(0, slash)),
                                                    std::stoull(cell.substr(slash + 1))});
    };
    for (const TableRow& row : readTable("cpu-readings.txt", 5)) {
        EXPECT_EQ(cpuReading(ticks(row[0]), *ticks(row[1]), std::stoi(row[2])),
                  row[3] == "-" ? std::nullopt : std::optional(Reading{std::stod(row[3]), row[4]}))
            << row.where;
    }
}

TEST(MemoryAndStorageReadings, ShowTheShareUsedAndTheGigabytes) {
    EXPECT_EQ(memoryReading(6 * gib, 16 * gib), (Reading{0.375, "6.0 GB / 16.0 GB"}));
    EXPECT_EQ(memoryReading(64 * gib, 128 * gib), (Reading{0.5, "64.0 GB / 128 GB"}));
    EXPECT_FALSE(memoryReading(6 * gib, 0));
    EXPECT_EQ(storageReading({500000000000, 1000000000000}), (Reading{0.5, "500 GB free"}));
    EXPECT_EQ(storageReading({1000000000000 - 42300000000, 1000000000000}),
              (Reading{0.9577, "42.3 GB free"}));
    for (auto [gigabytes, text] : {std::pair{6.0, "6.0 GB"},
                                   {99.96, "100.0 GB"},
                                   {100.0, "100 GB"},
                                   {0.04, "0.0 GB"},
                                   {1234.5, "1234 GB"}}) {
        EXPECT_EQ(gigabyteText(gigabytes), text);
    }
    // Storage use needs a capacity and an available count, and never goes below nothing used.
    EXPECT_FALSE(storageUse(0, 10) || storageUse(-5, 10) || storageUse(1000, std::nullopt));
    EXPECT_EQ(storageReading(storageUse(1000, 250).value()), (Reading{0.75, "0.0 GB free"}));
    EXPECT_EQ(storageReading(storageUse(1000, 1200).value()), (Reading{0.0, "0.0 GB free"}));
}

TEST(GaugeValues, ClampRoundHalfAwayFromZeroKeepADotAndWarnFromNinetyPercent) {
    for (const TableRow& row : readTable("gauge-values.txt", 5)) {
        EXPECT_EQ(gaugeValues(std::stod(row[0])), (GaugeValues{std::stod(row[1]), std::stoi(row[2]),
                                                               std::stod(row[3]), row[4] == "yes"}))
            << row.where;
    }
}

} // namespace
} // namespace tolvane
