#include "Tolvane/lock/ScreenBackdrop.h"

#include "Tolvane/lock/ImageBlur.h"

#include <QPixmap>
#include <QScreen>

#include <algorithm>

namespace tolvane {

namespace {

// The picture is shrunk by this factor before blurring; the blur's reach on the full screen
// is the factor times the sigma below, about 24 px.
constexpr int shrink = 8;
constexpr qreal sigmaWhenShrunk = 3.0;

} // namespace

QImage blurredBackdrop(const QImage& picture) {
    if (picture.isNull()) {
        return {};
    }
    const QSize small(std::max(1, picture.width() / shrink),
                      std::max(1, picture.height() / shrink));
    return gaussianBlurred(picture.scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation),
                           sigmaWhenShrunk);
}

QImage blurredScreenPicture(QScreen* screen) {
    if (!screen) {
        return {};
    }
    const QPixmap picture = screen->grabWindow(0);
    return blurredBackdrop(picture.toImage());
}

} // namespace tolvane
