#include "TolvaneCore/AutostartEntry.h"
#include "TolvaneCore/CleaningClock.h"
#include "TolvaneCore/LogLine.h"
#include "TolvaneCore/Utf8Text.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

#include <map>

namespace tolvane {
namespace {

using testing::TableRow, testing::readTable;

TEST(LogFileLine, IsAUtcTimestampToTheSecondABlankTheEscapedMessageAndALineFeed) {
    EXPECT_EQ(logFileLine(1795016661, "loaded state: auto=true mode=trackpad"),
              "2026-11-18T15:44:21Z loaded state: auto=true mode=trackpad\n");
    EXPECT_EQ(logFileLine(0, "mouse connected: Mäus ✓ (1 present)"),
              "1970-01-01T00:00:00Z mouse connected: Mäus ✓ (1 present)\n");
    // A device name cannot forge a line, move the cursor or hide text behind a return.
    EXPECT_EQ(logFileLine(951782400, "two\nlines"), "2000-02-29T00:00:00Z two\\nlines\n");
    EXPECT_EQ(logFileLine(0, std::string("a\r\tb\x1b[2J\x7f\0\xc2\x85z", 13)),
              "1970-01-01T00:00:00Z a\\r\\tb\\x1b[2J\\x7f\\x00\\u0085z\n");
    EXPECT_EQ(systemLogEntry("mouse connected: A\nB"), "Tolvane: mouse connected: A\\nB");
    // Nor make grep call the log a binary file.
    EXPECT_EQ(systemLogEntry("M\xff\xe2\x80\xa8x\xe2\x80\xa9"),
              "Tolvane: M\xef\xbf\xbd\\u2028x\\u2029");
    EXPECT_EQ(logFileLine(4102444799, ""), "2099-12-31T23:59:59Z \n");
}

// Catches a device name that makes the service's D-Bus reply invalid: every malformed byte
// becomes U+FFFD, every well-formed sequence stays.
TEST(Utf8Text, KeepsWellFormedSequencesAndReplacesEachBadByte) {
    for (const TableRow& row : readTable("utf8-text.txt", 2)) {
        EXPECT_EQ(withValidUtf8(row[0]), row[1]) << row.where;
    }
}

TEST(Elapsed, CountsWholeMinutesAndSecondsOfTheDistanceWithoutAnHoursField) {
    for (const TableRow& row : readTable("elapsed.txt", 3)) {
        EXPECT_EQ(elapsed(std::stod(row[0]), std::stod(row[1])), row[2]) << row.where;
    }
}

TEST(AutostartEntry, HiddenEntriesAreOffAndForeignOrGarbageOnesNotTolvanes) {
    const std::map<std::string, AutostartEntryState> states{
        {"foreign", AutostartEntryState::foreign},
        {"hidden", AutostartEntryState::hidden},
        {"enabled", AutostartEntryState::enabled}};
    for (const TableRow& row : readTable("autostart-entries.txt", 2)) {
        const std::string file = row[0].starts_with("{written}")
                                     ? autostartEntryText("/usr/bin/tolvane") + row[0].substr(9)
                                     : row[0];
        EXPECT_EQ(autostartEntryState(file), states.at(row[1])) << row.where;
    }
}

TEST(AutostartEntry, PathsAreEscapedTwiceInExecAndOnceInTryExec) {
    for (const TableRow& row : readTable("exec-quoting.txt", 3)) {
        const std::string entry = autostartEntryText(row[0]);
        EXPECT_NE(entry.find("\nExec=" + row[1] + "\n"), std::string::npos) << row.where;
        EXPECT_NE(entry.find("\nTryExec=" + row[2] + "\n"), std::string::npos) << row.where;
        const std::string unmarked = entry.substr(0, entry.find("X-Tolvane-Autostart"));
        EXPECT_EQ(autostartEntryState(unmarked), AutostartEntryState::enabled)
            << "Exec read back as a tolvane: " << row.where;
    }
}

} // namespace
} // namespace tolvane
