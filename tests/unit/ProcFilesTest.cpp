#include "TolvaneCore/ProcFiles.h"

#include <gtest/gtest.h>

#include <string>

namespace tolvane {
namespace {

using namespace std::literals;

// Recorded from real machines; the per-processor lines follow the summed first line.
constexpr const char* stat6 = "cpu  55324 0 19158 1649236 503 0 280 0 0 0\n"
                              "cpu0 26907 0 8520 826480 60 0 113 0 0 0\n"
                              "cpu1 28417 0 10638 822756 443 0 166 0 0 0\n"
                              "intr 2791453 0 9 0 0 0 0 0 0 0\n";
constexpr const char* stat2611 = "cpu  9172 31 2543 398417 1520 68 123 7\n"
                                 "cpu0 9172 31 2543 398417 1520 68 123 7\n";
constexpr const char* stat26 = "cpu  1139 45 610 23844 1322 23 14\n";
constexpr const char* stat25 = "cpu  1139 45 610 23844 1322\n";
constexpr const char* stat24 = "cpu  1139 45 610 23844\n";

TEST(CpuTicksFromProcStat, SumsBusyAndTotalFromTheFirstLine) {
    const auto ticks = cpuTicksFromProcStat(stat6);
    ASSERT_TRUE(ticks);
    EXPECT_EQ(ticks->busy, 55324u + 19158 + 280);
    EXPECT_EQ(ticks->total, 55324u + 19158 + 280 + 1649236 + 503);
}

TEST(CpuTicksFromProcStat, CountsStealIrqAndNiceButNotGuest) {
    // user nice system idle iowait irq softirq steal guest guest_nice
    const auto ticks = cpuTicksFromProcStat("cpu  100 20 30 1000 50 4 5 6 900 90\n");
    ASSERT_TRUE(ticks);
    EXPECT_EQ(ticks->busy, 100u + 20 + 30 + 4 + 5 + 6);
    EXPECT_EQ(ticks->total, ticks->busy + 1000 + 50);
}

TEST(CpuTicksFromProcStat, OlderKernelsWithFewerColumnsCountTheMissingOnesAsZero) {
    struct Row {
        const char* text;
        std::uint64_t busy, total;
    };
    for (const Row& row :
         {Row{stat2611, 9172 + 31 + 2543 + 68 + 123 + 7,
              9172 + 31 + 2543 + 68 + 123 + 7 + 398417 + 1520},
          Row{stat26, 1139 + 45 + 610 + 23 + 14, 1139 + 45 + 610 + 23 + 14 + 23844 + 1322},
          Row{stat25, 1139 + 45 + 610, 1139 + 45 + 610 + 23844 + 1322},
          Row{stat24, 1139 + 45 + 610, 1139 + 45 + 610 + 23844}}) {
        SCOPED_TRACE(row.text);
        const auto ticks = cpuTicksFromProcStat(row.text);
        ASSERT_TRUE(ticks);
        EXPECT_EQ(ticks->busy, row.busy);
        EXPECT_EQ(ticks->total, row.total);
    }
}

TEST(CpuTicksFromProcStat, ColumnsOfAFutureKernelAreIgnored) {
    const auto ticks = cpuTicksFromProcStat("cpu  1 2 3 4 5 6 7 8 9 10 11 12 13\n");
    ASSERT_TRUE(ticks);
    EXPECT_EQ(ticks->busy, 1u + 2 + 3 + 6 + 7 + 8);
    EXPECT_EQ(ticks->total, ticks->busy + 4 + 5);
}

TEST(CpuTicksFromProcStat, AcceptsTabsAndALastLineWithoutLineFeed) {
    const auto ticks = cpuTicksFromProcStat("cpu\t1 2\t3 4");
    ASSERT_TRUE(ticks);
    EXPECT_EQ(ticks->busy, 6u);
    EXPECT_EQ(ticks->total, 10u);
}

TEST(CpuTicksFromProcStat, HugeCountersAreKeptUntilTheirSumOverflows) {
    const auto near = cpuTicksFromProcStat("cpu  9223372036854775807 0 0 9223372036854775807 1\n");
    ASSERT_TRUE(near);
    EXPECT_EQ(near->busy, 9223372036854775807u);
    EXPECT_EQ(near->total, 18446744073709551615u);

    for (const char* text :
         {"cpu  18446744073709551615 1 0 0\n",
          "cpu  9223372036854775808 0 0 9223372036854775808 0 0 0 0\n",
          "cpu  1 1 1 1 18446744073709551615\n", "cpu  18446744073709551616 0 0 0\n"}) {
        EXPECT_FALSE(cpuTicksFromProcStat(text)) << text;
    }
}

TEST(CpuTicksFromProcStat, AnythingButTheCpuLineWithPlainCountersIsAbsent) {
    for (const char* text :
         {"", "\n", "cpu\n", "cpu  1 2 3\n", "cpu0 1 2 3 4 5 6 7\n", "cpus 1 2 3 4\n",
          "intr 1 2 3 4\ncpu  1 2 3 4\n", "cpu  1 2 -3 4\n", "cpu  1 2 +3 4\n", "cpu  1 2 3.5 4\n",
          "cpu  1 2 3 4x\n", "cpu  1 2 3 4 5 6 7 junk\n", "cpu  0x1 2 3 4\n",
          "\x7f"
          "ELF\x02\x01\x01",
          "cpu  1 2 3\n4 5 6 7\n"}) {
        EXPECT_FALSE(cpuTicksFromProcStat(text)) << text;
    }
}

TEST(CpuTicksFromProcStat, ATruncatedReadStillGivesAWholeFirstLine) {
    const std::string text(stat6);
    EXPECT_TRUE(cpuTicksFromProcStat(text.substr(0, text.find('\n') + 5)));
}

constexpr const char* meminfo = "MemTotal:       24683620 kB\n"
                                "MemFree:        24428856 kB\n"
                                "MemAvailable:   24379576 kB\n"
                                "Buffers:            1268 kB\n"
                                "HugePages_Total:       0\n"
                                "Hugepagesize:       2048 kB\n";

TEST(MemoryInfoFromProcMeminfo, ReadsTotalAndAvailableInBytes) {
    const auto info = memoryInfoFromProcMeminfo(meminfo);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->totalBytes, 24683620ull * 1024);
    EXPECT_EQ(info->availableBytes, 24379576ull * 1024);
    EXPECT_EQ(memoryUsedBytes(*info), (24683620ull - 24379576ull) * 1024);
}

TEST(MemoryInfoFromProcMeminfo, FindsTheKeysInAnyOrderAndIgnoresLookalikes) {
    const auto info = memoryInfoFromProcMeminfo("MemTotalX:  1 kB\n"
                                                "MemAvailable:  2 kB\n"
                                                "Junk line without colon\n"
                                                "MemTotal:  8 kB\n"
                                                "MemTotal:  9 kB\n");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->totalBytes, 8u * 1024);
    EXPECT_EQ(info->availableBytes, 2u * 1024);
}

