#include "Tolvane/app/AppDelegate.h"
#include "support/AppHarness.h"
#include "support/TextTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

#include <sys/stat.h>

namespace tolvane::testing {
namespace {

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

// An unreadable file gives the defaults and the log says why; a natural desktop turns the
// inversion around.
TEST_F(AppDelegateTest, StoredSettingsMiceAndTheDesktopsDirectionAtStartGiveTheState) {
    for (const TableRow& row : readTable("startup-settings.txt", 4)) {
        SCOPED_TRACE(row.where);
        reset();
        if (row[0] != "-") {
            writeSettings(QByteArray::fromStdString(row[0]));
        }
        if (row[1] == "yes") {
            fakes().pointers.present.push_back({"usb-1", {1, 2, 0, "USB Mouse"}});
        }
        fakes().scrollSetting.natural = row[2] == "yes";
        launch(true);
        const AppState state{row[3][0] == 'T', row[3][1] == 'T', row[3][2] == 'm' ? M : T};
        EXPECT_EQ(delegate->currentState(), state);
        EXPECT_EQ(delegate->isInverting(), (state.mode == T) != (row[2] == "yes"));
        EXPECT_EQ(fakes().scrollTap.inverting, delegate->isInverting());
        EXPECT_EQ(storedText("autoEnabled"), state.autoEnabled ? "true" : "false");
        EXPECT_EQ(storedText("mode"), modeName(state.mode));
    }
    // What is at the file's place and cannot be read whole as a regular file is left as it is,
    // never waited on, and the log says why.
    const QByteArray longer = "[General]\nmode=mouse\n" + QByteArray(1024 * 1024, '#');
    const struct {
        const char* what;
        std::function<void(const QString&)> make;
        std::string why;
    } unreadable[] = {
        {"a folder", [](const QString& at) { QDir().mkpath(at); }, "not a regular file"},
        {"a FIFO", [](const QString& at) { mkfifo(at.toLocal8Bit().constData(), 0600); },
         "not a regular file"},
        {"a symlink to a FIFO",
         [](const QString& at) {
             mkfifo((at + ".fifo").toLocal8Bit().constData(), 0600);
             QFile::link(at + ".fifo", at);
         },
         "not a regular file"},
        {"past 1 MiB", [&](const QString&) { writeSettings(longer); }, "larger than 1024 KiB"},
    };
    for (const auto& c : unreadable) {
        SCOPED_TRACE(c.what);
        reset();
        c.make(path);
        launch(true);
        EXPECT_EQ(delegate->currentState(), (AppState{true, false, T}));
        EXPECT_EQ(
            recorder().matching("log: Tolvane: settings"),
            (Lines{"log: Tolvane: settings not read: " + path.toStdString() + ": " + c.why,
                   "log: Tolvane: settings not saved: " + path.toStdString() + ": " + c.why}));
        QFile left(path);
        EXPECT_TRUE(QFileInfo(path).isDir() || QFileInfo(path).size() == 0 ||
                    (left.open(QIODevice::ReadOnly) && left.readAll() == longer));
    }
}

// A report while the menu is open leaves the open menu alone; the next opening shows it.
TEST_F(AppDelegateTest, AMouseArrivalIsLoggedThenAppliedAndShownInANewMenu) {
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
    EXPECT_TRUE(open->isVisible());
    EXPECT_NE(delegate->menu(), open);
    open->hide();
}

// Even a trusted process asks for access when its tap fails. (An untrusted one's alert and both
// its answers are seen in the package tier's sessions of the installed program.)
TEST_F(AppDelegateTest, AFailedTapAsksForAccessThenPollsQuietlyOutsideModalsUntilItStarts) {
    fakes().scrollTap.available = false;
    const auto seen = answerAlert("Open Help");
    launch();
    EXPECT_TRUE(seen->starts_with("Grant Input Access\n")) << *seen;
    EXPECT_TRUE(seen->ends_with("\n[Open Help]\n[Later]")) << *seen;
    std::erase_if(recorder().calls, [](const std::string& c) { return c.starts_with("log"); });
    EXPECT_EQ(recorder().calls,
              (Lines{"scrollTap.create -> false", "access.requestAccess", "access.openHelp"}));
    EXPECT_TRUE(delegate->isPolling());

    // The poll's own timer says when it has fired twice under a modal alert or a menu.
    auto* poll = delegate->findChild<QTimer*>();
    ASSERT_NE(poll, nullptr);
    int ticks = 0;
    QObject::connect(poll, &QTimer::timeout, poll, [&ticks] { ++ticks; });
    const auto triesAfterTwoTicks = [&] {
        ticks = 0;
        EXPECT_TRUE(QTest::qWaitFor([&ticks] { return ticks >= 2; }));
        return recorder().matching("scrollTap.");
    };
    recorder().clear();
    QMessageBox other;
    std::vector<std::string> whileOpen{"not closed"};
    QTimer::singleShot(0, &other, [&] {
        whileOpen = triesAfterTwoTicks();
        other.accept();
    });
    other.exec();
    EXPECT_TRUE(whileOpen.empty());
    QMenu* menu = openMenu();
    recorder().clear();
    EXPECT_TRUE(triesAfterTwoTicks().empty()) << "a try under an open menu";
    menu->hide();
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return recorder().matching("scrollTap.create -> false").size() >= 2; }));
    EXPECT_TRUE(recorder().matching("log: ").empty());

    fakes().scrollTap.available = true;
    const QMenu* before = delegate->menu();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !delegate->isPolling(); }));
    settle();
    EXPECT_EQ(recorder().matching("scrollTap.create -> true").size(), 1u);
    EXPECT_EQ(recorder().matching("log: Tolvane: applyInversion").size(), 1u);
    EXPECT_NE(delegate->menu(), before);
}

