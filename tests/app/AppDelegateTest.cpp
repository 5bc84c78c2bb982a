#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QTimer>
#include <QWidgetAction>

#include <gtest/gtest.h>

#include <optional>

namespace tolvane::testing {
namespace {

using Lines = std::vector<std::string>;
constexpr ScrollMode T = ScrollMode::trackpad, M = ScrollMode::mouse;

class AppDelegateTest : public AppHarness {};

// With a working tap nothing is asked for and nothing polled.
TEST_F(AppDelegateTest, ALaunchLogsItsStartAndStoresNothingBeforeTheFirstReport) {
    launch();
    const std::string applied =
        "log: Tolvane: applyInversion mode=trackpad baseline=false inverting=true";
    EXPECT_EQ(recorder().matching("log: "),
              (Lines{"log: Tolvane: === launch === trusted=true baselineNatural=false",
                     "log: Tolvane: loaded state: auto=true mode=trackpad", applied}));
    EXPECT_TRUE(recorder().matching("access.").empty() && !delegate->isPolling());
    EXPECT_FALSE(QFile::exists(path));
    recorder().clear();
    settle();
    EXPECT_EQ(recorder().matching("log: "), Lines{applied});
    EXPECT_EQ(storedText("mode"), "trackpad");
}

// Corrupt settings never stop the start and are rewritten valid, an unreadable file gives the
// defaults and the log says why; a natural desktop turns the inversion around.
TEST_F(AppDelegateTest, StoredSettingsMiceAndTheDesktopsDirectionAtStartGiveTheState) {
    const auto check = [this](std::optional<std::string> settings, bool mouse, bool natural,
                              AppState state) {
        SCOPED_TRACE(settings.value_or("(no file)") + (mouse ? " with a mouse" : "") +
                     (natural ? " on a natural desktop" : ""));
        reset();
        if (settings) {
            writeSettings(QByteArray::fromStdString(*settings));
        }
        if (mouse) {
            fakes().pointers.present.push_back({"usb-1", {1, 2, 0, "USB Mouse"}});
        }
        fakes().scrollSetting.natural = natural;
        launch(true);
        EXPECT_EQ(delegate->currentState(), state);
        EXPECT_EQ(delegate->isInverting(), (state.mode == T) != natural);
        EXPECT_EQ(storedText("autoEnabled"), state.autoEnabled ? "true" : "false");
        EXPECT_EQ(storedText("mode"), modeName(state.mode));
    };
    const std::string autoOffMouse = "[General]\nautoEnabled=false\nmode=mouse\n";
    check(std::nullopt, false, false, {true, false, T});
    check(std::nullopt, true, false, {true, true, M});
    check(std::nullopt, false, true, {true, false, T});
    check(autoOffMouse, true, false, {false, true, M});
    check(autoOffMouse, false, true, {false, false, M});
    check("[General]\nautoEnabled=false\nmode=Mouse\n", false, false, {false, false, T});
    for (const std::string& junk :
         {std::string("\x00\xff\xfe[General\n=\n\x01", 12), std::string(),
          std::string("autoEnabled=yes\nmode=Mouse\n"),
          std::string("[General]\nautoEnabled=1\nmode=99999999999999999999999\n"),
          std::string("[General]\nautoEnabled=@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x1)\nmode=a, b\n"),
          // A list that claims four thousand million entries must not be made.
          std::string("[General]\nmode=@Variant(\\0\\0\\0\\t\\xff\\xff\\xff\\xf0)\n")}) {
        check(junk, false, false, {true, false, T});
    }
    reset();
    QDir().mkpath(path); // a folder where the file should be: no user can read or write it
    launch(true);
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, T}));
    EXPECT_EQ(recorder().matching("log: Tolvane: settings"),
              (Lines{"log: Tolvane: settings not read: " + path.toStdString(),
                     "log: Tolvane: settings not saved: " + path.toStdString()}));
}

