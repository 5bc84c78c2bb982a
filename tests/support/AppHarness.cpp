#include "support/AppHarness.h"

#include "Tolvane/session/Log.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QTimer>
#include <QUuid>

namespace tolvane::testing {

void settle() {
    for (int round = 0; round < 5; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QAction* itemNamed(QMenu* menu, const QString& text) {
    for (QAction* action : menu ? menu->actions() : QList<QAction*>()) {
        if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

std::shared_ptr<std::string> answerAlert(const QString& answer) {
    auto seen = std::make_shared<std::string>();
    QTimer::singleShot(0, [answer, seen] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        *seen = (box->text() + "\n" + box->informativeText()).toStdString();
        QAbstractButton* chosen = nullptr;
        for (QAbstractButton* button : box->buttons()) {
            *seen += "\n[" + button->text().toStdString() + "]";
            chosen = button->text() == answer || answer.isEmpty() ? button : chosen;
        }
        ASSERT_NE(chosen, nullptr) << "no button " << answer.toStdString();
        chosen->click();
    });
    return seen;
}

void AppHarness::TearDown() {
    delegate.reset();
    settle();
    Log::setSystemLog(nullptr);
}

void AppHarness::reset() {
    delegate.reset();
    settle();
    fakePlatform = std::make_unique<FakePlatform>();
    trayHost = true;
    Log::setSystemLog(&fakePlatform->systemLog);
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/") +
                           QUuid::createUuid().toString(QUuid::WithoutBraces);
    QDir().mkpath(folder);
    path = folder + QStringLiteral("/Tolvane.conf");
}

void AppHarness::launch(bool settled) {
    delegate = std::make_unique<AppDelegate>(fakePlatform->platform, path, timing);
    delegate->tray().hostAvailable = [this] { return trayHost; };
    delegate->applicationDidFinishLaunching();
    if (settled) {
        settle();
    }
}

QMenu* AppHarness::openMenu() {
    QMenu* menu = delegate->menu();
    menu->popup(QPoint(40, 40));
    settle();
    return menu;
}

void AppHarness::writeSettings(const QByteArray& content) const {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}

std::string AppHarness::storedText(const char* key) const {
    QFile file(path);
    const QByteArray prefix = QByteArray(key) + '=';
    for (const QByteArray& line :
         file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>()) {
        if (line.startsWith(prefix)) {
            return line.mid(prefix.size()).trimmed().toStdString();
        }
    }
    return {};
}

} // namespace tolvane::testing