TEST(MemoryInfoFromProcMeminfo, AKernelWithoutMemAvailableGivesNoUsedMemory) {
    // Before 3.14 the kernel had no estimate of available memory.
    const auto info = memoryInfoFromProcMeminfo("MemTotal:  2048 kB\nMemFree:  1024 kB\n");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->totalBytes, 2048u * 1024);
    EXPECT_FALSE(info->availableBytes);
    EXPECT_FALSE(memoryUsedBytes(*info));
}

TEST(MemoryInfoFromProcMeminfo, MissingOrBrokenTotalIsAbsent) {
    for (std::string_view text :
         {""sv, "MemAvailable:  1 kB\n"sv, "MemTotal:\n"sv, "MemTotal:  kB\n"sv,
          "MemTotal:  0 kB\n"sv, "MemTotal:  -5 kB\n"sv, "MemTotal:  12 MB\n"sv,
          "MemTotal:  12 kB extra\n"sv, "MemTotal:  18014398509481984 kB\n"sv,
          "MemTotal:  99999999999999999999 kB\n"sv, "\x00\x01\x02garbage"sv}) {
        EXPECT_FALSE(memoryInfoFromProcMeminfo(text)) << text;
    }
}

TEST(MemoryInfoFromProcMeminfo, BrokenAvailableLeavesOnlyTheTotal) {
    for (const char* text :
         {"MemTotal:  8 kB\nMemAvailable:  x kB\n", "MemTotal:  8 kB\nMemAvailable:  4 pages\n"}) {
        const auto info = memoryInfoFromProcMeminfo(text);
        ASSERT_TRUE(info) << text;
        EXPECT_FALSE(info->availableBytes) << text;
    }
}

TEST(MemoryUsedBytes, IsAbsentWhenMoreIsAvailableThanInstalled) {
    EXPECT_FALSE(memoryUsedBytes(MemoryInfo{1024, 2048}));
    EXPECT_EQ(memoryUsedBytes(MemoryInfo{1024, 1024}), 0u);
    EXPECT_EQ(memoryUsedBytes(MemoryInfo{1024, 0}), 1024u);
}

TEST(VolumeBytes, MultipliesBlocksByTheFragmentSize) {
    EXPECT_EQ(volumeBytes(244190646, 100000000, 4096),
              (VolumeBytes{244190646ll * 4096, 100000000ll * 4096}));
    EXPECT_EQ(volumeBytes(0, 0, 4096), (VolumeBytes{0, 0}));
}

TEST(VolumeBytes, SizesBeyondASigned64BitCountAreAbsent) {
    EXPECT_TRUE(volumeBytes(9223372036854775807ull / 4096, 1, 4096));
    EXPECT_FALSE(volumeBytes(9223372036854775807ull / 4096 + 1, 1, 4096));
    EXPECT_FALSE(volumeBytes(1, 18446744073709551615ull, 2));
    EXPECT_FALSE(volumeBytes(18446744073709551615ull, 0, 1));
}

} // namespace
} // namespace tolvane
