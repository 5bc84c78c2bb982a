#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QDir>
#include <QFile>
#include <QMenu>
#include <QSystemTrayIcon>

#include <gtest/gtest.h>

#include <optional>

namespace tolvane::testing {
namespace {

class Launch : public AppHarness {};

TEST_F(Launch, LogsItsStartThenStoresTheStateOfTheFirstReport) {
    launch();
    EXPECT_EQ(recorder().matching("log: "),
              (std::vector<std::string>{
                  "log: Tolvane: === launch === trusted=true baselineNatural=false",
                  "log: Tolvane: loaded state: auto=true mode=trackpad",
                  "log: Tolvane: applyInversion mode=trackpad baseline=false inverting=true"}));
    EXPECT_FALSE(delegate->isPolling());
    ASSERT_NE(delegate->trayIcon(), nullptr);
    EXPECT_FALSE(delegate->trayIcon()->icon().isNull());
    EXPECT_NE(delegate->menu(), nullptr);
    EXPECT_FALSE(QFile::exists(path)) << "nothing is stored before the first report";
    recorder().clear();
    settle();
    EXPECT_EQ(recorder().matching("log: "),
              (std::vector<std::string>{
                  "log: Tolvane: applyInversion mode=trackpad baseline=false inverting=true"}));
    EXPECT_EQ(storedText("autoEnabled"), "true");
    EXPECT_EQ(storedText("mode"), "trackpad");
}

TEST_F(Launch, StoredSettingsAndMiceAtStartGiveTheState) {
    constexpr ScrollMode T = ScrollMode::trackpad, M = ScrollMode::mouse;
    const auto check = [this](std::optional<std::string> settings, bool mouse, const char* loaded,
                              AppState state) {
        SCOPED_TRACE(settings.value_or("(no file)") + (mouse ? " with a mouse" : ""));
        reset();
        if (settings) {
            writeSettings(QByteArray::fromStdString(*settings));
        }
        if (mouse) {
            fakes().pointers.present.push_back({"usb-1", {1, 2, 0, "USB Mouse"}});
        }
        launch();
        EXPECT_EQ(recorder().matching("log: Tolvane: loaded"),
                  std::vector<std::string>{std::string("log: Tolvane: loaded state: ") + loaded});
        settle();
        EXPECT_EQ(delegate->currentState(), state);
        EXPECT_EQ(delegate->isInverting(), state.mode == T);
        EXPECT_EQ(storedText("autoEnabled"), state.autoEnabled ? "true" : "false");
        EXPECT_EQ(storedText("mode"), modeName(state.mode));
    };
    const std::string autoOffMouse = "[General]\nautoEnabled=false\nmode=mouse\n";
    check(std::nullopt, false, "auto=true mode=trackpad", {true, false, T});
    check(std::nullopt, true, "auto=true mode=trackpad", {true, true, M});
    check("[General]\nautoEnabled=true\nmode=mouse\n", false, "auto=true mode=mouse",
          {true, false, T});
    check(autoOffMouse, true, "auto=false mode=mouse", {false, true, M});
    check(autoOffMouse, false, "auto=false mode=mouse", {false, false, M});
    check("[General]\nautoEnabled=false\nmode=Mouse\n", false, "auto=false mode=trackpad",
          {false, false, T});
    // Corrupt settings never stop the start and are rewritten valid.
    for (const std::string& junk :
         {std::string("\x00\xff\xfe[General\n=\n\x01", 12), std::string(),
          std::string("autoEnabled=yes\nmode=Mouse\n"),
          std::string("[General]\nautoEnabled=1\nmode=99999999999999999999999\n"),
          std::string("[General]\nautoEnabled=@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x1)\nmode=a, b\n"),
          // A list that claims four thousand million entries must not be made.
          std::string("[General]\nmode=@Variant(\\0\\0\\0\\t\\xff\\xff\\xff\\xf0)\n")}) {
        check(junk, false, "auto=true mode=trackpad", {true, false, T});
    }
}

// Catches a choice lost without a word: the defaults still come, and the log says why.
TEST_F(Launch, AnUnreadableSettingsFileGivesTheDefaultsAndSaysSoAsDoesEachLostSave) {
    QDir().mkpath(path); // a folder where the file should be: no user can read or write it
    launch();
    settle();
    const std::string file = path.toStdString();
    EXPECT_EQ(recorder().matching("log: Tolvane: settings"),
              (std::vector<std::string>{"log: Tolvane: settings not read: " + file,
                                        "log: Tolvane: settings not saved: " + file}));
    EXPECT_EQ(recorder().matching("log: Tolvane: loaded"),
              std::vector<std::string>{"log: Tolvane: loaded state: auto=true mode=trackpad"});
}

TEST_F(Launch, ANaturalBaselineTurnsTheInversionAround) {
    fakes().scrollSetting.natural = true;
    launch();
    EXPECT_EQ(
        recorder().matching("log: Tolvane: === launch"),
        std::vector<std::string>{"log: Tolvane: === launch === trusted=true baselineNatural=true"});
    EXPECT_FALSE(delegate->isInverting());
}

} // namespace
} // namespace tolvane::testing
