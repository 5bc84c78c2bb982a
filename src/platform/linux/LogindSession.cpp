// Fast user switching: logind gives the input devices to the user whose session is active at
// the seat, but descriptors opened before a switch stay open, so Tolvane would go on reading
// the mouse and holding the keyboard of the next user. It follows its session's Active
// property and lets go of every device while it is false. Which session: the one named by
// XDG_SESSION_ID, else the user's display session (a program started by the user's service
// manager belongs to no session of its own). Every call is asynchronous: logind may be slow or
// absent, and the start must not wait for it.
#include "platform/linux/LogindSession.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace tolvane::oslinux {

namespace {

const QString service = QStringLiteral("org.freedesktop.login1");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");

// Calls `method` and hands its first result to `then` when it comes; nothing on an error.
void callThen(QObject* owner, const QDBusMessage& method,
              std::function<void(const QVariant&)> then) {
    auto* watcher =
        new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(method), owner);
    QObject::connect(
        watcher, &QDBusPendingCallWatcher::finished, owner, [watcher, then = std::move(then)] {
            const QDBusMessage reply = watcher->reply();
            if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
                then(reply.arguments().first());
            }
            watcher->deleteLater();
        });
}

QVariant unwrapped(const QVariant& value) {
    return value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
}

} // namespace

LogindSession::LogindSession(std::function<void(bool active)> onChange)
    : onChange(std::move(onChange)) {
    if (!QDBusConnection::systemBus().isConnected()) {
        return;
    }
    const QString id = qEnvironmentVariable("XDG_SESSION_ID");
    if (!id.isEmpty()) {
        auto get = QDBusMessage::createMethodCall(
            service, QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("GetSession"));
        get << id;
        callThen(this, get,
                 [this](const QVariant& path) { follow(path.value<QDBusObjectPath>().path()); });
        return;
    }
    auto get =
        QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/login1/user/self"),
                                       properties, QStringLiteral("Get"));
    get << QStringLiteral("org.freedesktop.login1.User") << QStringLiteral("Display");
    callThen(this, get, [this](const QVariant& display) {
        // (so): the session's id and its object path.
        const auto argument = unwrapped(display).value<QDBusArgument>();
        QString sessionId;
        QDBusObjectPath sessionPath;
        argument.beginStructure();
        argument >> sessionId >> sessionPath;
        argument.endStructure();
        follow(sessionPath.path());
    });
}

void LogindSession::follow(const QString& sessionPath) {
    if (sessionPath.isEmpty() || sessionPath == QStringLiteral("/")) {
        return;
    }
    path = sessionPath;
    QDBusConnection::systemBus().connect(
        service, path, properties, QStringLiteral("PropertiesChanged"), this,
        SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    askActive(); // the session may already be inactive at start
}

void LogindSession::askActive() {
    auto get = QDBusMessage::createMethodCall(service, path, properties, QStringLiteral("Get"));
    get << sessionInterface << QStringLiteral("Active");
    callThen(this, get, [this](const QVariant& active) { onChange(unwrapped(active).toBool()); });
}

void LogindSession::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                      const QStringList& invalidated) {
    if (interface != sessionInterface) {
        return;
    }
    const auto active = changed.find(QStringLiteral("Active"));
    if (active != changed.end()) {
        onChange(unwrapped(*active).toBool());
    } else if (invalidated.contains(QStringLiteral("Active"))) {
        askActive();
    }
}

} // namespace tolvane::oslinux
