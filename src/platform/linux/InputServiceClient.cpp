// The program opens no input device: each use of input is a call to the input service on the
// system bus. The things easy to get wrong: a call that waits must wait briefly, or a hung or
// slowly starting service freezes the tray (the bus's own limit is 25 s); keep-alives and new
// settings never wait; and a service that starts anew, after a crash or an upgrade, knows
// nothing of this session's tap, so the tap's setting is sent again when its name comes back.
// The trust check only asks: starting the service is the bus's work when access is requested,
// and a menu that checks trust must not wait on a service being started.
#include "platform/linux/InputServiceClient.h"

#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace tolvane::oslinux {

namespace {

const QString serviceName = QStringLiteral("org.tolvane.Input1");
const QString objectPath = QStringLiteral("/org/tolvane/Input1");
constexpr int serviceAnswerWaitMs = 1500;
constexpr int keepAliveMs = 500; // the service ends a hold 2 s after the last keep-alive

QDBusMessage serviceCall(const QString& method, const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, method);
    message.setArguments(arguments);
    return message;
}

} // namespace

InputServiceClient::InputServiceClient(const QDBusConnection& bus)
    : bus(bus), serviceStarts(serviceName, bus, QDBusServiceWatcher::WatchForRegistration) {
    keepAlive.setInterval(keepAliveMs);
    QObject::connect(&keepAlive, &QTimer::timeout, &keepAlive,
                     [this] { send(QStringLiteral("KeepAlive")); });
    QObject::connect(&serviceStarts, &QDBusServiceWatcher::serviceRegistered, &serviceStarts,
                     [this] {
                         if (tapInverting) {
                             setInverting(*tapInverting);
                         }
                     });
}

bool InputServiceClient::isTrusted() {
    QDBusMessage listMice = serviceCall(QStringLiteral("ListMice"), {});
    listMice.setAutoStartService(false);
    return callAndWait(listMice);
}

// The bus starts the service where its activation file is installed, and answers at once
// where it runs already or is not installed; either answer is of no use here.
void InputServiceClient::requestAccess() {
    QDBusMessage start = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("StartServiceByName"));
    start.setArguments({serviceName, 0u});
    bus.send(start);
}

std::string InputServiceClient::helpPage() {
    const QString installed = QStringLiteral(TOLVANE_DATA_DIR "/help/input-access.html");
    if (QFileInfo::exists(installed)) {
        return installed.toStdString();
    }
    return TOLVANE_SOURCE_DATA_DIR "/help/input-access.html";
}

bool InputServiceClient::openHelp() {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(helpPage())));
}

bool InputServiceClient::create(bool inverting) {
    if (!callAndWait(serviceCall(QStringLiteral("SetInversion"), {inverting}))) {
        return false;
    }
    tapInverting = inverting;
    return true;
}

void InputServiceClient::setInverting(bool inverting) {
    tapInverting = inverting;
    send(QStringLiteral("SetInversion"), {inverting});
}

bool InputServiceClient::grab() {
    if (!callAndWait(serviceCall(QStringLiteral("HoldKeyboards"), {}))) {
        // An answer that comes after the wait would leave the keyboards held for nothing until
        // the keep-alive they never get runs out.
        send(QStringLiteral("ReleaseKeyboards"));
        return false;
    }
    keepAlive.start();
    // The first as soon as the loop is free again: the lock's overlays are built right after
    // the hold, and under load that may take a good part of the service's two seconds.
    QTimer::singleShot(0, &keepAlive, [this] {
        if (keepAlive.isActive()) {
            send(QStringLiteral("KeepAlive"));
        }
    });
    return true;
}

void InputServiceClient::release() {
    keepAlive.stop();
    send(QStringLiteral("ReleaseKeyboards"));
}

bool InputServiceClient::callAndWait(const QDBusMessage& call) {
    return bus.call(call, QDBus::Block, serviceAnswerWaitMs).type() == QDBusMessage::ReplyMessage;
}

void InputServiceClient::send(const QString& method, const QVariantList& arguments) {
    bus.send(serviceCall(method, arguments));
}

} // namespace tolvane::oslinux
