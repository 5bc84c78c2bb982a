#include "Tolvane/lock/CleaningOverlay.h"
#include "Tolvane/menu/CleanKeyboardRow.h"
#include "support/AppHarness.h"
#include "support/TextTable.h"

#include <QAccessible>
#include <QMenu>
#include <QMetaEnum>
#include <QPointer>
#include <QTest>
#include <QWidgetAction>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

// What a screen reader gets for an element and its children, one line each, a ">" for each
// level down: role, "name", (description), = value, and "off" when disabled.
void describe(QAccessibleInterface* element, Lines& lines, int depth = 0) {
    const QString description = element->text(QAccessible::Description);
    const QString value = element->text(QAccessible::Value);
    QString line = QString(">").repeated(depth) + (depth ? " " : "") +
                   QMetaEnum::fromType<QAccessible::Role>().valueToKey(element->role()) + " \"" +
                   element->text(QAccessible::Name) + "\"" +
                   (description.isEmpty() ? "" : " (" + description + ")") +
                   (value.isEmpty() ? "" : " = " + value) +
                   (element->state().disabled ? " off" : "");
    lines.push_back(line.toStdString());
    for (int i = 0; i < element->childCount(); ++i) {
        describe(element->child(i), lines, depth + 1);
    }
}

Lines describe(QObject* object) {
    Lines lines;
    describe(QAccessible::queryAccessibleInterface(object), lines);
    return lines;
}

// The name of each item that the Down key lands on in turn, once around the menu.
Lines downwards(QMenu* menu) {
    Lines names;
    QAccessibleInterface* items = QAccessible::queryAccessibleInterface(menu);
    do {
        QTest::keyClick(menu->windowHandle(), Qt::Key_Down);
        const int at = int(menu->actions().indexOf(menu->activeAction()));
        names.push_back(at < 0 ? "none" : items->child(at)->text(QAccessible::Name).toStdString());
    } while (names.size() < 12 && (names.size() < 2 || names.back() != names.front()));
    return names;
}

class MenuAccess : public AppHarness {};

// Every row is read with its role, name, state and value, the gauges among the card's children;
// the overlay's texts are read before its button.
TEST_F(MenuAccess, ScreenReadersReadEveryRowTheGaugesAndTheOverlay) {
    fakes().access.trusted = false;
    launch(true);
    EXPECT_EQ(describe(openMenu()), readLines("menu-accessible-no-access.txt"));

    CleaningOverlay overlay({}, QImage());
    EXPECT_EQ(describe(&overlay), readLines("overlay-accessible.txt"));
}

// The clean row's card is lit where the arrows land on it; without access it is passed over.
TEST_F(MenuAccess, ArrowsLandOnItemsThatActAndEnterOnTheCleanRowStartsCleaning) {
    fakes().access.trusted = false;
    launch(true);
    // Once around: the first item, the ones every menu has, the first again.
    const auto around = [](const std::string& first) {
        Lines items{first, "Switch to Mouse scrolling", "Auto-switch when mouse connects"};
        items.insert(items.end(), {"Launch at login", "Quit Tolvane", first});
        return items;
    };
    EXPECT_EQ(downwards(openMenu()), around("\u26A0\uFE0E Needs input access"));

    reset();
    launch(true);
    QPointer<QMenu> menu = openMenu();
    const Lines expected = around("Clean Keyboard");
    EXPECT_EQ(downwards(menu), expected);
    auto* clean = static_cast<CleanKeyboardRow*>(
        static_cast<QWidgetAction*>(menu->activeAction())->defaultWidget());
    const QImage lit = clean->grab().toImage();
    QTest::keyClick(menu->windowHandle(), Qt::Key_Down);
    EXPECT_NE(clean->grab().toImage(), lit) << "the highlight leaves the card as it moves on";
    QTest::keyClick(menu->windowHandle(), Qt::Key_Up);
    EXPECT_EQ(clean->grab().toImage(), lit);
    recorder().clear();
    QTest::keyClick(menu->windowHandle(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !recorder().calls.empty(); }, 2000));
    EXPECT_TRUE(!menu || !menu->isVisible());
    EXPECT_EQ(recorder().calls.empty() ? "" : recorder().calls.front(), "keyboard.grab -> true");

    // The no-tray window's explanation is read first, and passed over by the arrows.
    delegate->lockForTesting().unlock();
    trayHost = false;
    delegate->tray().checkTrayHost();
    settle();
    QMenu* window = delegate->tray().menuWindow();
    ASSERT_TRUE(window);
    EXPECT_EQ(downwards(window), expected);
    EXPECT_TRUE(describe(window).at(1).starts_with(
        "> StaticText \"This desktop shows no tray icons. Start Tolvane again"));
}

} // namespace
} // namespace tolvane::testing
