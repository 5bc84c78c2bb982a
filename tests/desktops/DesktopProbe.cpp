// What the desktops tier cannot do with X11 tools: it reads the menu a tray item hands to its
// host over D-Bus, and on GNOME Shell under Wayland it takes screenshots (org.gnome.Shell.
// Screenshot answers only a few bus names, so it owns org.gnome.Screenshot) and moves the
// pointer, clicks and types through mutter's remote desktop session. One command a line on
// its standard input; each ends with a line "ok" or "failed" on its standard output:
//   items [LABEL]         a tray host is there; with LABEL, that enabled entry of the last
//                         item's menu is clicked as the host would
//   shot FILE             the whole screen as a PNG
//   move X Y | click BUTTON | key KEYSYM...  (keys pressed in order, released in reverse)
//   accessible APP        what a screen reader gets from the program named APP through
//                         AT-SPI: a line "role "name"" for each element, ">" for each level
#include "TolvaneCore/EventCodes.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#include <QDBusVariant>
#include <QSocketNotifier>
#include <QStringList>

#include <cstdio>
#include <unistd.h>

namespace {

QDBusConnection bus() {
    return QDBusConnection::sessionBus();
}

void answer(const QString& line) {
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

QVariant property(const QString& service, const QString& path, const QString& interface,
                  const QString& name, const QDBusConnection& connection = bus()) {
    QDBusInterface properties(service, path, "org.freedesktop.DBus.Properties", connection);
    const QDBusReply<QDBusVariant> reply = properties.call("Get", interface, name);
    return reply.isValid() ? reply.value().variant() : QVariant();
}

// One node of com.canonical.dbusmenu's layout, (id, properties, children), top down: the ids
// of the enabled entries by label.
void listItems(const QDBusArgument& node, QList<std::pair<int, QString>>& out) {
    int id = 0;
    QVariantMap props;
    node.beginStructure();
    node >> id >> props;
    if (id != 0 && props.value("enabled", true).toBool() && props.value("visible", true).toBool() &&
        props.value("type").toString() != "separator") {
        out.append({id, props.value("label").toString().remove(u'_')});
    }
    node.beginArray();
    while (!node.atEnd()) {
        QDBusVariant child;
        node >> child;
        listItems(child.variant().value<QDBusArgument>(), out);
    }
    node.endArray();
    node.endStructure();
}

// Lists the last item's menu; with a label, clicks that entry as its host does. Fails where
// no tray host watches for items, or the label is not there.
bool items(const QString& choice) {
    const QString watcher = "org.kde.StatusNotifierWatcher";
    const QVariant all =
        property(watcher, "/StatusNotifierWatcher", watcher, "RegisteredStatusNotifierItems");
    const QStringList registered = all.toStringList();
    if (registered.isEmpty()) {
        return all.isValid() && choice.isEmpty();
    }
    // "SERVICE/PATH" (GNOME's extension: "SERVICE@/PATH"), or "SERVICE" at the usual path.
    const QString item = registered.last();
    const qsizetype slash = item.indexOf(u'/');
    const QString service = slash < 0 ? item : item.left(slash).remove(u'@');
    const QString itemPath = slash < 0 ? "/StatusNotifierItem" : item.mid(slash);
    const QString menuPath = property(service, itemPath, "org.kde.StatusNotifierItem", "Menu")
                                 .value<QDBusObjectPath>()
                                 .path();
    QList<std::pair<int, QString>> entries;
    if (!menuPath.isEmpty()) {
        QDBusInterface menu(service, menuPath, "com.canonical.dbusmenu", bus());
        const QDBusMessage reply = menu.call("GetLayout", 0, -1, QStringList());
        if (reply.type() == QDBusMessage::ReplyMessage && reply.arguments().size() == 2) {
            listItems(reply.arguments().at(1).value<QDBusArgument>(), entries);
        }
        for (const auto& [id, label] : entries) {
            if (label == choice) {
                menu.call("Event", id, "clicked", QVariant::fromValue(QDBusVariant(0)), 0u);
                return true;
            }
        }
    }
    return choice.isEmpty();
}

// The (bus name, object path) pairs of an AT-SPI GetChildren reply.
QList<std::pair<QString, QString>> childrenOf(const QDBusMessage& reply) {
    QList<std::pair<QString, QString>> children;
    const QDBusArgument list = reply.arguments().value(0).value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString name;
        QDBusObjectPath path;
        list.beginStructure();
        list >> name >> path;
        list.endStructure();
        children.append({name, path.path()});
    }
    list.endArray();
    return children;
}

// The AT-SPI tree below an element (bus name, object path) on the accessibility bus, printed.
void printAccessible(const QDBusConnection& a11y, const QString& name, const QString& path,
                     int depth) {
    const QString interface = "org.a11y.atspi.Accessible";
    QDBusInterface element(name, path, interface, a11y);
    const QDBusReply<QString> role = element.call("GetRoleName");
    const QString label = property(name, path, interface, "Name", a11y).toString();
    answer(QString(u'>').repeated(depth) + QString(" %1 \"%2\"").arg(role.value(), label));
    for (const auto& [childName, childPath] : childrenOf(element.call("GetChildren"))) {
        printAccessible(a11y, childName, childPath, depth + 1);
    }
}

// The program named `app` among those the AT-SPI registry knows, printed; false if absent.
bool accessible(const QString& app) {
    const QDBusReply<QString> address =
        QDBusInterface("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", bus()).call("GetAddress");
    QDBusConnection a11y = QDBusConnection::connectToBus(address.value(), "a11y");
    const QDBusMessage apps =
        QDBusInterface("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root",
                       "org.a11y.atspi.Accessible", a11y)
            .call("GetChildren");
    bool found = false;
    for (const auto& [name, path] : childrenOf(apps)) {
        if (property(name, path, "org.a11y.atspi.Accessible", "Name", a11y)
                .toString()
                .compare(app, Qt::CaseInsensitive) == 0) {
            found = true;
            printAccessible(a11y, name, path, 0);
        }
    }
    return found;
}

// A call in mutter's remote desktop session, made and started at the first call; it ends when
// this program's connection does.
bool input(const QString& method, const QVariantList& args) {
    static QString session;
    const QString desktop = "org.gnome.Mutter.RemoteDesktop";
    if (session.isEmpty()) {
        const QDBusReply<QDBusObjectPath> created =
            QDBusInterface(desktop, "/org/gnome/Mutter/RemoteDesktop", desktop, bus())
                .call("CreateSession");
        session = created.isValid() ? created.value().path() : QString();
        if (session.isEmpty() || !input("Start", {})) {
            return false;
        }
    }
    const QDBusMessage reply = QDBusInterface(desktop, session, desktop + ".Session", bus())
                                   .callWithArgumentList(QDBus::Block, method, args);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(method), qPrintable(reply.errorMessage()));
    }
    return reply.type() == QDBusMessage::ReplyMessage;
}

