// The tray's own pixels around the icon say which ink stands out on it. Only the outermost ring
// of the icon's square is read: the glyph never reaches it, so it shows the panel alone.
#include "Tolvane/tray/PanelInk.h"

#include "Tolvane/look/BrandIcon.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>

namespace tolvane {

namespace {

// The mean colour of the outermost ring of pixels, where the glyph never reaches.
QColor ringColour(const QImage& image) {
    double red = 0, green = 0, blue = 0;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (y == 0 || x == 0 || y == image.height() - 1 || x == image.width() - 1) {
                const QColor pixel = image.pixelColor(x, y);
                red += pixel.redF();
                green += pixel.greenF();
                blue += pixel.blueF();
                ++count;
            }
        }
    }
    return count ? QColor::fromRgbF(float(red / count), float(green / count), float(blue / count))
                 : QColor();
}

} // namespace

QColor inkAround(const QRect& icon) {
    QScreen* screen = QGuiApplication::screenAt(icon.center());
    if (!icon.isValid() || !screen) {
        return {};
    }
    const QPoint inScreen = icon.topLeft() - screen->geometry().topLeft();
    const QImage around =
        screen->grabWindow(0, inScreen.x(), inScreen.y(), icon.width(), icon.height()).toImage();
    const QColor background = ringColour(around);
    return background.isValid() ? BrandIcon::inkOn(background) : QColor();
}

} // namespace tolvane
