#include "TolvaneCore/AutostartEntry.h"
#include "TolvaneCore/CleaningClock.h"
#include "TolvaneCore/LogLine.h"

#include <gtest/gtest.h>

#include <limits>

namespace tolvane {
namespace {

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
    EXPECT_EQ(logFileLine(4102444799, ""), "2099-12-31T23:59:59Z \n");
}

TEST(Elapsed, CountsWholeMinutesAndSecondsOfTheDistanceWithoutAnHoursField) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    struct Span {
        double from, to;
        const char* text;
    };
    const Span spans[] = {
        {0, 0, "00:00"},
        {0, 0.999, "00:00"}, // cut off, never rounded up
        {0, 59.9, "00:59"},
        {0, 61.5, "01:01"},
        {0, 3600, "60:00"},
        {1795016661.75, 1795016662.5, "00:00"},
        {-30, 30, "01:00"},
        {10, 9.5, "00:00"},                          // an end before the start
        {0, 2147483647.0 * 60 + 7, "2147483647:07"}, // past a 32-bit minute
        {0, inf, "153333333333333333:20"},
        {0, -inf, "00:00"},
        {0, std::numeric_limits<double>::quiet_NaN(), "00:00"},
    };
    for (const Span& s : spans) {
        EXPECT_EQ(elapsed(s.from, s.to), s.text) << s.from << " to " << s.to;
    }
}

TEST(AutostartEntry, HiddenForeignOrGarbageEntriesAreNotEnabled) {
    const std::string ours = autostartEntryText("/usr/bin/tolvane");
    for (auto [content, enabled] : std::initializer_list<std::pair<std::string, bool>>{
             {ours, true},
             {"", false},
             {"\x01\x02\xff not a desktop entry", false},
             {"Exec=tolvane\n", false}, // no group
             {"[Desktop Entry]\nType=Application\nExec=/usr/bin/other\n", false},
             {"[Desktop Entry]\nExec=/usr/bin/tolvane-extra\n", false},
             {"[Desktop Entry]\nName=Tolvane\nExec=tolvane\n", true}, // a copied application entry
             {ours + "Hidden=true\n", false},
             {ours + "[Desktop Action x]\nHidden=true\n", true},
             {"[Desktop Entry]\nName=x\n[Other]\nExec=tolvane\n", false},
             {"# hi\r\n[Desktop Entry]\r\nExec=tolvane\r\n", true}}) {
        EXPECT_EQ(autostartEntryEnabled(content), enabled) << content;
    }
}

// A desktop entry file escapes its string values first, and Exec quotes its arguments on top,
// so a backslash in a quoted path takes four; a percent sign is doubled in any Exec argument.
TEST(AutostartEntry, AnApplicationEntryWithPathsEscapedTwiceInExecAndOnceInTryExec) {
    struct Case {
        const char *path, *exec, *tryExec;
    };
    for (const Case& c :
         {Case{"/usr/bin/tolvane", "/usr/bin/tolvane", "/usr/bin/tolvane"},
          Case{"/opt/My Apps/tolvane", "\"/opt/My Apps/tolvane\"", "/opt/My Apps/tolvane"},
          Case{"/opt/a\\b/tolvane", "\"/opt/a\\\\\\\\b/tolvane\"", "/opt/a\\\\b/tolvane"},
          Case{"/opt/100%/tolvane", "\"/opt/100%%/tolvane\"", "/opt/100%/tolvane"},
          Case{"/opt/$x/tolvane", "\"/opt/\\\\$x/tolvane\"", "/opt/$x/tolvane"}}) {
        const std::string entry = autostartEntryText(c.path);
        EXPECT_TRUE(entry.starts_with("[Desktop Entry]\n")) << entry;
        EXPECT_NE(entry.find("\nType=Application\n"), std::string::npos) << entry;
        EXPECT_NE(entry.find("\nExec=" + std::string(c.exec) + "\n"), std::string::npos) << entry;
        EXPECT_NE(entry.find("\nTryExec=" + std::string(c.tryExec) + "\n"), std::string::npos)
            << entry;
        const std::string unmarked = entry.substr(0, entry.find("X-Tolvane-Autostart"));
        EXPECT_TRUE(autostartEntryEnabled(unmarked)) << "Exec read back as a tolvane: " << c.path;
    }
    const std::string other = autostartEntryText("/opt/a\\b/tolvane-old");
    EXPECT_FALSE(autostartEntryEnabled(other.substr(0, other.find("X-Tolvane-Autostart"))));
    EXPECT_EQ(quoteExecArgument("/a$b\"c`d\\e"), "\"/a\\$b\\\"c\\`d\\\\e\"");
}

} // namespace
} // namespace tolvane
