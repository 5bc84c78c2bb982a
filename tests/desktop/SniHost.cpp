// A minimal StatusNotifierItem host for the desktop tier, standing in for a panel that shows
// tray items over D-Bus. It owns the watcher's name and says a host is there, so Qt's tray
// icon registers as an item instead of embedding an X window. It prints "registered NAME PATH"
// for each item, and on a line "activate X Y" or "menu X Y" from its standard input it calls
// the item's Activate or ContextMenu, as a panel does on a left or a right click.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QObject>
#include <QSocketNotifier>
#include <QStringList>

#include <cstdio>
#include <unistd.h>

namespace {

class Watcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ registeredItems)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    bool hostRegistered() const { return true; }
    QStringList registeredItems() const { return items; }
    int protocolVersion() const { return 0; }

    // Calls the method on the last item that registered.
    void call(const QString& method, int x, int y) {
        if (itemService.isEmpty()) {
            std::printf("no item\n");
        } else {
            QDBusInterface item(itemService, itemPath,
                                QStringLiteral("org.kde.StatusNotifierItem"));
            item.asyncCall(method, x, y);
            std::printf("called %s\n", qPrintable(method));
        }
        std::fflush(stdout);
    }

public slots:
    void RegisterStatusNotifierItem(const QString& service, const QDBusMessage& message) {
        // An item names itself by bus name, or by object path on the caller's connection.
        itemService = service.startsWith(QLatin1Char('/')) ? message.service() : service;
        itemPath =
            service.startsWith(QLatin1Char('/')) ? service : QStringLiteral("/StatusNotifierItem");
        items.append(itemService + itemPath);
        std::printf("registered %s %s\n", qPrintable(itemService), qPrintable(itemPath));
        std::fflush(stdout);
        emit StatusNotifierItemRegistered(itemService + itemPath);
    }
    void RegisterStatusNotifierHost(const QString&) {}

signals:
    void StatusNotifierItemRegistered(const QString& item);
    void StatusNotifierItemUnregistered(const QString& item);
    void StatusNotifierHostRegistered();

private:
    QStringList items;
    QString itemService;
    QString itemPath;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    Watcher watcher;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), &watcher,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                                QDBusConnection::ExportAllProperties) ||
        !bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"))) {
        std::fprintf(stderr, "sni host: cannot own org.kde.StatusNotifierWatcher\n");
        return 1;
    }
    std::printf("watching\n");
    std::fflush(stdout);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray pending;
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
        char chunk[256];
        const ssize_t got = ::read(STDIN_FILENO, chunk, sizeof chunk);
        if (got <= 0) {
            QCoreApplication::quit();
            return;
        }
        pending.append(chunk, got);
        for (qsizetype end; (end = pending.indexOf('\n')) >= 0; pending.remove(0, end + 1)) {
            const QList<QByteArray> words = pending.left(end).split(' ');
            if (words.size() == 3 && (words[0] == "activate" || words[0] == "menu")) {
                watcher.call(words[0] == "activate" ? QStringLiteral("Activate")
                                                    : QStringLiteral("ContextMenu"),
                             words[1].toInt(), words[2].toInt());
            }
        }
    });
    return QCoreApplication::exec();
}

#include "SniHost.moc"
