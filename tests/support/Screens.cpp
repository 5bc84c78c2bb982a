// Reaches the offscreen platform's own configuration call through the platform's native
// interface, the one QPA header the tests need (qt6-base-private-dev).
#include "support/Screens.h"

#include "Tolvane/CleaningOverlay.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>
#include <qpa/qplatformnativeinterface.h>

#include <algorithm>

namespace tolvane::testing {

bool setOffscreenScreens(const std::vector<OffscreenScreen>& screens) {
    QPlatformNativeInterface* native = QGuiApplication::platformNativeInterface();
    void* call = QGuiApplication::platformName() == QLatin1String("offscreen") && native
                     ? native->nativeResourceForIntegration("setConfiguration")
                     : nullptr;
    if (!call) {
        return false;
    }
    QJsonArray entries;
    for (const OffscreenScreen& s : screens) {
        entries.append(QJsonObject{{"name", s.name},
                                   {"x", s.geometry.x()},
                                   {"y", s.geometry.y()},
                                   {"width", s.geometry.width()},
                                   {"height", s.geometry.height()},
                                   {"logicalDpi", 96},
                                   {"logicalBaseDpi", 96},
                                   {"dpr", 1.0}});
    }
    using SetConfiguration = void (*)(const QJsonObject&, QPlatformNativeInterface*);
    reinterpret_cast<SetConfiguration>(call)(QJsonObject{{"screens", entries}}, native);
    return true;
}

void restoreOffscreenScreens() {
    setOffscreenScreens({{QString(), QRect(0, 0, 800, 800)}});
}

QList<CleaningOverlay*> overlayWindows(bool shownOnly) {
    QList<CleaningOverlay*> found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* overlay = qobject_cast<CleaningOverlay*>(widget);
        if (overlay && (overlay->isVisible() || !shownOnly)) {
            found.append(overlay);
        }
    }
    const QList<QScreen*> screens = QGuiApplication::screens();
    std::stable_sort(found.begin(), found.end(), [&screens](QWidget* a, QWidget* b) {
        return screens.indexOf(a->screen()) < screens.indexOf(b->screen());
    });
    return found;
}

} // namespace tolvane::testing
