#include "TolvaneCore/LogLine.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(IsoTimestamp, IsUtcToTheWholeSecondWithZ) {
    EXPECT_EQ(isoTimestamp(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(isoTimestamp(1795016661), "2026-11-18T15:44:21Z");
    EXPECT_EQ(isoTimestamp(951782400), "2000-02-29T00:00:00Z");
    EXPECT_EQ(isoTimestamp(4102444799), "2099-12-31T23:59:59Z");
}

TEST(LogFileLine, IsTimestampBlankMessageLineFeed) {
    EXPECT_EQ(logFileLine(1795016661, "loaded state: auto=true mode=trackpad"),
              "2026-11-18T15:44:21Z loaded state: auto=true mode=trackpad\n");
    EXPECT_EQ(logFileLine(0, ""), "1970-01-01T00:00:00Z \n");
}

TEST(LogFileLine, KeepsTheMessageAsGiven) {
    EXPECT_EQ(logFileLine(0, "mouse connected: Mäus ✓ (1 present)"),
              "1970-01-01T00:00:00Z mouse connected: Mäus ✓ (1 present)\n");
    EXPECT_EQ(logFileLine(0, "two\nlines"), "1970-01-01T00:00:00Z two\nlines\n");
}

TEST(SystemLogEntry, PrefixesTheBareMessage) {
    EXPECT_EQ(systemLogEntry("keyboard lock: locked"), "Tolvane: keyboard lock: locked");
    EXPECT_EQ(systemLogEntry(""), "Tolvane: ");
}

TEST(BoolText, SpellsTrueAndFalse) {
    EXPECT_EQ(boolText(true), "true");
    EXPECT_EQ(boolText(false), "false");
}

} // namespace
} // namespace tolvane
