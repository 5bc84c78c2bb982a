#include "TolvaneCore/StatsReadings.h"
#include "TolvaneCore/GaugeValues.h"
#include "TolvaneCore/ProcFiles.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace tolvane {
namespace {

using namespace std::literals;

TEST(CpuTicksFromProcStat, SumsBusyAndTotalFromTheFirstLine) {
    // Recorded from real machines, newest kernel first; the columns an older kernel lacks
    // count as zero and those after steal are ignored.
    struct Row {
        const char* text;
        std::uint64_t busy, idle; // total = busy + idle
    };
    const Row rows[] = {
        {"cpu  55324 0 19158 1649236 503 0 280 0 0 0\n"
         "cpu0 26907 0 8520 826480 60 0 113 0 0 0\n"
         "intr 2791453 0 9 0 0 0 0 0 0 0\n",
         55324 + 19158 + 280, 1649236 + 503},
        // user nice system idle iowait irq softirq steal guest guest_nice
        {"cpu  100 20 30 1000 50 4 5 6 900 90\n", 100 + 20 + 30 + 4 + 5 + 6, 1000 + 50},
        {"cpu  1139 45 610 23844\n", 1139 + 45 + 610, 23844},
        {"cpu  1 2 3 4 5 6 7 8 9 10 11 12 13\n", 1 + 2 + 3 + 6 + 7 + 8, 4 + 5},
        {"cpu\t1 2\t3 4", 6, 4},       // tabs, and no final line feed
        {"cpu  1 2 3 4\ncpu0 ", 6, 4}, // a read cut short after the first line
        {"cpu  9223372036854775807 0 0 9223372036854775807 1\n", 9223372036854775807,
         9223372036854775808u},
    };
    for (const Row& row : rows) {
        const auto ticks = cpuTicksFromProcStat(row.text);
        ASSERT_TRUE(ticks) << row.text;
        EXPECT_EQ(ticks->busy, row.busy) << row.text;
        EXPECT_EQ(ticks->total, row.busy + row.idle) << row.text;
    }
}

TEST(CpuTicksFromProcStat, AnythingButTheCpuLineWithPlainCountersThatFitIsAbsent) {
    for (std::string_view text :
         {""sv, "\n"sv, "cpu\n"sv, "cpu  1 2 3\n"sv, "cpu0 1 2 3 4 5 6 7\n"sv, "cpus 1 2 3 4\n"sv,
          "intr 1 2 3 4\ncpu  1 2 3 4\n"sv, "cpu  1 2 -3 4\n"sv, "cpu  1 2 +3 4\n"sv,
          "cpu  1 2 3.5 4\n"sv, "cpu  1 2 3 4x\n"sv, "cpu  1 2 3 4 5 6 7 junk\n"sv,
          "cpu  0x1 2 3 4\n"sv, "\x7f\x45LF\x02\x01\x01"sv, "cpu  1 2 3\n4 5 6 7\n"sv,
          "cpu  18446744073709551615 1 0 0\n"sv, "cpu  1 1 1 1 18446744073709551615\n"sv,
          "cpu  9223372036854775808 0 0 9223372036854775808 0 0 0 0\n"sv,
          "cpu  18446744073709551616 0 0 0\n"sv}) {
        EXPECT_FALSE(cpuTicksFromProcStat(text)) << text;
    }
}

TEST(MemoryInfoFromProcMeminfo, ReadsTotalAndAvailableInBytes) {
    struct Row {
        const char* text;
        std::optional<MemoryInfo> info;
        std::optional<std::uint64_t> used;
    };
    const Row rows[] = {
        {"MemTotal:       24683620 kB\nMemFree:        24428856 kB\n"
         "MemAvailable:   24379576 kB\nHugePages_Total:       0\n",
         MemoryInfo{24683620ull * 1024, 24379576ull * 1024}, (24683620ull - 24379576) * 1024},
        {"MemTotalX:  1 kB\nMemAvailable:  2 kB\nJunk line\nMemTotal:  8 kB\nMemTotal:  9 kB\n",
         MemoryInfo{8 * 1024, 2 * 1024}, 6 * 1024},
        {"MemTotal:  2 kB\nMemAvailable:  3 kB\n", MemoryInfo{2 * 1024, 3 * 1024}, std::nullopt},
        // Before 3.14 the kernel had no estimate of available memory.
        {"MemTotal:  2048 kB\nMemFree:  1024 kB\n", MemoryInfo{2048 * 1024, {}}, std::nullopt},
        {"MemTotal:  8 kB\nMemAvailable:  x kB\n", MemoryInfo{8 * 1024, {}}, std::nullopt},
        {"MemTotal:  8 kB\nMemAvailable:  4 pages\n", MemoryInfo{8 * 1024, {}}, std::nullopt},
    };
    for (const Row& row : rows) {
        const auto info = memoryInfoFromProcMeminfo(row.text);
        EXPECT_EQ(info, row.info) << row.text;
        EXPECT_EQ(info ? memoryUsedBytes(*info) : std::nullopt, row.used) << row.text;
    }
    for (std::string_view text :
         {""sv, "MemAvailable:  1 kB\n"sv, "MemTotal:\n"sv, "MemTotal:  kB\n"sv,
          "MemTotal:  0 kB\n"sv, "MemTotal:  -5 kB\n"sv, "MemTotal:  12 MB\n"sv,
          "MemTotal:  12 kB extra\n"sv, "MemTotal:  18014398509481984 kB\n"sv,
          "MemTotal:  99999999999999999999 kB\n"sv, "\x00\x01\x02garbage"sv}) {
        EXPECT_FALSE(memoryInfoFromProcMeminfo(text)) << text;
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
    struct Row {
        std::optional<TickPair> last;
        TickPair now;
        int processors;
        std::optional<Reading> reading;
    };
    const Row rows[] = {
        {std::nullopt, {1000, 4000}, 8, Reading{0.25, "8 cores"}},
        {std::nullopt, {0, 0}, 8, Reading{0.0, "8 cores"}},
        {std::nullopt, {1, 2}, 1, Reading{0.5, "1 cores"}}, // the word stays plural
        {TickPair{1000, 4000}, {1150, 4200}, 4, Reading{0.75, "4 cores"}},
        {TickPair{1000, 4000}, {1000, 4200}, 128, Reading{0.0, "128 cores"}},
        {TickPair{1000, 4000}, {1000, 4000}, 4, std::nullopt},          // total stood still
        {TickPair{4294967000, 4294967290}, {10, 300}, 4, std::nullopt}, // wrapped
        {TickPair{5000, 9000}, {4000, 9500}, 4, std::nullopt},          // busy fell
    };
    for (const Row& row : rows) {
        EXPECT_EQ(cpuReading(row.last, row.now, row.processors), row.reading)
            << row.now.busy << "/" << row.now.total;
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
}

TEST(StorageUse, NeedsACapacityAndAnAvailableCountAndNeverGoesBelowNothingUsed) {
    EXPECT_FALSE(storageUse(0, 10) || storageUse(-5, 10) || storageUse(1000, std::nullopt));
    EXPECT_EQ(storageReading(storageUse(1000, 250).value()), (Reading{0.75, "0.0 GB free"}));
    EXPECT_EQ(storageReading(storageUse(1000, 1200).value()), (Reading{0.0, "0.0 GB free"}));
}

TEST(GaugeValues, ClampRoundHalfAwayFromZeroKeepADotAndWarnFromNinetyPercent) {
    struct Row {
        double fraction;
        GaugeValues expected;
    };
    const Row rows[] = {
        {0.0, {0.0, 0, 0.005, false}},
        {0.004, {0.004, 0, 0.005, false}},
        {0.005, {0.005, 1, 0.005, false}}, // 0.5 % goes away from zero
        {0.125, {0.125, 13, 0.125, false}},
        {0.895, {0.895, 90, 0.895, false}}, // the text rounds, the threshold does not
        {0.8999999, {0.8999999, 90, 0.8999999, false}},
        {0.9, {0.9, 90, 0.9, true}},
        {1.0, {1.0, 100, 1.0, true}},
        {std::numeric_limits<double>::infinity(), {1.0, 100, 1.0, true}},
        {-std::numeric_limits<double>::infinity(), {0.0, 0, 0.005, false}},
        {std::numeric_limits<double>::quiet_NaN(), {0.0, 0, 0.005, false}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(gaugeValues(row.fraction), row.expected) << row.fraction;
    }
}

} // namespace
} // namespace tolvane
