// Input access: at launch the scroll tap is asked of the input service; where the service does
// not serve this session, the system is asked to start it, the program's alert comes up, and a
// poll retries the tap until it starts, so no restart is needed.
#include "Tolvane/app/AppDelegate.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace tolvane {

namespace {

const char* const alertMessage = "Grant Input Access";
const char* const alertInformation =
    "Tolvane needs its input service to change scroll direction instantly and to lock the keyboard "
    "for cleaning. Install or start the service as Help explains, then it will start working "
    "automatically.";

} // namespace

void AppDelegate::startInverterOrPrompt() {
    if (inverter.start()) {
        applyInversion();
        return;
    }
    platform.access.requestAccess();
    showPermissionAlert();

    auto* timer = new QTimer(this);
    timer->setInterval(int(timing.permissionPoll.count()));
    QPointer<AppDelegate> weak(this);
    connect(timer, &QTimer::timeout, this, [weak] {
        if (weak) {
            weak->permissionTick();
        }
    });
    timer->start();
    permissionTimer = timer;
}

void AppDelegate::permissionTick() {
    // Qt's timers also fire inside modal loops and while a menu is open; the poll waits for
    // both to close, so a service that comes never changes the program under an open alert.
    if (QApplication::activeModalWidget() || QApplication::activePopupWidget()) {
        return;
    }
    if (!inverter.start()) {
        return;
    }
    applyInversion();
    render();
    if (permissionTimer) {
        permissionTimer->stop();
        permissionTimer->deleteLater();
    }
    permissionTimer = nullptr;
}

void AppDelegate::showPermissionAlert() {
    QMessageBox alert;
    alert.setWindowTitle(QStringLiteral("Tolvane"));
    alert.setText(QString::fromUtf8(alertMessage));
    alert.setInformativeText(QString::fromUtf8(alertInformation));
    QPushButton* first = alert.addButton(QStringLiteral("Open Help"), QMessageBox::AcceptRole);
    alert.addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
    alert.setDefaultButton(first);
    alert.exec();
    if (alert.clickedButton() == first) {
        openAccessibility();
    }
}

// Where no program can open the page (no browser, no xdg-open), the user is told where it is.
void AppDelegate::openAccessibility() {
    if (platform.access.openHelp()) {
        return;
    }
    QMessageBox box(QMessageBox::Information, QStringLiteral("Tolvane"),
                    QStringLiteral("The help page could not be opened"));
    box.setInformativeText(QStringLiteral("No program here opens web pages. Open this file in a "
                                          "web browser:\n%1")
                               .arg(QString::fromStdString(platform.access.helpPage())));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    box.exec();
}

} // namespace tolvane
