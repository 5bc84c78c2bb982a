#include "support/ViewPixels.h"

#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <cstdlib>

namespace tolvane::testing {

QPalette lightPanel() {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(246, 246, 246));
    palette.setColor(QPalette::WindowText, QColor(20, 20, 20));
    palette.setColor(QPalette::Base, QColor(255, 255, 255));
    palette.setColor(QPalette::Text, QColor(20, 20, 20));
    return palette;
}

QPalette darkPanel() {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(40, 40, 44));
    palette.setColor(QPalette::WindowText, QColor(236, 236, 236));
    palette.setColor(QPalette::Base, QColor(30, 30, 32));
    palette.setColor(QPalette::Text, QColor(236, 236, 236));
    return palette;
}

QImage renderOnPanel(QWidget& widget, const QPalette& panel, qreal scale, QSize size) {
    widget.setPalette(panel);
    widget.ensurePolished();
    widget.resize(size.isEmpty() ? widget.sizeHint() : size);
    QImage image((QSizeF(widget.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(panel.color(QPalette::Window));
    QPainter painter(&image);
    widget.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    painter.end();
    return image.convertToFormat(QImage::Format_RGB32);
}

::testing::AssertionResult closeTo(QColor a, QColor b, int tolerance) {
    const bool close =
        std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
        std::abs(a.blue() - b.blue()) <= tolerance && std::abs(a.alpha() - b.alpha()) <= tolerance;
    return (close ? ::testing::AssertionSuccess() : ::testing::AssertionFailure())
           << a.name(QColor::HexArgb).toStdString() << (close ? " is" : " is not") << " within "
           << tolerance << " of " << b.name(QColor::HexArgb).toStdString();
}

int countPixels(const QImage& image, const QRect& area, const std::function<bool(QColor)>& test) {
    int count = 0;
    const QRect inside = area.intersected(image.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            count += test(image.pixelColor(x, y)) ? 1 : 0;
        }
    }
    return count;
}

int strongestInk(const QImage& image, const QRect& area, QColor background) {
    int strongest = 0;
    countPixels(image, area, [&](QColor c) {
        strongest = std::max({strongest, std::abs(c.red() - background.red()),
                              std::abs(c.green() - background.green()),
                              std::abs(c.blue() - background.blue())});
        return false;
    });
    return strongest;
}

} // namespace tolvane::testing
