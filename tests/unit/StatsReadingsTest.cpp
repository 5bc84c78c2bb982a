#include "TolvaneCore/StatsReadings.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

constexpr std::uint64_t gib = 1ull << 30;

TEST(CpuReading, FirstSampleIsTheAverageSinceBoot) {
    EXPECT_EQ(cpuReading(std::nullopt, {1000, 4000}, 8), (Reading{0.25, "8 cores"}));
    EXPECT_EQ(cpuReading(std::nullopt, {0, 0}, 8), (Reading{0.0, "8 cores"}));
}

TEST(CpuReading, LaterSamplesCoverTheIntervalOnly) {
    EXPECT_EQ(cpuReading(TickPair{1000, 4000}, {1150, 4200}, 4), (Reading{0.75, "4 cores"}));
    EXPECT_EQ(cpuReading(TickPair{1000, 4000}, {1000, 4200}, 4), (Reading{0.0, "4 cores"}));
}

TEST(CpuReading, NoReadingWhenTheCountersWrappedOrWereReset) {
    EXPECT_FALSE(cpuReading(TickPair{1000, 4000}, {1000, 4000}, 4));          // total stood still
    EXPECT_FALSE(cpuReading(TickPair{4294967000, 4294967290}, {10, 300}, 4)); // wrapped
    EXPECT_FALSE(cpuReading(TickPair{5000, 9000}, {4000, 9500}, 4));          // busy fell
}

TEST(CpuReading, TheWordStaysPlural) {
    EXPECT_EQ(cpuReading(std::nullopt, {1, 2}, 1)->detail, "1 cores");
    EXPECT_EQ(cpuReading(std::nullopt, {1, 2}, 128)->detail, "128 cores");
}

TEST(GigabyteText, DropsTheDecimalFromOneHundredOn) {
    EXPECT_EQ(gigabyteText(6.0), "6.0 GB");
    EXPECT_EQ(gigabyteText(128.0), "128 GB");
    EXPECT_EQ(gigabyteText(100.0), "100 GB");
    EXPECT_EQ(gigabyteText(99.96), "100.0 GB");
    EXPECT_EQ(gigabyteText(0.04), "0.0 GB");
    EXPECT_EQ(gigabyteText(1234.5), "1234 GB");
}

TEST(MemoryReading, UsesBinaryGigabytes) {
    EXPECT_EQ(memoryReading(6 * gib, 16 * gib), (Reading{0.375, "6.0 GB / 16.0 GB"}));
    EXPECT_EQ(memoryReading(64 * gib, 128 * gib), (Reading{0.5, "64.0 GB / 128 GB"}));
}

TEST(MemoryReading, UnknownInstalledMemoryGivesNoReading) {
    EXPECT_FALSE(memoryReading(6 * gib, 0));
}

TEST(StorageUse, NeedsACapacityOfAtLeastOneByteAndAnAvailableCount) {
    EXPECT_FALSE(storageUse(0, 10));
    EXPECT_FALSE(storageUse(-5, 10));
    EXPECT_FALSE(storageUse(1000, std::nullopt));
    const auto use = storageUse(1000, 250);
    ASSERT_TRUE(use);
    EXPECT_EQ(use->used, 750);
    EXPECT_EQ(use->capacity, 1000);
}

TEST(StorageUse, MoreAvailableThanCapacityCountsAsNothingUsed) {
    const auto use = storageUse(1000, 1200);
    ASSERT_TRUE(use);
    EXPECT_EQ(use->used, 0);
    EXPECT_EQ(storageReading(*use), (Reading{0.0, "0.0 GB free"}));
}

TEST(StorageReading, ShowsTheShareUsedAndTheDecimalGigabytesFree) {
    EXPECT_EQ(storageReading({500000000000, 1000000000000}), (Reading{0.5, "500 GB free"}));
    EXPECT_EQ(storageReading({1000000000000 - 42300000000, 1000000000000}),
              (Reading{0.9577, "42.3 GB free"}));
}

} // namespace
} // namespace tolvane
