#include "platform/linux/ProcHostStatistics.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

class ProcFolder : public ::testing::Test {
protected:
    void write(const char* name, const QByteArray& content) {
        QFile file(dir.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
    }
    oslinux::ProcHostStatistics host() const {
        return oslinux::ProcHostStatistics(dir.path().toStdString(), dir.path().toStdString());
    }

    QTemporaryDir dir;
};

TEST_F(ProcFolder, ReadsTicksAndMemoryFromTheFilesAndNothingFromBrokenOnes) {
    write("stat", "cpu  55324 0 19158 1649236 503 0 280 0 0 0\ncpu0 26907 0 8520 826480 60\n");
    write("meminfo", "MemTotal:       24683620 kB\nMemAvailable:   24379576 kB\n");
    auto stats = host();
    const auto ticks = stats.cpuTicks();
    ASSERT_TRUE(ticks);
    EXPECT_EQ(ticks->busy, 74762u);
    EXPECT_EQ(ticks->total, 74762u + 1649236 + 503);
    EXPECT_EQ(stats.physicalMemoryBytes(), 24683620ull * 1024);
    EXPECT_EQ(stats.memoryUsedBytes(), (24683620ull - 24379576ull) * 1024);

    ASSERT_TRUE(QFile::remove(dir.filePath("stat")));
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("stat"))); // read() fails with EISDIR
    write("meminfo", QByteArray(9000, '\xff'));
    auto broken = host();
    EXPECT_FALSE(broken.cpuTicks());
    EXPECT_FALSE(broken.memoryUsedBytes());
    EXPECT_EQ(broken.physicalMemoryBytes(), 0u);
    EXPECT_FALSE(oslinux::ProcHostStatistics("/no/such/proc", "/no/such/volume").rootVolume());
}

TEST_F(ProcFolder, AFileLongerThanTheBufferIsCutAtAWholeLine) {
    // The buffer ends in the middle of a MemAvailable line: no half number may be taken.
    QByteArray text = "MemTotal:  8388608 kB\n";
    while (text.size() < 4096 - 20) {
        text += "Filler:  1 kB\n";
    }
    write("meminfo", text + "MemAvailable:  4194304 kB\n");
    auto stats = host();
    EXPECT_FALSE(stats.memoryUsedBytes());
    EXPECT_EQ(stats.physicalMemoryBytes(), 8388608ull * 1024);
}

TEST(ProcHostStatistics, TheRealSystemGivesSaneFigures) {
    oslinux::ProcHostStatistics host;
    const auto ticks = host.cpuTicks();
    ASSERT_TRUE(ticks);
    EXPECT_GT(ticks->total, ticks->busy);
    EXPECT_GE(host.activeProcessorCount(), 1);
    const auto used = host.memoryUsedBytes();
    ASSERT_TRUE(used);
    EXPECT_GT(host.physicalMemoryBytes(), *used);
    const auto volume = host.rootVolume();
    ASSERT_TRUE(volume && volume->availableBytes);
    EXPECT_LE(*volume->availableBytes, volume->totalBytes);
}

} // namespace
} // namespace tolvane::testing
