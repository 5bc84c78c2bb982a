#pragma once

#include "Tolvane/app/AppDelegate.h"
#include "support/FakePlatform.h"

#include <QString>

#include <gtest/gtest.h>

#include <memory>

namespace tolvane::testing {

// Runs the event loop until nothing is queued, so queued reports and settings writes land and
// pending deletions happen. It never waits for time to pass: a test that needs a timer waits
// for what the timer brings (QTest::qWaitFor).
void settle();

// The item of `menu` with `text`, or null.
QAction* itemNamed(QMenu* menu, const QString& text);

// Answers the next modal alert with its button `answer` (any button when empty); gives what it
// showed: the text, the explanation and the buttons, one a line.
std::shared_ptr<std::string> answerAlert(const QString& answer = {});

// An AppDelegate on recording fakes with its settings in a file of its own.
class AppHarness : public ::testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override;

    // A new platform, settings file and delegate, as for a new start of the program.
    void reset();
    // Starts the delegate; with `settled`, lets its first reports land too.
    void launch(bool settled = false);
    // Pops the current rich menu up as a click on the tray icon does.
    QMenu* openMenu();

    void writeSettings(const QByteArray& content) const;
    // The raw value written under `key` in the settings file, "" when there is none.
    std::string storedText(const char* key) const;

    Recorder& recorder() { return fakePlatform->recorder; }
    FakePlatform& fakes() { return *fakePlatform; }

    std::unique_ptr<FakePlatform> fakePlatform;
    std::unique_ptr<AppDelegate> delegate;
    AppTiming timing{std::chrono::milliseconds(60), std::chrono::milliseconds(20)};
    bool trayHost = true; // whether the desktop shows tray icons
    QString path;
};

} // namespace tolvane::testing
