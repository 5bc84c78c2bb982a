#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>

namespace tolvane::testing {
namespace {

struct AlertSeen {
    std::string text;
    std::string informative;
    std::vector<std::string> buttons;
};

// Answers the next modal alert by clicking the button with `answer`, recording what it showed.
void answerAlert(const QString& answer, AlertSeen& seen) {
    QTimer::singleShot(0, [answer, &seen] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        seen.text = box->text().toStdString();
        seen.informative = box->informativeText().toStdString();
        for (QAbstractButton* button : box->buttons()) {
            seen.buttons.push_back(button->text().toStdString());
        }
        for (QAbstractButton* button : box->buttons()) {
            if (button->text() == answer) {
                button->click();
                return;
            }
        }
        FAIL() << "no button " << answer.toStdString();
    });
}

class PermissionFlow : public AppHarness {
protected:
    void SetUp() override {
        AppHarness::SetUp();
        fakes().access.trusted = false;
        fakes().scrollTap.available = false;
    }
};

TEST_F(PermissionFlow, FailedTapPromptsShowsTheAlertThenPolls) {
    AlertSeen seen;
    answerAlert("Later", seen);
    launch();
    EXPECT_EQ(seen.text, "Grant Input Access");
    EXPECT_EQ(seen.informative,
              "Tolvane needs access to input devices to change scroll direction instantly and to "
              "lock the keyboard for cleaning. Allow it when your system asks, or follow the steps "
              "in Help, then it will start working automatically.");
    EXPECT_EQ(seen.buttons, (std::vector<std::string>{"Open Help", "Later"}));
    const auto calls = recorder().calls;
    const auto at = [&calls](const std::string& call) {
        return std::find(calls.begin(), calls.end(), call) - calls.begin();
    };
    EXPECT_LT(at("scrollTap.create -> false"), at("access.requestAccess"));
    EXPECT_TRUE(recorder().matching("access.openHelp").empty());
    EXPECT_TRUE(delegate->isPolling());
}

TEST_F(PermissionFlow, OpenHelpOpensTheHelpPageAndStillPolls) {
    AlertSeen seen;
    answerAlert("Open Help", seen);
    launch();
    EXPECT_EQ(recorder().matching("access.openHelp").size(), 1u);
    EXPECT_TRUE(delegate->isPolling());
}

TEST_F(PermissionFlow, PollRetriesUntilTheTapStartsThenStopsForGood) {
    AlertSeen seen;
    answerAlert("Later", seen);
    launch();
    settle();
    recorder().clear();
    wait(200); // a few ticks without access
    const size_t failedTries = recorder().matching("scrollTap.create -> false").size();
    EXPECT_GE(failedTries, 2u);
    EXPECT_TRUE(recorder().matching("log: ").empty());

    fakes().scrollTap.available = true;
    fakes().access.trusted = true;
    const QMenu* before = delegate->menu();
    wait(150);
    EXPECT_FALSE(delegate->isPolling());
    EXPECT_EQ(recorder().matching("scrollTap.create -> true").size(), 1u);
    EXPECT_EQ(recorder().matching("log: Tolvane: applyInversion").size(), 1u);
    EXPECT_NE(delegate->menu(), before);

    recorder().clear();
    wait(200);
    EXPECT_TRUE(recorder().matching("scrollTap.").empty());
}

TEST_F(PermissionFlow, NoTickWhileAModalAlertIsOpen) {
    AlertSeen seen;
    answerAlert("Later", seen);
    launch();
    recorder().clear();
    QMessageBox other;
    other.setText("unrelated");
    QTimer::singleShot(300, &other, [&other] { other.accept(); });
    other.exec();
    EXPECT_TRUE(recorder().matching("scrollTap.").empty());
    wait(150);
    EXPECT_FALSE(recorder().matching("scrollTap.").empty());
}

TEST_F(PermissionFlow, AccessPresentAtLaunchNeedsNoPromptAlertOrTimer) {
    fakes().scrollTap.available = true;
    launch();
    EXPECT_TRUE(recorder().matching("access.requestAccess").empty());
    EXPECT_EQ(recorder().matching("log: Tolvane: applyInversion").size(), 1u);
    EXPECT_FALSE(delegate->isPolling());
}

TEST_F(PermissionFlow, TrustedButTapFailingStillPrompts) {
    fakes().access.trusted = true;
    AlertSeen seen;
    answerAlert("Later", seen);
    launch();
    EXPECT_EQ(seen.text, "Grant Input Access");
    EXPECT_TRUE(delegate->isPolling());
}

} // namespace
} // namespace tolvane::testing