// A shortcut closes the menu as a click does, then acts; each choice is stored at once.
TEST_F(AppDelegateTest, ItemsAndTheirShortcutsActAndTheNextMenuShowsTheResult) {
    launch(true);
    recorder().clear();
    QPointer<QMenu> open = openMenu();
    QTest::keyClick(open->windowHandle(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(!open || !open->isVisible());
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::mouse}));
    EXPECT_FALSE(delegate->isInverting());
    EXPECT_EQ(storedText("mode"), "mouse");
    settle();
    EXPECT_TRUE(itemNamed(delegate->menu(), "Switch to Natural scrolling"));
    EXPECT_TRUE(itemNamed(delegate->tray().hostDrawnMenu(), "Switch to Natural scrolling"));

    const QString autoSwitch = "Auto-switch when mouse connects", login = "Launch at login";
    itemNamed(delegate->menu(), autoSwitch)->trigger(); // auto off, mode kept
    EXPECT_EQ(delegate->currentState(), (AppState{false, false, ScrollMode::mouse}));
    EXPECT_EQ(storedText("autoEnabled"), "false");
    EXPECT_FALSE(itemNamed(delegate->menu(), autoSwitch)->isChecked());
    itemNamed(delegate->menu(), autoSwitch)->trigger(); // auto on, mode from the connection
    EXPECT_EQ(delegate->currentState(), (AppState{true, false, ScrollMode::trackpad}));
    EXPECT_TRUE(delegate->isInverting());
    EXPECT_EQ(storedText("mode"), "trackpad");

    itemNamed(delegate->menu(), login)->trigger();
    EXPECT_TRUE(itemNamed(delegate->menu(), login)->isChecked());
    itemNamed(delegate->menu(), login)->trigger();
    fakes().login.failWith = "Permission denied";
    itemNamed(delegate->menu(), login)->trigger();
    EXPECT_FALSE(itemNamed(delegate->menu(), login)->isChecked());
    std::erase_if(recorder().calls,
                  [](const std::string& c) { return c.starts_with("log: Tolvane: apply"); });
    EXPECT_EQ(recorder().calls,
              (Lines{"login.setEnabled true", "login.setEnabled false", "login.setEnabled true",
                     "log: Tolvane: login item change failed: Permission denied"}));
}

} // namespace
} // namespace tolvane::testing
