#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"
#include "support/OverlayProbe.h"

#include <QMenu>
#include <QPointer>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

class LockOnChange : public AppHarness {};

// The delegate learns of each change of the lock through onChange and installs a new menu.
TEST_F(LockOnChange, EachRealChangeOfTheLockRendersANewMenu) {
    launch();
    settle();
    const QPointer<QMenu> beforeLock = delegate->menu();
    ASSERT_TRUE(delegate->lockForTesting().lock());
    const QPointer<QMenu> whileLocked = delegate->menu();
    EXPECT_NE(whileLocked, beforeLock);
    EXPECT_EQ(visibleOverlayWindows().size(), 1);

    ASSERT_TRUE(delegate->lockForTesting().lock());
    EXPECT_EQ(delegate->menu(), whileLocked) << "a repeated lock changes nothing";

    delegate->lockForTesting().unlock();
    EXPECT_NE(delegate->menu(), whileLocked);
    settle();
    EXPECT_TRUE(beforeLock.isNull());
    EXPECT_TRUE(whileLocked.isNull());
    EXPECT_TRUE(overlayWindows().isEmpty());
}

TEST_F(LockOnChange, ARefusedLockRendersNothing) {
    fakes().keyboard.grantable = false;
    launch();
    settle();
    const QPointer<QMenu> menu = delegate->menu();
    EXPECT_FALSE(delegate->lockForTesting().lock());
    settle();
    EXPECT_EQ(delegate->menu(), menu);
    EXPECT_FALSE(menu.isNull());
}

} // namespace
} // namespace tolvane::testing
