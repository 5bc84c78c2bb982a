#include "Tolvane/MenuViews.h"
#include "support/AppHarness.h"
#include "support/ViewPixels.h"

#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTest>
#include <QTimer>
#include <QWidgetAction>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

template <typename Row> Row* rowOf(QAction* action) {
    auto* hosted = qobject_cast<QWidgetAction*>(action);
    return hosted ? dynamic_cast<Row*>(hosted->defaultWidget()) : nullptr;
}

// One line for each item: rows by kind, plain items with their check mark, image and keys.
std::vector<std::string> describe(QMenu* menu) {
    std::vector<std::string> lines;
    for (QAction* action : menu->actions()) {
        std::string line = action->isSeparator()             ? "---"
                           : rowOf<HeaderView>(action)       ? "[header]"
                           : rowOf<StatsView>(action)        ? "[stats]"
                           : rowOf<CleanKeyboardRow>(action) ? "[clean]"
                           : rowOf<SectionCaption>(action)   ? "[caption]"
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

QAction* itemNamed(QMenu* menu, const char* text) {
    for (QAction* action : menu->actions()) {
        if (action->text() == QString::fromUtf8(text)) {
            return action;
        }
    }
    return nullptr;
}

// A row as the open menu hosts it, and a row made alone, at the width the menu gave the
// first.
QWidget* hostedRow(QAction* action) {
    return qobject_cast<QWidgetAction*>(action)->defaultWidget();
}
void expectSameRow(QMenu* menu, int index, QWidget&& alone) {
    QAction* action = menu->actions()[index];
    const QSize size = menu->actionGeometry(action).size();
    EXPECT_EQ(renderOnPanel(*hostedRow(action), lightPanel(), 1, size),
              renderOnPanel(alone, lightPanel(), 1, size))
        << index;
}

class StatusMenu : public AppHarness {
protected:
    QMenu* launchedMenu() {
        launch();
        settle();
        return delegate->menu();
    }
    QMenu* openMenu() {
        QMenu* menu = delegate->menu();
        menu->popup(QPoint(40, 40));
        settle();
        return menu;
    }
};

// The menu of a new start, as describe() gives it.
const std::vector<std::string> firstMenu{"[header]",
                                         "[stats]",
                                         "[clean]",
                                         "---",
                                         "[caption]",
                                         "Switch to Mouse scrolling +icon <Ctrl+T>",
                                         "Auto-switch when mouse connects [x]",
                                         "---",
                                         "Launch at login [ ]",
                                         "Quit Tolvane <Ctrl+Q>"};

TEST_F(StatusMenu, ItemsTextsOrderAndShortcutsFollowTheState) {
    EXPECT_EQ(describe(launchedMenu()), firstMenu);

    reset();
    writeSettings("[General]\nautoEnabled=false\nmode=mouse\n");
    fakes().login.enabled = true;
    fakes().pointers.present.push_back({"usb-1", {1, 2, 0, "USB Mouse"}});
    QMenu* menu = launchedMenu();
    std::vector<std::string> expected = firstMenu;
    expected[5] = "Switch to Natural scrolling +icon <Ctrl+T>";
    expected[6] = "Auto-switch when mouse connects [ ]";
    expected[8] = "Launch at login [x]";
    EXPECT_EQ(describe(menu), expected);
    EXPECT_EQ(describe(delegate->hostDrawnMenu()),
              (std::vector<std::string>{"Open Tolvane", "Scrolling reversed \u00B7 Mouse (off)",
                                        "Clean Keyboard", "---", "Scrolling (off)",
                                        "Switch to Natural scrolling +icon <Ctrl+T>",
                                        "Auto-switch when mouse connects [ ]", "---",
                                        "Launch at login [x]", "Quit Tolvane <Ctrl+Q>"}));
    expectSameRow(menu, 0, HeaderView(true, true));
    expectSameRow(menu, 2, CleanKeyboardRow(true, {}));
    expectSameRow(menu, 4, SectionCaption(QStringLiteral("Scrolling")));
}

TEST_F(StatusMenu, WithoutInputAccessAWarningOpensHelpAndTheCleanRowIsOff) {
    fakes().access.trusted = false;
    QMenu* menu = launchedMenu();
    std::vector<std::string> expected = firstMenu;
    expected.insert(expected.begin() + 1, "\u26A0\uFE0E Needs input access");
    EXPECT_EQ(describe(menu), expected);
    EXPECT_EQ(describe(delegate->hostDrawnMenu()),
              (std::vector<std::string>{"Open Tolvane", "Natural scrolling \u00B7 No mouse (off)",
                                        "\u26A0\uFE0E Needs input access (off)",
                                        "Clean Keyboard (off)", "---", "Scrolling (off)",
                                        "Switch to Mouse scrolling +icon <Ctrl+T>",
                                        "Auto-switch when mouse connects [x]", "---",
                                        "Launch at login [ ]", "Quit Tolvane <Ctrl+Q>"}));
    openMenu();
    expectSameRow(menu, 3, CleanKeyboardRow(false, {}));
    recorder().clear();
    menu->actions()[1]->trigger();
    EXPECT_EQ(recorder().calls, (std::vector<std::string>{"access.openHelp"}));
    // Where no program opens the page, a message says where it is.
    fakes().access.helpOpens = false;
    QString told;
    QObject scope; // takes the answer away with the test, had no message come
    QTimer::singleShot(0, &scope, [&told] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        told = box->informativeText();
        box->accept();
    });
    menu->actions()[1]->trigger();
    EXPECT_TRUE(told.contains(QLatin1String("/usr/share/tolvane/help/input-access.html")));
}

TEST_F(StatusMenu, ItemsAndTheirShortcutsActAndTheNextMenuShowsTheResult) {
    launchedMenu();
    QMenu* open = openMenu();
    QTest::keyClick(open->windowHandle(), Qt::Key_T, Qt::ControlModifier);
    settle();
    EXPECT_EQ(delegate->currentState().mode, ScrollMode::mouse);
    EXPECT_EQ(storedText("mode"), "mouse");
    EXPECT_FALSE(delegate->statsForTesting().isSampling()) << "the menu closed as on a click";
    EXPECT_TRUE(itemNamed(delegate->menu(), "Switch to Natural scrolling"));
    EXPECT_TRUE(itemNamed(delegate->hostDrawnMenu(), "Switch to Natural scrolling"));

    itemNamed(delegate->menu(), "Auto-switch when mouse connects")->trigger();
    settle();
    EXPECT_FALSE(delegate->currentState().autoEnabled);
    EXPECT_EQ(storedText("autoEnabled"), "false");
    EXPECT_FALSE(itemNamed(delegate->menu(), "Auto-switch when mouse connects")->isChecked());

    itemNamed(delegate->menu(), "Launch at login")->trigger();
    EXPECT_TRUE(itemNamed(delegate->menu(), "Launch at login")->isChecked());
    fakes().login.failWith = "read-only folder";
    itemNamed(delegate->menu(), "Launch at login")->trigger();
    EXPECT_TRUE(itemNamed(delegate->menu(), "Launch at login")->isChecked());

    open = openMenu();
    QSignalSpy quitChosen(itemNamed(open, "Quit Tolvane"), &QAction::triggered);
    QTest::keyClick(open->windowHandle(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(quitChosen.count(), 1);
    EXPECT_FALSE(open->isVisible());
}

TEST_F(StatusMenu, TheSamplerRunsOnlyWhileTheMenuIsOpen) {
    launchedMenu();
    SystemStats& stats = delegate->statsForTesting();
    const int before = fakes().host.samples;
    settle(1700);
    EXPECT_FALSE(stats.isSampling());
    EXPECT_EQ(fakes().host.samples, before);

    QMenu* menu = openMenu();
    EXPECT_TRUE(stats.isSampling());
    EXPECT_EQ(fakes().host.samples, before + 1);
    menu->popup(QPoint(60, 60)); // a second opening without a close changes nothing
    EXPECT_EQ(fakes().host.samples, before + 1);
    settle(1600);
    EXPECT_EQ(fakes().host.samples, before + 2);

    itemNamed(delegate->hostDrawnMenu(), "Open Tolvane")->trigger();
    settle();
    ASSERT_TRUE(delegate->menuWindow() && delegate->menuWindow()->isVisible());
    menu->hide();
    settle();
    EXPECT_TRUE(stats.isSampling()) << "the panel window still shows";
    QTest::keyClick(delegate->menuWindow()->windowHandle(), Qt::Key_Escape);
    settle();
    EXPECT_FALSE(delegate->menuWindow());
    EXPECT_FALSE(stats.isSampling());
    settle(1700);
    EXPECT_EQ(fakes().host.samples, before + 2);
}

TEST_F(StatusMenu, AClickOnTheCleanRowClosesTheMenuThenLocksTheKeyboard) {
    launchedMenu();
    QMenu* menu = openMenu();
    auto* row = rowOf<CleanKeyboardRow>(menu->actions()[2]);
    ASSERT_NE(row, nullptr);
    recorder().clear();
    const QPoint onCard = row->mapTo(menu, row->buttonRect().center().toPoint());
    QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, {}, onCard);
    EXPECT_FALSE(menu->isVisible());
    EXPECT_TRUE(recorder().matching("keyboard.").empty()) << "the lock waits for the delay";
    settle(100);
    EXPECT_EQ(recorder().matching("keyboard."),
              (std::vector<std::string>{"keyboard.grab -> true"}));
    EXPECT_TRUE(delegate->lockForTesting().locked());
}

TEST_F(StatusMenu, ClicksOnTheOtherRowsOrADisabledCleanRowLeaveTheMenuOpen) {
    fakes().access.trusted = false;
    fakes().scrollTap.available = true;
    launchedMenu();
    QMenu* menu = openMenu();
    for (int index : {0, 2, 3, 5}) {
        QWidget* row = hostedRow(menu->actions()[index]);
        QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, {},
                          row->mapTo(menu, row->rect().center()));
        EXPECT_TRUE(menu->isVisible()) << index;
    }
    settle(100);
    EXPECT_TRUE(recorder().matching("keyboard.").empty());
}

TEST_F(StatusMenu, TheTrayIconHasTwoFormsThatFollowTheMode) {
    launchedMenu();
    const auto icon = [this] { return delegate->trayIcon()->icon().pixmap(22, 22).toImage(); };
    const QImage natural = icon();
    EXPECT_EQ(delegate->trayIcon()->toolTip(), QStringLiteral("Tolvane: natural scrolling"));
    delegate->manualToggle();
    EXPECT_NE(icon(), natural);
    delegate->manualToggle();
    EXPECT_EQ(icon(), natural);
}

} // namespace
} // namespace tolvane::testing