bool run(const QStringList& words) {
    const QString& verb = words.value(0);
    if (verb == "items") {
        return items(words.mid(1).join(u' '));
    }
    if (verb == "accessible" && words.size() == 2) {
        return accessible(words[1]);
    }
    if (verb == "shot" && words.size() == 2) {
        QDBusInterface shell("org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot",
                             "org.gnome.Shell.Screenshot", bus());
        const QDBusMessage reply = shell.call("Screenshot", false, false, words[1]);
        return reply.type() == QDBusMessage::ReplyMessage && reply.arguments().value(0).toBool();
    }
    if (verb == "move" && words.size() == 3) {
        // From the top left corner, where any pointer stops, by the distance to the target.
        return input("NotifyPointerMotionRelative", {-10000.0, -10000.0}) &&
               input("NotifyPointerMotionRelative", {words[1].toDouble(), words[2].toDouble()});
    }
    if (verb == "click" && words.size() == 2) {
        const int button = words[1] == "3" ? tolvane::code::btnRight : tolvane::code::btnLeft;
        return input("NotifyPointerButton", {button, true}) &&
               input("NotifyPointerButton", {button, false});
    }
    if (verb == "key" && words.size() >= 2) {
        bool sent = true;
        for (qsizetype i = 1; i < 2 * words.size() - 1; ++i) {
            const bool press = i < words.size();
            const uint keysym = words[press ? i : 2 * words.size() - 1 - i].toUInt(nullptr, 0);
            sent = sent && input("NotifyKeyboardKeysym", {keysym, press});
        }
        return sent;
    }
    return false;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (app.arguments().contains("--screenshot-name") &&
        !bus().registerService("org.gnome.Screenshot")) {
        std::fprintf(stderr, "probe: cannot own org.gnome.Screenshot\n");
        return 1;
    }
    QSocketNotifier notifier(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray pending;
    QObject::connect(&notifier, &QSocketNotifier::activated, &app, [&] {
        char chunk[512];
        const ssize_t got = ::read(STDIN_FILENO, chunk, sizeof chunk);
        if (got <= 0) {
            QCoreApplication::quit();
            return;
        }
        pending.append(chunk, got);
        for (qsizetype end; (end = pending.indexOf('\n')) >= 0; pending.remove(0, end + 1)) {
            const QStringList words = QString::fromUtf8(pending.left(end)).split(u' ');
            answer(run(words) ? "ok" : "failed");
        }
    });
    answer("ready");
    return QCoreApplication::exec();
}
