// Reaches the offscreen platform's own configuration call through the platform's native
// interface, the one QPA header the tests need (qt6-base-private-dev).
#include "support/OffscreenScreens.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <qpa/qplatformnativeinterface.h>

namespace tolvane::testing {

namespace {

using SetConfiguration = void (*)(const QJsonObject&, QPlatformNativeInterface*);

bool applyConfiguration(const QJsonObject& configuration) {
    if (QGuiApplication::platformName() != QLatin1String("offscreen")) {
        return false;
    }
    QPlatformNativeInterface* native = QGuiApplication::platformNativeInterface();
    void* call = native ? native->nativeResourceForIntegration("setConfiguration") : nullptr;
    if (!call) {
        return false;
    }
    reinterpret_cast<SetConfiguration>(call)(configuration, native);
    return true;
}

QJsonObject screenEntry(const QString& name, const QRect& geometry) {
    return QJsonObject{{"name", name},
                       {"x", geometry.x()},
                       {"y", geometry.y()},
                       {"width", geometry.width()},
                       {"height", geometry.height()},
                       {"logicalDpi", 96},
                       {"logicalBaseDpi", 96},
                       {"dpr", 1.0}};
}

} // namespace

bool setOffscreenScreens(const std::vector<OffscreenScreen>& screens) {
    QJsonArray entries;
    for (const OffscreenScreen& screen : screens) {
        entries.append(screenEntry(screen.name, screen.geometry));
    }
    return applyConfiguration(QJsonObject{{"screens", entries}});
}

void restoreOffscreenScreens() {
    setOffscreenScreens({{QString(), QRect(0, 0, 800, 800)}});
}

} // namespace tolvane::testing
