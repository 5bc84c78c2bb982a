#include "platform/linux/AutostartLoginRegistration.h"
#include "platform/linux/DesktopScrollSetting.h"
#include "platform/linux/GSettingsScrollSetting.h"
#include "platform/linux/ProcHostStatistics.h"
#include "platform/linux/SingleInstanceLock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tolvane::testing {
namespace {

// Environment variables set, or unset where the value is null, while it lives.
struct ScopedEnvironment {
    ScopedEnvironment(std::initializer_list<std::pair<const char*, QByteArray>> values) {
        for (const auto& [name, value] : values) {
            saved.emplace_back(name, qgetenv(name));
            value.isNull() ? qunsetenv(name) : qputenv(name, value);
        }
    }
    ~ScopedEnvironment() {
        for (const auto& [name, value] : saved) {
            value.isNull() ? qunsetenv(name) : qputenv(name, value);
        }
    }
    std::vector<std::pair<const char*, QByteArray>> saved;
};

// Files of the user's own, in a configuration folder of the test's making.
class ConfigHome : public ::testing::Test {
protected:
    void write(const QString& name, const QByteArray& text) {
        QDir().mkpath(QFileInfo(folder.filePath(name)).path());
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    }

    QTemporaryDir folder;
    const ScopedEnvironment environment{{"XDG_CONFIG_HOME", folder.path().toUtf8()}};
};

TEST_F(ConfigHome, RegisteringWritesAnEntryThatReadsBackAsEnabledAndReplacesAHiddenOne) {
    write("autostart/tolvane.desktop", "[Desktop Entry]\nExec=tolvane\nHidden=true\n");
    oslinux::AutostartLoginRegistration login("/usr/bin/tolvane");
    EXPECT_FALSE(login.isEnabled());
    std::string failure;
    ASSERT_TRUE(login.setEnabled(true, failure)) << failure;
    EXPECT_TRUE(login.isEnabled());
    ASSERT_TRUE(login.setEnabled(false, failure));
    EXPECT_FALSE(QFileInfo::exists(folder.filePath("autostart/tolvane.desktop")));
    EXPECT_TRUE(login.setEnabled(false, failure)) << "removing an absent entry is no failure";

    QDir(folder.filePath("autostart")).removeRecursively();
    write("autostart", ""); // a file where the folder should be
    EXPECT_FALSE(login.setEnabled(true, failure));
    EXPECT_FALSE(failure.empty());
}

TEST_F(ConfigHome, KdeAndXfceSettingsAreReadFromTheirOwnFiles) {
    write("kcminputrc", "[Mouse]\nXLbInptNaturalScroll=true\n");
    write("xfce4/xfconf/xfce-perchannel-xml/pointers.xml",
          "<channel name=\"pointers\"><property name=\"M\" type=\"empty\"><property "
          "name=\"ReverseScrolling\" type=\"bool\" value=\"true\"/></property></channel>");
    for (const char* name : {"KDE", "XFCE"}) {
        const ScopedEnvironment desktop{{"XDG_CURRENT_DESKTOP", name}};
        EXPECT_EQ(oslinux::DesktopScrollSetting().naturalScroll(), true) << name;
    }
}

// The lock lies only in a folder that no one else can write, and is not reached through a
// symlink. (That a second start is refused and its request reaches the holder, the desktops
// tier sees on every desktop.)
TEST(SingleInstance, TheLockLiesOnlyInAFolderOfTheUsersOwn) {
    QTemporaryDir base;
    const std::string good = base.path().toStdString() + "/cache/tolvane";
    const std::string open = base.path().toStdString() + "/open";
    const std::string link = base.path().toStdString() + "/link";
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(open)));
    ASSERT_EQ(chmod(open.c_str(), 0777), 0);
    ASSERT_EQ(symlink(base.path().toUtf8().constData(), link.c_str()), 0);
    for (const std::string& refused : {open, link}) {
        const std::vector<oslinux::SingleInstanceLock::Folder> folders{{refused, false},
                                                                       {good, true}};
        oslinux::SingleInstanceLock first(folders), second(folders);
        ASSERT_TRUE(first.acquire()) << refused;
        EXPECT_EQ(first.folder(), good) << refused;
        EXPECT_FALSE(second.acquire()) << refused;
    }
}

