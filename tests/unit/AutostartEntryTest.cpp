#include "TolvaneCore/AutostartEntry.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(AutostartEntry, WhatTolvaneWritesCountsAsEnabled) {
    const std::string entry = autostartEntryText("/usr/bin/tolvane");
    EXPECT_NE(entry.find("[Desktop Entry]\n"), std::string::npos);
    EXPECT_NE(entry.find("\nExec=/usr/bin/tolvane\n"), std::string::npos);
    EXPECT_NE(entry.find("\nTryExec=/usr/bin/tolvane\n"), std::string::npos);
    EXPECT_NE(entry.find("\nType=Application\n"), std::string::npos);
    EXPECT_TRUE(autostartEntryEnabled(entry));
    EXPECT_TRUE(autostartEntryEnabled(autostartEntryText("/opt/My Apps/tolvane")));
}

TEST(AutostartEntry, HiddenForeignOrGarbageEntriesAreNotEnabled) {
    struct Case {
        const char* what;
        std::string content;
        bool enabled;
    };
    const Case cases[] = {
        {"empty", "", false},
        {"garbage", "\x01\x02\xff not a desktop entry", false},
        {"no group", "Exec=tolvane\n", false},
        {"foreign program", "[Desktop Entry]\nType=Application\nExec=/usr/bin/other\n", false},
        {"program named like it", "[Desktop Entry]\nExec=/usr/bin/tolvane-extra\n", false},
        {"copied application entry", "[Desktop Entry]\nName=Tolvane\nExec=tolvane\n", true},
        {"quoted path with blank", "[Desktop Entry]\nExec=\"/opt/a b/tolvane\" --x\n", true},
        {"hidden", autostartEntryText("/usr/bin/tolvane") + "Hidden=true\n", false},
        {"hidden false", autostartEntryText("/usr/bin/tolvane") + "Hidden=false\n", true},
        {"hidden in another group",
         autostartEntryText("/usr/bin/tolvane") + "[Desktop Action x]\nHidden=true\n", true},
        {"exec only in another group", "[Desktop Entry]\nName=x\n[Other]\nExec=tolvane\n", false},
        {"comments and CRLF", "# hi\r\n[Desktop Entry]\r\nExec=tolvane\r\n", true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(autostartEntryEnabled(c.content), c.enabled) << c.what;
    }
}

// A desktop entry file escapes its string values first, and Exec quotes its arguments on top,
// so a backslash in a quoted path takes four; a percent sign is doubled in any Exec argument.
TEST(AutostartEntry, AwkwardPathsAreEscapedTwiceInExecAndOnceInTryExec) {
    struct Case {
        const char* path;
        const char* exec;
        const char* tryExec;
    };
    const Case cases[] = {
        {"/opt/My Apps/tolvane", "\"/opt/My Apps/tolvane\"", "/opt/My Apps/tolvane"},
        {"/opt/a\\b/tolvane", "\"/opt/a\\\\\\\\b/tolvane\"", "/opt/a\\\\b/tolvane"},
        {"/opt/100%/tolvane", "\"/opt/100%%/tolvane\"", "/opt/100%/tolvane"},
        {"/opt/$x/tolvane", "\"/opt/\\\\$x/tolvane\"", "/opt/$x/tolvane"},
    };
    for (const Case& c : cases) {
        const std::string entry = autostartEntryText(c.path);
        EXPECT_NE(entry.find("\nExec=" + std::string(c.exec) + "\n"), std::string::npos)
            << c.path << "\n"
            << entry;
        EXPECT_NE(entry.find("\nTryExec=" + std::string(c.tryExec) + "\n"), std::string::npos)
            << c.path;
        const std::string unmarked = entry.substr(0, entry.find("X-Tolvane-Autostart"));
        EXPECT_TRUE(autostartEntryEnabled(unmarked)) << "Exec read back as a tolvane: " << c.path;
    }
    const std::string other = autostartEntryText("/opt/a\\b/tolvane-old");
    EXPECT_FALSE(autostartEntryEnabled(other.substr(0, other.find("X-Tolvane-Autostart"))));
}

TEST(QuoteExecArgument, QuotesOnlyWhereTheDesktopEntryRulesNeedIt) {
    EXPECT_EQ(quoteExecArgument("/usr/bin/tolvane"), "/usr/bin/tolvane");
    EXPECT_EQ(quoteExecArgument("/opt/My Apps/tolvane"), "\"/opt/My Apps/tolvane\"");
    EXPECT_EQ(quoteExecArgument("/a$b\"c`d\\e"), "\"/a\\$b\\\"c\\`d\\\\e\"");
    EXPECT_EQ(quoteExecArgument("/a%b"), "\"/a%%b\"");
}

} // namespace
} // namespace tolvane
