#include "Tolvane/gauges/StatsView.h"
#include "Tolvane/menu/CleanKeyboardRow.h"
#include "Tolvane/menu/HeaderView.h"
#include "Tolvane/menu/SectionCaption.h"
#include "support/AppHarness.h"
#include "support/TextTable.h"

#include <QMenu>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTest>
#include <QTimer>
#include <QWidgetAction>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

// One line for each item: rows by kind, plain items with their check mark, image and keys.
Lines describe(QMenu* menu) {
    Lines lines;
    for (QAction* action : menu->actions()) {
        auto* hosted = qobject_cast<QWidgetAction*>(action);
        QWidget* row = hosted ? hosted->defaultWidget() : nullptr;
        std::string line = action->isSeparator()                  ? "---"
                           : dynamic_cast<HeaderView*>(row)       ? "[header]"
                           : dynamic_cast<StatsView*>(row)        ? "[stats]"
                           : dynamic_cast<CleanKeyboardRow*>(row) ? "[clean]"
                           : dynamic_cast<SectionCaption*>(row)   ? "[caption]"
                                                                  : action->text().toStdString();
        line += !action->isCheckable() ? "" : action->isChecked() ? " [x]" : " [ ]";
        line += action->icon().isNull() ? "" : " +icon";
        line += action->isEnabled() ? "" : " (off)";
        if (!action->shortcut().isEmpty()) {
            line += " <" + action->shortcut().toString().toStdString() + ">";
            EXPECT_TRUE(action->isShortcutVisibleInContextMenu()) << line;
        }
        lines.push_back(line);
    }
    return lines;
}

// A left click on the row of item `index`, on the card of a clean row.
void clickRow(QMenu* menu, int index) {
    QWidget* row = qobject_cast<QWidgetAction*>(menu->actions()[index])->defaultWidget();
    auto* clean = dynamic_cast<CleanKeyboardRow*>(row);
    const QPoint at = clean ? clean->buttonRect().center().toPoint() : row->rect().center();
    QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, {}, row->mapTo(menu, at));
}

class TrayHostTest : public AppHarness {};

// Without input access a warning item opens the help, or says where it is when no program
// opens it, and the clean row is off.
TEST_F(TrayHostTest, ItemsTextsOrderAndShortcutsFollowTheStateAndAccessInBothForms) {
    launch(true);
    EXPECT_EQ(describe(delegate->menu()), readLines("menus.txt", 0, 3));

    reset();
    writeSettings("[General]\nautoEnabled=false\nmode=mouse\n");
    fakes().login.enabled = true;
    fakes().pointers.present.push_back({"usb-1", {1, 2, 0, "USB Mouse"}});
    launch(true);
    EXPECT_EQ(describe(delegate->menu()), readLines("menus.txt", 1, 3));
    EXPECT_EQ(describe(delegate->tray().hostDrawnMenu()), readLines("menus.txt", 2, 3));

    reset();
    fakes().access.trusted = false;
    launch(true);
    EXPECT_EQ(describe(delegate->tray().hostDrawnMenu()), readLines("host-menu-no-access.txt"));
    QAction* warning = delegate->menu()->actions()[1];
    ASSERT_EQ(describe(delegate->menu())[1], "\u26A0\uFE0E Needs input access");
    recorder().clear();
    warning->trigger();
    EXPECT_EQ(recorder().calls, (Lines{"access.openHelp"}));
    fakes().access.helpOpens = false;
    const auto told = answerAlert();
    warning->trigger();
    EXPECT_NE(told->find("\n/usr/share/tolvane/help/input-access.html\n"), std::string::npos);
}

// The panel window that "Open Tolvane" brings is never doubled and closes as a menu does, on a
// click on the clean row alone. The sampler's repeating timer is fired by hand, with no waiting.
TEST_F(TrayHostTest, TheTrayIconOpensTheMenuAndThePanelWindowSamplesAndClosesLikeOne) {
    launch(true);
    SystemStats& stats = delegate->statsForTesting();
    const auto tick = [&stats] {
        auto* timer = stats.findChild<QTimer*>();
        if (timer && timer->isActive()) {
            QMetaObject::invokeMethod(timer, "timeout");
        }
    };
    const int before = fakes().host.samples;
    emit delegate->tray().icon()->activated(QSystemTrayIcon::MiddleClick);
    EXPECT_FALSE(delegate->menu()->isVisible());
    EXPECT_FALSE(stats.isSampling());
    emit delegate->tray().icon()->activated(QSystemTrayIcon::Trigger);
    EXPECT_TRUE(delegate->menu()->isVisible());
    EXPECT_EQ(fakes().host.samples, before + 1);
    delegate->menu()->popup(QPoint(60, 60)); // a second opening without a close changes nothing
    tick();
    EXPECT_EQ(fakes().host.samples, before + 2);

    itemNamed(delegate->tray().hostDrawnMenu(), "Open Tolvane")->trigger();
    QPointer<QMenu> window = delegate->tray().menuWindow();
    ASSERT_TRUE(window && QTest::qWaitForWindowActive(window));
    delegate->menu()->hide();
    settle();
    tick();
    EXPECT_EQ(fakes().host.samples, before + 3) << "the panel window still shows";
    QTest::keyClick(window->windowHandle(), Qt::Key_Escape);
    settle();
    EXPECT_FALSE(delegate->tray().menuWindow());
    tick();
    EXPECT_FALSE(stats.isSampling());
    EXPECT_EQ(fakes().host.samples, before + 3);

    delegate->tray().openMenu(); // as a second start asks
    window = delegate->tray().menuWindow();
    ASSERT_TRUE(window && QTest::qWaitForWindowActive(window));
    delegate->tray().openMenu();
    EXPECT_EQ(delegate->tray().menuWindow(), window);
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_TRUE(!window || !window->isVisible());

    delegate->tray().openMenu();
    window = delegate->tray().menuWindow();
    ASSERT_TRUE(window && QTest::qWaitForWindowActive(window));
    for (int index : {0, 1, 4}) {
        clickRow(window, index);
        EXPECT_TRUE(window->isVisible()) << index;
    }
    recorder().clear();
    clickRow(window, 2);
    EXPECT_TRUE(!window || !window->isVisible());
    EXPECT_TRUE(recorder().matching("keyboard.").empty()) << "the lock waits for the delay";
    EXPECT_TRUE(QTest::qWaitFor([this] { return !recorder().matching("keyboard.").empty(); }));
    EXPECT_EQ(recorder().matching("keyboard."), (Lines{"keyboard.grab -> true"}));
}

// Minimised, the window stays and a second start brings it back. (That it comes after a start
// on a desktop without a tray, and works there, the desktops tier sees.)
TEST_F(TrayHostTest, TheMenuComesAsAWindowWhenTheTrayHostGoes) {
    launch(true);
    for (bool host : {true, false, true, false}) {
        trayHost = host;
        delegate->tray().checkTrayHost();
        settle();
        EXPECT_EQ(delegate->tray().menuWindow() && delegate->tray().menuWindow()->isVisible(),
                  !host)
            << host;
        if (QPointer<QMenu> window = delegate->tray().menuWindow()) {
            window->setWindowState(Qt::WindowMinimized);
            settle();
            ASSERT_TRUE(window) << "gone when minimised";
            delegate->tray().openMenu();
            EXPECT_EQ(delegate->tray().menuWindow(), window);
            EXPECT_FALSE(window->windowState() & Qt::WindowMinimized);
            window->close();
        }
    }
}

} // namespace
} // namespace tolvane::testing