// GIO looks for schemas where GSETTINGS_SCHEMA_DIR and XDG_DATA_DIRS say and, with the memory
// backend, answers every key with its schema's default: a desktop of the test's own making.
TEST(GSettingsScrollSetting, ReadsTheDesktopsNaturalScrollOrNothingWithoutTheSchemaOrItsKey) {
    QTemporaryDir schemas;
    const ScopedEnvironment desktop{{"GSETTINGS_SCHEMA_DIR", schemas.path().toLocal8Bit()},
                                    {"XDG_DATA_DIRS", schemas.filePath("none").toLocal8Bit()},
                                    {"GSETTINGS_BACKEND", "memory"}};
    QString compiler = QStandardPaths::findExecutable(QStringLiteral("glib-compile-schemas"));
    if (compiler.isEmpty()) {
        compiler = QStringLiteral("/usr/lib/x86_64-linux-gnu/glib-2.0/glib-compile-schemas");
    }
    // Installs the mouse schema with one boolean `key` whose default is `value`.
    const auto install = [&schemas, &compiler](const char* key, bool value) {
        QFile xml(schemas.filePath(QStringLiteral("org.gnome.desktop.peripherals.gschema.xml")));
        ASSERT_TRUE(xml.open(QIODevice::WriteOnly));
        xml.write(QStringLiteral("<schemalist><schema id=\"org.gnome.desktop.peripherals.mouse\" "
                                 "path=\"/org/gnome/desktop/peripherals/mouse/\"><key name=\"%1\" "
                                 "type=\"b\"><default>%2</default></key></schema></schemalist>")
                      .arg(QLatin1String(key), value ? "true" : "false")
                      .toUtf8());
        xml.close();
        ASSERT_EQ(QProcess::execute(compiler, {schemas.path()}), 0);
    };
    EXPECT_EQ(oslinux::GSettingsScrollSetting().naturalScroll(), std::nullopt) << "no schema";
    install("left-handed", true);
    EXPECT_EQ(oslinux::GSettingsScrollSetting().naturalScroll(), std::nullopt) << "no key";
    for (bool natural : {true, false}) {
        install("natural-scroll", natural);
        EXPECT_EQ(oslinux::GSettingsScrollSetting().naturalScroll(), natural);
    }
    { oslinux::GSettingsScrollSetting unused; }
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a reader was not reaped";
}

// The files are read where the program is told; a broken file gives nothing, and a file longer
// than the buffer is cut at a whole line, so no half number is taken.
TEST_F(ConfigHome, ProcHostStatisticsReadsTheFilesItIsGivenAndNothingFromBrokenOnes) {
    const auto host = [this] {
        return oslinux::ProcHostStatistics(folder.path().toStdString(),
                                           folder.path().toStdString());
    };
    write("stat", "cpu  55324 0 19158 1649236 503 0 280 0 0 0\n");
    write("meminfo", "MemTotal:       24683620 kB\nMemAvailable:   24379576 kB\n");
    EXPECT_EQ(host().cpuTicks().value_or(TickPair{}).busy, 74762u);
    EXPECT_EQ(host().memoryUsedBytes(), (24683620ull - 24379576ull) * 1024);

    QByteArray longer = "MemTotal:  8388608 kB\n";
    while (longer.size() < 4096 - 20) {
        longer += "Filler:  1 kB\n";
    }
    write("meminfo", longer + "MemAvailable:  4194304 kB\n");
    EXPECT_FALSE(host().memoryUsedBytes());
    EXPECT_EQ(host().physicalMemoryBytes(), 8388608ull * 1024);

    ASSERT_TRUE(QFile::remove(folder.filePath("stat")));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("stat"))); // read() fails with EISDIR
    write("meminfo", QByteArray(9000, '\xff'));
    auto broken = host();
    EXPECT_FALSE(broken.cpuTicks() || broken.memoryUsedBytes() || broken.physicalMemoryBytes());
    EXPECT_FALSE(oslinux::ProcHostStatistics("/no/such/proc", "/no/such/volume").rootVolume());
    oslinux::ProcHostStatistics real; // the system's own files
    ASSERT_TRUE(real.cpuTicks() && real.memoryUsedBytes() && real.rootVolume());
    EXPECT_GT(real.physicalMemoryBytes(), *real.memoryUsedBytes());
}

} // namespace
} // namespace tolvane::testing
