#include "platform/linux/AutostartLoginRegistration.h"
#include "platform/linux/DesktopScrollSetting.h"
#include "platform/linux/GSettingsScrollSetting.h"
#include "platform/linux/ProcHostStatistics.h"
#include "platform/linux/SingleInstanceLock.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
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

// A hidden entry is Tolvane's own to replace; a file of the user's (another program's entry, a
// FIFO) is never replaced, removed or waited on.
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

    const QByteArray foreign = "[Desktop Entry]\nExec=other-program\n";
    write("autostart/tolvane.desktop", foreign);
    EXPECT_FALSE(login.setEnabled(true, failure));
    EXPECT_NE(failure.find("not Tolvane's"), std::string::npos) << failure;
    EXPECT_TRUE(login.setEnabled(false, failure));
    QFile kept(folder.filePath("autostart/tolvane.desktop"));
    EXPECT_TRUE(kept.open(QIODevice::ReadOnly) && kept.readAll() == foreign);
    kept.remove();
    ASSERT_EQ(mkfifo(kept.fileName().toLocal8Bit().constData(), 0600), 0);
    EXPECT_FALSE(login.isEnabled() || login.setEnabled(true, failure)) << "the FIFO";

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

// A unix socket address: the path's socket, or with an empty folder the abstract name in `slot`.
std::pair<sockaddr_un, socklen_t> instanceAddress(const std::string& folder, int slot) {
    sockaddr_un address{AF_UNIX, {}};
    const std::string name = folder.empty() ? "tolvane-instance-" + std::to_string(geteuid()) +
                                                  "-" + std::to_string(slot)
                                            : folder + "/tolvane.socket";
    std::memcpy(address.sun_path + (folder.empty() ? 1 : 0), name.data(), name.size());
    return {address, socklen_t(offsetof(sockaddr_un, sun_path) + 1 + name.size())};
}

// The lock lies only in folders that no one else can write, never reached through a symlink.
// The squatter binds the first abstract name and never listens.
TEST(SingleInstance, TwoStartsAlwaysMeetAndNothingLocalHoldsThemUp) {
    using Lock = oslinux::SingleInstanceLock;
    QTemporaryDir base;
    const auto at = [&base](const char* name) { return base.path().toStdString() + name; };
    for (const char* folder : {"/open", "/one", "/two"}) {
        ASSERT_TRUE(QDir().mkpath(QString::fromStdString(at(folder))));
    }
    ASSERT_EQ(chmod(at("/open").c_str(), 0777), 0);
    ASSERT_EQ(symlink(base.path().toUtf8().constData(), at("/link").c_str()), 0);
    const int squatter = socket(AF_UNIX, SOCK_STREAM, 0);
    const auto [squatted, squattedLength] = instanceAddress("", 0);
    ASSERT_EQ(bind(squatter, reinterpret_cast<const sockaddr*>(&squatted), squattedLength), 0);
    struct Case {
        const char* what;
        const char *holderFirst, *laterFirst, *socketIn; // folders; "" for none
    };
    const Case cases[] = {
        {"a folder others can write", "/open", "/open", "/c/t"},
        {"a symlink", "/link", "/link", "/c/t"},
        {"different runtime folders", "/one", "/two", "/one"},
        {"the runtime folder given twice", "/c/t", "/c/t", "/c/t"},
        {"no folder at all", "", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto folders = [&](const char* first) {
            return *first ? std::vector<Lock::Folder>{{at(first), false}, {at("/c/t"), true}}
                          : std::vector<Lock::Folder>{};
        };
        const std::string socketIn = *c.socketIn ? at(c.socketIn) : "";
        QElapsedTimer started;
        started.start();
        Lock holder(folders(c.holderFirst)), later(folders(c.laterFirst));
        ASSERT_TRUE(holder.acquire());
        EXPECT_LT(started.elapsed(), 500) << "the start waited on a squatted name";
        EXPECT_EQ(holder.folder(), socketIn);
        int requests = 0;
        holder.onOpenRequest([&requests] { ++requests; });
        std::vector<int> silent(20);
        for (int& connection : silent) {
            connection = socket(AF_UNIX, SOCK_STREAM, 0);
            const auto [address, length] = instanceAddress(socketIn, 1);
            ::connect(connection, reinterpret_cast<const sockaddr*>(&address), length);
        }
        EXPECT_FALSE(later.acquire());
        EXPECT_TRUE(later.askRunningToOpen());
        QElapsedTimer waited, turn;
        qint64 longestTurn = 0;
        for (waited.start(); requests == 0 && waited.elapsed() < 2000;) {
            turn.start();
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            longestTurn = std::max(longestTurn, turn.elapsed());
        }
        EXPECT_EQ(requests, 1);
        EXPECT_LT(longestTurn, 100) << "a silent connection held the main thread";
        std::ranges::for_each(silent, ::close);
    }
    ::close(squatter);
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
