// Reaches the offscreen platform's own configuration call through the platform's native
// interface, the one QPA header the tests need (qt6-base-private-dev).
#include "support/Views.h"

#include "Tolvane/lock/CleaningOverlay.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QPainter>
#include <QScreen>
#include <qpa/qplatformnativeinterface.h>

#include <algorithm>
#include <cstdlib>

namespace tolvane::testing {

QPalette panel(bool dark) {
    const QColor window = dark ? QColor(40, 40, 44) : QColor(246, 246, 246);
    const QColor ink = dark ? QColor(236, 236, 236) : QColor(20, 20, 20);
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, ink);
    palette.setColor(QPalette::Base, dark ? QColor(30, 30, 32) : QColor(255, 255, 255));
    palette.setColor(QPalette::Text, ink);
    return palette;
}

QImage renderOnPanel(QWidget& widget, const QPalette& panel, QSize size) {
    widget.setPalette(panel);
    widget.ensurePolished();
    widget.resize(size.isEmpty() ? widget.sizeHint() : size);
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(panel.color(QPalette::Window));
    QPainter painter(&image);
    widget.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

int strongestInk(const QImage& image, const QRect& area, QColor background) {
    int strongest = 0;
    const QRect inside = area.intersected(image.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            strongest = std::max({strongest, std::abs(c.red() - background.red()),
                                  std::abs(c.green() - background.green()),
                                  std::abs(c.blue() - background.blue())});
        }
    }
    return strongest;
}

bool closeTo(QColor a, QColor b, int tolerance) {
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance &&
           std::abs(a.alpha() - b.alpha()) <= tolerance;
}

bool setOffscreenScreens(std::vector<OffscreenScreen> screens) {
    QPlatformNativeInterface* native = QGuiApplication::platformNativeInterface();
    void* call = QGuiApplication::platformName() == QLatin1String("offscreen") && native
                     ? native->nativeResourceForIntegration("setConfiguration")
                     : nullptr;
    if (!call) {
        return false;
    }
    if (screens.empty()) {
        screens.push_back({QString(), QRect(0, 0, 800, 800)});
    }
    QJsonArray entries;
    for (const OffscreenScreen& s : screens) {
        entries.append(QJsonObject{{"name", s.name},
                                   {"x", s.geometry.x()},
                                   {"y", s.geometry.y()},
                                   {"width", s.geometry.width()},
                                   {"height", s.geometry.height()}});
    }
    using SetConfiguration = void (*)(const QJsonObject&, QPlatformNativeInterface*);
    reinterpret_cast<SetConfiguration>(call)(QJsonObject{{"screens", entries}}, native);
    return true;
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
