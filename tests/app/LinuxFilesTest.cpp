#include "Tolvane/AppDelegate.h"
#include "Tolvane/Log.h"
#include "platform/linux/AutostartLoginRegistration.h"
#include "platform/linux/DesktopScrollSetting.h"
#include "platform/linux/SingleInstanceLock.h"
#include "platform/linux/UserFolders.h"
#include "support/AppHarness.h"
#include "support/FakePlatform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tolvane::testing {
namespace {

class ConfigHome : public ::testing::Test {
protected:
    void SetUp() override {
        saved = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
    }
    void TearDown() override { qputenv("XDG_CONFIG_HOME", saved); }

    QString entry() const { return folder.path() + "/autostart/tolvane.desktop"; }

    QTemporaryDir folder;
    QByteArray saved;
};

TEST_F(ConfigHome, RegisteringWritesAnEntryThatReadsBackAsEnabledAndReplacesAHiddenOne) {
    QDir().mkpath(folder.path() + "/autostart");
    QFile hidden(entry());
    ASSERT_TRUE(hidden.open(QIODevice::WriteOnly));
    hidden.write("[Desktop Entry]\nExec=tolvane\nHidden=true\n");
    hidden.close();
    oslinux::AutostartLoginRegistration login("/usr/bin/tolvane");
    EXPECT_FALSE(login.isEnabled());
    std::string failure;
    ASSERT_TRUE(login.setEnabled(true, failure)) << failure;
    EXPECT_TRUE(login.isEnabled());
    EXPECT_EQ(QDir(folder.path() + "/autostart").entryList(QDir::Files),
              QStringList{"tolvane.desktop"});
    ASSERT_TRUE(login.setEnabled(false, failure));
    EXPECT_FALSE(QFileInfo::exists(entry()));
    EXPECT_FALSE(login.isEnabled());
    EXPECT_TRUE(login.setEnabled(false, failure)) << "removing an absent entry is no failure";
}

TEST_F(ConfigHome, AFolderThatCannotBeMadeIsAFailureWithADescription) {
    QFile blocker(folder.path() + "/autostart");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly)); // a file where the folder should be
    blocker.close();
    oslinux::AutostartLoginRegistration login("/usr/bin/tolvane");
    std::string failure;
    EXPECT_FALSE(login.setEnabled(true, failure));
    EXPECT_FALSE(failure.empty());
    EXPECT_FALSE(login.isEnabled());
}

// Catches a path of its own making: today's Qt takes "/" for a missing HOME.
TEST_F(ConfigHome, WithoutHomeTheAccountsHomeHoldsSettingsLogAndAutostart) {
    const QByteArray home = qgetenv("HOME"), state = qgetenv("XDG_STATE_HOME");
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"}) {
        qunsetenv(name);
    }
    const std::string account = ::getpwuid(::getuid())->pw_dir;
    EXPECT_EQ(AppDelegate::defaultSettingsPath().toStdString(),
              account + "/.config/Tolvane/Tolvane.conf");
    EXPECT_EQ(oslinux::AutostartLoginRegistration::entryPath(),
              account + "/.config/autostart/tolvane.desktop");
    EXPECT_EQ(oslinux::stateHome(), account + "/.local/state");
    qputenv("HOME", home);
    qputenv("XDG_STATE_HOME", state);
}

// Catches a desktop's file looked for in the wrong place.
TEST_F(ConfigHome, KdeAndXfceSettingsAreReadFromTheirOwnFiles) {
    const auto write = [this](const QString& name, const char* text) {
        QDir().mkpath(QFileInfo(folder.filePath(name)).path());
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    };
    write("kcminputrc", "[Mouse]\nXLbInptNaturalScroll=true\n");
    write("xfce4/xfconf/xfce-perchannel-xml/pointers.xml",
          "<channel name=\"pointers\"><property name=\"M\" type=\"empty\"><property "
          "name=\"ReverseScrolling\" type=\"bool\" value=\"true\"/></property></channel>");
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP");
    for (const char* name : {"KDE", "XFCE"}) {
        qputenv("XDG_CURRENT_DESKTOP", name);
        EXPECT_EQ(oslinux::DesktopScrollSetting().naturalScroll(), true) << name;
    }
    qputenv("XDG_CURRENT_DESKTOP", desktop);
}

class LogFile : public ::testing::Test {
protected:
    void SetUp() override { Log::setSystemLog(&fakes.systemLog); }
    void TearDown() override { Log::setSystemLog(nullptr); }

    QString path() const { return QString::fromStdString(Log::filePath()); }

    FakePlatform fakes;
};

TEST_F(LogFile, AppendsTimestampedLinesAndAnUnusableFileNeverStopsTheSystemLog) {
    Log::line("first");
    QFile::remove(path());
    Log::line("after delete");
    Log::line("Mäus ✓");
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString content = QString::fromUtf8(file.readAll());
    const QString time = R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ )";
    EXPECT_TRUE(QRegularExpression("^" + time + "after delete\n" + time + "Mäus ✓\n$")
                    .match(content)
                    .hasMatch())
        << content.toStdString();

    QFile::remove(path());
    QDir().mkpath(path()); // a folder in place of the file: no user can write it
    Log::line("");
    QDir().rmdir(path());
    EXPECT_EQ(fakes.recorder.calls,
              (std::vector<std::string>{"log: Tolvane: first", "log: Tolvane: after delete",
                                        "log: Tolvane: Mäus ✓", "log: Tolvane: "}));
}

// The lock lies only in a folder that no one else can write, and is not reached through a
// symlink; a second start is refused and its request reaches the holder.
TEST(SingleInstance, ASecondStartIsRefusedAndItsRequestReachesTheHolder) {
    QTemporaryDir base;
    const std::string good = base.path().toStdString() + "/cache/tolvane";
    const std::string open = base.path().toStdString() + "/open";
    const std::string link = base.path().toStdString() + "/link";
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(open)));
    ASSERT_EQ(chmod(open.c_str(), 0777), 0);
    ASSERT_EQ(symlink(base.path().toUtf8().constData(), link.c_str()), 0);
    for (const std::string& refused : {open, link}) {
        SCOPED_TRACE(refused);
        const std::vector<oslinux::SingleInstanceLock::Folder> folders{{refused, false},
                                                                       {good, true}};
        oslinux::SingleInstanceLock first(folders);
        ASSERT_TRUE(first.acquire());
        EXPECT_EQ(first.folder(), good);
        int requests = 0;
        first.onOpenRequest([&requests] { ++requests; });
        const pid_t child = fork();
        if (child == 0) {
            oslinux::SingleInstanceLock second(folders);
            _exit(!second.acquire() && second.askRunningToOpen() ? 0 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "second start not refused";
        settle(20);
        EXPECT_EQ(requests, 1);
    }
    oslinux::SingleInstanceLock again({{good, true}});
    EXPECT_TRUE(again.acquire());
}

} // namespace
} // namespace tolvane::testing
