#include "support/OverlayProbe.h"

#include "Tolvane/CleaningOverlay.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QScreen>

#include <algorithm>


namespace tolvane::testing {

QList<CleaningOverlay*> overlayWindows() {
    QList<CleaningOverlay*> found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* overlay = qobject_cast<CleaningOverlay*>(widget)) {
            found.append(overlay);
        }
    }
    const QList<QScreen*> screens = QGuiApplication::screens();
    std::stable_sort(found.begin(), found.end(), [&screens](QWidget* a, QWidget* b) {
        return screens.indexOf(a->screen()) < screens.indexOf(b->screen());
    });
    return found;
}

QList<CleaningOverlay*> visibleOverlayWindows() {
    QList<CleaningOverlay*> found;
    for (CleaningOverlay* overlay : overlayWindows()) {
        if (overlay->isVisible()) {
            found.append(overlay);
        }
    }
    return found;
}

void spinEventLoop(int ms) {
    QElapsedTimer clock;
    clock.start();
    do {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    } while (clock.elapsed() < ms);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QImage renderedPicture(QWidget& widget) {
    QImage picture(widget.size(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    widget.render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
    return picture;
}

std::string describe(QColor c) {
    return "rgba(" + std::to_string(c.red()) + ", " + std::to_string(c.green()) + ", " +
           std::to_string(c.blue()) + ", " + std::to_string(c.alpha()) + ")";
}

} // namespace tolvane::testing
