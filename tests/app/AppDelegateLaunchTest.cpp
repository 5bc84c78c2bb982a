#include "Tolvane/AppDelegate.h"
#include "Tolvane/Log.h"
#include "support/AppHarness.h"

#include <QDir>
#include <QFile>
#include <QMenu>
#include <QSettings>
#include <QSystemTrayIcon>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

class Launch : public AppHarness {};

TEST_F(Launch, WithAccessRunsTheStepsInOrder) {
    launch();
    const std::vector<std::string> launchSteps(recorder().calls.begin(),
                                               recorder().calls.begin() + 8);
    EXPECT_EQ(launchSteps,
              (std::vector<std::string>{
                  "scrollSetting.naturalScroll",
                  "access.isTrusted",
                  "log: Tolvane: === launch === trusted=true baselineNatural=false",
                  "log: Tolvane: loaded state: auto=true mode=trackpad",
                  "pointers.open",
                  "pointers.current",
                  "scrollTap.create -> true",
                  "log: Tolvane: applyInversion mode=trackpad baseline=false inverting=true",
              }));
    EXPECT_FALSE(delegate->isPolling());
    ASSERT_NE(delegate->trayIcon(), nullptr);
    EXPECT_FALSE(delegate->trayIcon()->icon().isNull());
    EXPECT_NE(delegate->menu(), nullptr);
}

TEST_F(Launch, FirstReportArrivesAfterTheLaunchAndStoresBothKeys) {
    launch();
    EXPECT_FALSE(QFile::exists(settingsPath()));
    recorder().clear();
    settle();
    EXPECT_EQ(recorder().matching("log: "),
              (std::vector<std::string>{
                  "log: Tolvane: applyInversion mode=trackpad baseline=false inverting=true"}));
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::trackpad}));
    EXPECT_EQ(storedText("autoEnabled"), "true");
    EXPECT_EQ(storedText("mode"), "trackpad");
}

TEST_F(Launch, StoredMouseModeIsCorrectedByTheFirstReportWhenNoMouseIsThere) {
    writeSettings("[General]\nautoEnabled=true\nmode=mouse\n");
    launch();
    EXPECT_EQ(recorder().matching("log: Tolvane: loaded")[0],
              "log: Tolvane: loaded state: auto=true mode=mouse");
    settle();
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::trackpad}));
    EXPECT_EQ(storedText("mode"), "trackpad");
}

TEST_F(Launch, AMouseAtStartSwitchesToMouseMode) {
    fakes().pointers.present.push_back({"usb-1", {1, 2, 0, "USB Mouse"}});
    launch();
    settle();
    EXPECT_EQ(delegate->currentState(), (AppState{true, true, ScrollMode::mouse}));
    EXPECT_FALSE(delegate->isInverting());
    EXPECT_EQ(storedText("mode"), "mouse");
}

TEST_F(Launch, WithAutoOffTheStoredModeStaysWithOrWithoutAMouse) {
    writeSettings("[General]\nautoEnabled=false\nmode=mouse\n");
    fakes().pointers.present.push_back({"usb-1", {1, 2, 0, "USB Mouse"}});
    launch();
    settle();
    EXPECT_EQ(delegate->currentState(), (AppState{false, true, ScrollMode::mouse}));
    fakes().pointers.unplug("usb-1");
    settle();
    EXPECT_EQ(delegate->currentState(), (AppState{false, false, ScrollMode::mouse}));
    EXPECT_EQ(storedText("autoEnabled"), "false");
}

TEST_F(Launch, NaturalBaselineTurnsTheInversionAround) {
    fakes().scrollSetting.natural = true;
    launch();
    EXPECT_EQ(recorder().matching("log: Tolvane: === launch")[0],
              "log: Tolvane: === launch === trusted=true baselineNatural=true");
    EXPECT_FALSE(delegate->isInverting());
}

TEST_F(Launch, CorruptSettingsNeverStopTheStartAndAreRewrittenValid) {
    for (const QByteArray& junk :
         {QByteArray("\x00\xff\xfe[General\n=\n\x01", 12),
          QByteArray("autoEnabled=yes\nmode=Mouse\n"),
          QByteArray("[General]\nautoEnabled=1\nmode=99999999999999999999999\n"),
          QByteArray("[General]\nautoEnabled=@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x1)\nmode=a, b\n"),
          QByteArray()}) {
        SCOPED_TRACE(junk.toStdString());
        reset();
        writeSettings(junk);
        launch();
        EXPECT_EQ(recorder().matching("log: Tolvane: loaded")[0],
                  "log: Tolvane: loaded state: auto=true mode=trackpad");
        settle();
        EXPECT_EQ(storedText("autoEnabled"), "true");
        EXPECT_EQ(storedText("mode"), "trackpad");
    }
}

TEST_F(Launch, StoredFalseSurvivesAndTheWordMouseMustBeExact) {
    writeSettings("[General]\nautoEnabled=false\nmode=Mouse\n");
    launch();
    EXPECT_EQ(recorder().matching("log: Tolvane: loaded")[0],
              "log: Tolvane: loaded state: auto=false mode=trackpad");
}

TEST_F(Launch, UnreadableSettingsFileGivesTheDefaults) {
    QDir().mkpath(settingsPath()); // a folder where the file should be: no user can read it
    launch();
    EXPECT_EQ(recorder().matching("log: Tolvane: loaded")[0],
              "log: Tolvane: loaded state: auto=true mode=trackpad");
}

TEST_F(Launch, LogLinesReachTheFileWithTimestamps) {
    launch();
    QFile file(QString::fromStdString(Log::filePath()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    ASSERT_GE(lines.size(), 3);
    const QByteArray last = lines[lines.size() - 2];
    EXPECT_TRUE(last.endsWith(" applyInversion mode=trackpad baseline=false inverting=true"))
        << last.toStdString();
    EXPECT_EQ(last.indexOf('Z'), 19);
}

} // namespace
} // namespace tolvane::testing
