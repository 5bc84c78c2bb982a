#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QSystemTrayIcon>
#include <QWidgetAction>

#include <gtest/gtest.h>

#include <algorithm>
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

// With no tray host the menu comes as a window once the wait is over, and again when a later
// host goes away; a second start opens it too.
TEST_F(Launch, WithoutATrayHostTheMenuComesAsAWindowAfterTheWait) {
    trayHost = false;
    timing.trayWait = std::chrono::milliseconds(400);
    timing.trayCheck = std::chrono::milliseconds(20);
    QElapsedTimer sinceLaunch;
    sinceLaunch.start();
    launch();
    settle();
    EXPECT_TRUE(delegate->menuWindow() == nullptr || sinceLaunch.elapsed() >= 400)
        << "the wait is not over";
    settle(400);
    QMenu* window = delegate->menuWindow();
    ASSERT_TRUE(window && window->isVisible());
    EXPECT_EQ(window->windowTitle(), "Tolvane");
    auto* line = qobject_cast<QWidgetAction*>(window->actions().value(0));
    ASSERT_TRUE(line && qobject_cast<QLabel*>(line->defaultWidget()));
    EXPECT_EQ(qobject_cast<QLabel*>(line->defaultWidget())->text(),
              "This desktop shows no tray icons. Start Tolvane again to open this window; on "
              "GNOME, turn on the AppIndicator extension to keep Tolvane in the top bar.");
    const auto item = [](QMenu* menu, const char* text) {
        const QList<QAction*> actions = menu->actions();
        const auto found = std::find_if(actions.begin(), actions.end(),
                                        [text](QAction* a) { return a->text() == text; });
        return found == actions.end() ? nullptr : *found;
    };
    item(window, "Switch to Mouse scrolling")->trigger();
    settle();
    window = delegate->menuWindow();
    ASSERT_TRUE(window && window->isVisible()) << "a choice brings the window back";
    EXPECT_TRUE(item(window, "Switch to Natural scrolling")) << "showing the choice's result";
    window->close();
    settle();
    EXPECT_FALSE(delegate->menuWindow());
    delegate->openMenu();
    ASSERT_TRUE(delegate->menuWindow() && delegate->menuWindow()->isVisible());
    delegate->menuWindow()->close();
    trayHost = true;
    delegate->checkTrayHost();
    settle();
    EXPECT_FALSE(delegate->menuWindow());
    trayHost = false;
    delegate->checkTrayHost();
    settle();
    EXPECT_TRUE(delegate->menuWindow());
}

} // namespace
} // namespace tolvane::testing
