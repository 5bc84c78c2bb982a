#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QAbstractButton>
#include <QApplication>
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

TEST_F(AppDelegateTest, ALaunchLogsItsStartAndStoresNothingBeforeTheFirstReport) {
    launch();
    const std::string applied =
        "log: Tolvane: applyInversion mode=trackpad baseline=false inverting=true";
    EXPECT_EQ(recorder().matching("log: "),
              (Lines{"log: Tolvane: === launch === trusted=true baselineNatural=false",
                     "log: Tolvane: loaded state: auto=true mode=trackpad", applied}));
    EXPECT_FALSE(delegate->isPolling());
    ASSERT_TRUE(delegate->trayIcon() && delegate->menu());
    EXPECT_FALSE(delegate->trayIcon()->icon().isNull());
    EXPECT_FALSE(QFile::exists(path));
    recorder().clear();
    settle();
    EXPECT_EQ(recorder().matching("log: "), Lines{applied});
    EXPECT_EQ(storedText("autoEnabled"), "true");
    EXPECT_EQ(storedText("mode"), "trackpad");
}

// Corrupt settings never stop the start and are rewritten valid; a natural desktop turns the
// inversion around.
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
}

// A choice lost without a word: the defaults still come, and the log says why.
TEST_F(AppDelegateTest, AnUnreadableSettingsFileGivesTheDefaultsAndSaysSoAsDoesEachLostSave) {
    QDir().mkpath(path); // a folder where the file should be: no user can read or write it
    launch(true);
    const std::string file = path.toStdString();
    EXPECT_EQ(recorder().matching("log: Tolvane: settings"),
              (Lines{"log: Tolvane: settings not read: " + file,
                     "log: Tolvane: settings not saved: " + file}));
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, T}));
}

TEST_F(AppDelegateTest, AMouseArrivalIsLoggedThenAppliedStoredAndShownInANewMenu) {
    launch(true);
    recorder().clear();
    QMenu* before = delegate->menu();
    fakes().pointers.plug({"usb-7", {1, 2, 0, "Wireless Mouse"}});
    const std::string connected = "log: Tolvane: mouse connected: Wireless Mouse (1 present)";
    EXPECT_EQ(recorder().matching("log: "), Lines{connected});
    settle();
    EXPECT_EQ(recorder().matching("log: "),
              (Lines{connected,
                     "log: Tolvane: applyInversion mode=mouse baseline=false inverting=false"}));
    EXPECT_EQ(delegate->currentState(), (AppState{true, true, M}));
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_NE(delegate->menu(), before);
}

TEST_F(AppDelegateTest, ChangesWithoutAStateChangeRenderTheMenuButNeverWriteTheSettings) {
    launch(true);
    recorder().clear();
    writeSettings("[General]\nautoEnabled=false\nmode=mouse\n");
    const QMenu* before = delegate->menu();
    delegate->lockForTesting().lock();
    delegate->lockForTesting().unlock();
    delegate->toggleLogin();
    settle();
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_EQ(storedText("autoEnabled"), "false");
    EXPECT_TRUE(recorder().matching("log: Tolvane: applyInversion").empty());
    EXPECT_NE(delegate->menu(), before);
}

TEST_F(AppDelegateTest, ReportsWhileTheMenuIsOpenLeaveTheOpenMenuAlone) {
    launch(true);
    QMenu* open = openMenu();
    fakes().pointers.plug({"usb-1", {1, 2, 0, "Mouse"}});
    settle();
    EXPECT_TRUE(open->isVisible());
    EXPECT_NE(delegate->menu(), open);
    open->hide();
}

// With no tray host the menu comes as a window once the wait is over, and again when a later
// host goes away; a second start opens it too. A choice closes the window, which comes back
// showing the choice's result.
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
    EXPECT_EQ(window->windowTitle(), "Tolvane");
    auto* line = qobject_cast<QWidgetAction*>(window->actions().value(0));
    auto* label = line ? qobject_cast<QLabel*>(line->defaultWidget()) : nullptr;
    ASSERT_TRUE(label && label->text().contains("no tray icons"));
    itemNamed(window, "Switch to Mouse scrolling")->trigger();
    settle();
    window = delegate->menuWindow();
    ASSERT_TRUE(window && window->isVisible()) << "a choice brings the window back";
    EXPECT_TRUE(itemNamed(window, "Switch to Natural scrolling"));
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

// Answers the next modal alert with the button `answer`; gives what it showed: the text, the
// explanation and the buttons, one a line.
std::shared_ptr<std::string> answerAlert(const QString& answer) {
    auto seen = std::make_shared<std::string>();
    QTimer::singleShot(0, [answer, seen] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        *seen = (box->text() + "\n" + box->informativeText()).toStdString();
        QAbstractButton* chosen = nullptr;
        for (QAbstractButton* button : box->buttons()) {
            *seen += "\n[" + button->text().toStdString() + "]";
            chosen = button->text() == answer ? button : chosen;
        }
        ASSERT_NE(chosen, nullptr) << "no button " << answer.toStdString();
        chosen->click();
    });
    return seen;
}

class PermissionFlow : public AppHarness {};

// A trusted process whose tap fails asks as well; with a working tap nothing is asked.
TEST_F(PermissionFlow, AFailedTapAsksForAccessShowsTheAlertThenPolls) {
    for (auto [answer, trusted] : {std::pair{"Later", false}, {"Open Help", true}}) {
        SCOPED_TRACE(answer);
        reset();
        fakes().scrollTap.available = false;
        fakes().access.trusted = trusted;
        const auto seen = answerAlert(answer);
        launch();
        EXPECT_TRUE(seen->starts_with("Grant Input Access\n")) << *seen;
        EXPECT_TRUE(seen->ends_with("\n[Open Help]\n[Later]")) << *seen;
        std::vector<std::string> expected{"scrollTap.create -> false", "access.requestAccess"};
        if (std::string(answer) == "Open Help") {
            expected.push_back("access.openHelp");
        }
        std::erase_if(recorder().calls, [](const std::string& c) { return c.starts_with("log"); });
        EXPECT_EQ(recorder().calls, expected);
        EXPECT_TRUE(delegate->isPolling());
    }
    reset();
    launch();
    EXPECT_TRUE(recorder().matching("access.").empty());
    EXPECT_FALSE(delegate->isPolling());
}

// The poll waits while a modal alert or a menu is open, retries quietly, and stops for good
// once the tap starts.
TEST_F(PermissionFlow, PollingRetriesQuietlyOutsideModalsUntilTheTapStarts) {
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
