#include "TolvaneCore/AutostartEntry.h"

#include <gtest/gtest.h>

namespace tolvane {
namespace {

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
             {"[Desktop Entry]\nExec=\"/opt/a b/tolvane\" --x\n", true},
             {ours + "Hidden=true\n", false},
             {ours + "Hidden=false\n", true},
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
