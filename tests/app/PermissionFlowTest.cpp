#include "Tolvane/AppDelegate.h"
#include "support/AppHarness.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>

namespace tolvane::testing {
namespace {

// Answers the next modal alert by clicking the button with `answer`; returns what it showed:
// the text, the explanation and the buttons, one a line.
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

class PermissionFlow : public AppHarness {
protected:
    void SetUp() override {
        AppHarness::SetUp();
        fakes().access.trusted = false;
        fakes().scrollTap.available = false;
    }
};

TEST_F(PermissionFlow, AFailedTapAsksForAccessShowsTheAlertThenPolls) {
    // A trusted process whose tap fails asks as well.
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
        std::erase_if(recorder().calls,
                      [](const std::string& c) { return c.starts_with("log: "); });
        EXPECT_EQ(recorder().calls, expected);
        EXPECT_TRUE(delegate->isPolling());
    }
}

TEST_F(PermissionFlow, PollingRetriesQuietlyUntilTheTapStartsThenStopsForGood) {
    answerAlert("Later");
    launch();
    settle();
    recorder().clear();
    settle(200);
    EXPECT_GE(recorder().matching("scrollTap.create -> false").size(), 2u);
    EXPECT_TRUE(recorder().matching("log: ").empty());

    fakes().scrollTap.available = true;
    fakes().access.trusted = true;
    const QMenu* before = delegate->menu();
    settle(150);
    EXPECT_FALSE(delegate->isPolling());
    EXPECT_EQ(recorder().matching("scrollTap.create -> true").size(), 1u);
    EXPECT_EQ(recorder().matching("log: Tolvane: applyInversion").size(), 1u);
    EXPECT_NE(delegate->menu(), before);

    recorder().clear();
    settle(200);
    EXPECT_TRUE(recorder().matching("scrollTap.").empty());
}

TEST_F(PermissionFlow, NoTickWhileAModalAlertIsOpen) {
    answerAlert("Later");
    launch();
    recorder().clear();
    QMessageBox other;
    std::vector<std::string> whileOpen{"not closed"};
    QTimer::singleShot(300, &other, [&] {
        whileOpen = recorder().matching("scrollTap.");
        other.accept();
    });
    other.exec();
    EXPECT_TRUE(whileOpen.empty());
    settle(150);
    EXPECT_FALSE(recorder().matching("scrollTap.").empty());
}

TEST_F(PermissionFlow, AccessPresentAtLaunchNeedsNoPromptAlertOrTimer) {
    fakes().scrollTap.available = true;
    launch();
    EXPECT_TRUE(recorder().matching("access.").empty());
    EXPECT_FALSE(delegate->isPolling());
}

} // namespace
} // namespace tolvane::testing
