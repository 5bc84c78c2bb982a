// A StatusNotifierItem host says where its icon was clicked, in screen coordinates, in
// Activate(x, y); Qt's tray icon drops the point. Under Wayland that point is the only word of
// where the panel is, so the calls are looked at on their way in through QtDBus's spy hook, an
// exported function of QtDBus that its own tests use. QtDBus calls the hook on the main
// thread, before it delivers the call to the tray icon.
#include "Tolvane/tray/HostClicks.h"

#include <QDBusMessage>

QT_BEGIN_NAMESPACE
extern Q_DBUS_EXPORT void qDBusAddSpyHook(void (*)(const QDBusMessage&));
QT_END_NAMESPACE

namespace tolvane::HostClicks {

namespace {

std::optional<QPoint> lastClick;

// Every call the program gets passes here: the arguments are copied only for Activate.
void noteActivate(const QDBusMessage& call) {
    if (call.member() != QStringLiteral("Activate") ||
        call.interface() != QStringLiteral("org.kde.StatusNotifierItem")) {
        return;
    }
    const QList<QVariant> args = call.arguments();
    if (args.size() == 2 && args[0].metaType().id() == QMetaType::Int &&
        args[1].metaType().id() == QMetaType::Int) {
        lastClick = QPoint(args[0].toInt(), args[1].toInt());
    }
}

} // namespace

void watch() {
    static const bool added = (qDBusAddSpyHook(noteActivate), true);
    Q_UNUSED(added);
}

std::optional<QPoint> last() {
    return lastClick;
}

} // namespace tolvane::HostClicks
