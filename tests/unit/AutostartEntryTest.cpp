#include "TolvaneCore/AutostartEntry.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(AutostartEntry, WhatTolvaneWritesQuotesTheProgramWhereNeededAndCountsAsEnabled) {
    for (auto [program, exec] : {std::pair{"/usr/bin/tolvane", "/usr/bin/tolvane"},
                                 {"/opt/My Apps/tolvane", "\"/opt/My Apps/tolvane\""},
                                 {"/a$b\"c`d\\e/tolvane", "\"/a\\$b\\\"c\\`d\\\\e/tolvane\""}}) {
        const std::string entry = autostartEntryText(program);
        EXPECT_NE(entry.find("[Desktop Entry]\n"), std::string::npos) << entry;
        EXPECT_NE(entry.find("\nExec=" + std::string(exec) + "\n"), std::string::npos) << entry;
        EXPECT_NE(entry.find("\nType=Application\n"), std::string::npos) << entry;
        EXPECT_TRUE(autostartEntryEnabled(entry)) << entry;
    }
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

} // namespace
} // namespace tolvane
