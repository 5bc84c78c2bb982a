#include "TolvaneCore/StatsReadings.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

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
    EXPECT_FALSE(storageUse(0, 10));
    EXPECT_FALSE(storageUse(-5, 10));
    EXPECT_FALSE(storageUse(1000, std::nullopt));
    const auto use = storageUse(1000, 250);
    ASSERT_TRUE(use);
    EXPECT_EQ(std::pair(use->used, use->capacity),
              std::pair(std::int64_t(750), std::int64_t(1000)));
    const auto overfull = storageUse(1000, 1200);
    ASSERT_TRUE(overfull);
    EXPECT_EQ(storageReading(*overfull), (Reading{0.0, "0.0 GB free"}));
}

} // namespace
} // namespace tolvane