// A report while the menu is open leaves the open menu alone; the next opening shows it.
TEST_F(AppDelegateTest, AMouseArrivalIsLoggedThenAppliedStoredAndShownInANewMenu) {
    launch(true);
    recorder().clear();
    QMenu* open = openMenu();
    fakes().pointers.plug({"usb-7", {1, 2, 0, "Wireless Mouse"}});
    const std::string connected = "log: Tolvane: mouse connected: Wireless Mouse (1 present)";
    EXPECT_EQ(recorder().matching("log: "), Lines{connected});
    settle();
    EXPECT_EQ(recorder().matching("log: "),
              (Lines{connected,
                     "log: Tolvane: applyInversion mode=mouse baseline=false inverting=false"}));
    EXPECT_EQ(delegate->currentState(), (AppState{true, true, M}));
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_TRUE(open->isVisible());
    EXPECT_NE(delegate->menu(), open);
    open->hide();
}

// With no tray host the menu comes as a window once the wait is over, and again when a later
// host goes away. (What a choice in it does is seen on a real desktop without a tray.)
TEST_F(AppDelegateTest, WithoutATrayHostTheMenuComesAsAWindowAfterTheWait) {
    trayHost = false;
    timing.trayWait = std::chrono::milliseconds(200);
    QElapsedTimer sinceLaunch;
    sinceLaunch.start();
    launch(true);
    EXPECT_TRUE(!delegate->menuWindow() || sinceLaunch.elapsed() >= 200) << "the wait is not over";
    settle(200);
    QMenu* window = delegate->menuWindow();
    ASSERT_TRUE(window && window->isVisible());
    auto* line = qobject_cast<QWidgetAction*>(window->actions().value(0));
    auto* label = line ? qobject_cast<QLabel*>(line->defaultWidget()) : nullptr;
    ASSERT_TRUE(label && label->text().contains("no tray icons"));
    window->close();
    trayHost = true;
    delegate->checkTrayHost();
    settle();
    EXPECT_FALSE(delegate->menuWindow());
    trayHost = false;
    delegate->checkTrayHost();
    settle();
    EXPECT_TRUE(delegate->menuWindow());
}

// A trusted process whose tap fails asks for access as well. (An untrusted one's alert and
// both its answers are seen in the package tier's sessions of the installed program.)
TEST_F(AppDelegateTest, AFailedTapAsksForAccessShowsTheAlertThenPolls) {
    fakes().scrollTap.available = false;
    const auto seen = answerAlert("Open Help");
    launch();
    EXPECT_TRUE(seen->starts_with("Grant Input Access\n")) << *seen;
    EXPECT_TRUE(seen->ends_with("\n[Open Help]\n[Later]")) << *seen;
    std::erase_if(recorder().calls, [](const std::string& c) { return c.starts_with("log"); });
    EXPECT_EQ(recorder().calls,
              (Lines{"scrollTap.create -> false", "access.requestAccess", "access.openHelp"}));
    EXPECT_TRUE(delegate->isPolling());
}

// The poll waits while a modal alert or a menu is open, retries quietly, and stops for good
// once the tap starts.
TEST_F(AppDelegateTest, PollingRetriesQuietlyOutsideModalsUntilTheTapStarts) {
    fakes().scrollTap.available = false;
    answerAlert("Later");
    launch();
    recorder().clear();
    QMessageBox other;
    std::vector<std::string> whileOpen{"not closed"};
    QTimer::singleShot(200, &other, [&] {
        whileOpen = recorder().matching("scrollTap.");
        other.accept();
    });
    other.exec();
    EXPECT_TRUE(whileOpen.empty());
    QMenu* menu = openMenu();
    recorder().clear();
    settle(150);
    EXPECT_TRUE(recorder().matching("scrollTap.").empty()) << "a try under an open menu";
    menu->hide();
    settle(200);
    EXPECT_GE(recorder().matching("scrollTap.create -> false").size(), 2u);
    EXPECT_TRUE(recorder().matching("log: ").empty());

    fakes().scrollTap.available = true;
    const QMenu* before = delegate->menu();
    settle(150);
    EXPECT_FALSE(delegate->isPolling());
    EXPECT_EQ(recorder().matching("scrollTap.create -> true").size(), 1u);
    EXPECT_EQ(recorder().matching("log: Tolvane: applyInversion").size(), 1u);
    EXPECT_NE(delegate->menu(), before);
    recorder().clear();
    settle(150);
    EXPECT_TRUE(recorder().matching("scrollTap.").empty());
}

} // namespace
} // namespace tolvane::testing
