#include "Tolvane/BrandIcon.h"
#include "support/ViewPixels.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <gtest/gtest.h>

#include <cstdlib>

namespace tolvane::testing {
namespace {

// The application list shows the installed SVG, the tray the glyph drawn in code: at every size
// a launcher might ask for, both must cover the same pixels in the same blue.
TEST(BrandIconFile, TheInstalledSvgIsTheTrayGlyph) {
    QSvgRenderer svg(QStringLiteral(TOLVANE_SOURCE_DIR "/data/icons/tolvane.svg"));
    ASSERT_TRUE(svg.isValid());
    EXPECT_EQ(svg.viewBoxF().width(), svg.viewBoxF().height()) << "icon themes want a square";

    for (int size : {16, 18, 48, 128}) {
        QImage file(size, size, QImage::Format_ARGB32_Premultiplied);
        file.fill(Qt::transparent);
        QPainter painter(&file);
        svg.render(&painter, QRectF(0, 0, size, size));
        painter.end();
        const QImage drawn = BrandIcon::glyph(BrandIcon::accent(), size)
                                 .toImage()
                                 .convertToFormat(QImage::Format_ARGB32_Premultiplied);

        int ink = 0;
        int differing = 0;
        int offColour = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const QColor a = file.pixelColor(x, y);
                const QColor b = drawn.pixelColor(x, y);
                ink += b.alpha() > 128;
                differing += std::abs(a.alpha() - b.alpha()) > 96;
                if (a.alpha() == 255 && !closeTo(a, BrandIcon::accent(), 8)) {
                    ++offColour;
                }
            }
        }
        ASSERT_GT(ink, size * size / 10) << size;
        EXPECT_LE(differing, ink / 20 + 1) << "pixels where only one icon has ink, at " << size;
        EXPECT_EQ(offColour, 0) << "solid pixels not in the accent blue, at " << size;
    }
}

} // namespace
} // namespace tolvane::testing
