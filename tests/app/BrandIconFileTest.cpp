#include "Tolvane/BrandIcon.h"
#include "support/ViewPixels.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <gtest/gtest.h>

#include <cstdlib>

namespace tolvane::testing {
namespace {

// The application list and tray hosts that draw icons by name show the installed SVGs, other
// trays the glyph drawn in code: at every size a host might ask for, both must cover the same
// pixels in the same colour. Hosts that tint a symbolic icon fill every path of it.
TEST(BrandIconFile, TheInstalledSvgsAreTheTrayGlyph) {
    QFile symbolic(QStringLiteral(TOLVANE_SOURCE_DIR "/data/icons/tolvane-symbolic.svg"));
    ASSERT_TRUE(symbolic.open(QIODevice::ReadOnly));
    EXPECT_FALSE(symbolic.readAll().contains("stroke")) << "a line would turn into a filled area";
    for (const auto& [name, colour] :
         {std::pair{"tolvane.svg", BrandIcon::accent()},
          std::pair{"tolvane-symbolic.svg", BrandIcon::neutralInk()}}) {
        QSvgRenderer svg(QStringLiteral(TOLVANE_SOURCE_DIR "/data/icons/") + QLatin1String(name));
        ASSERT_TRUE(svg.isValid()) << name;
        EXPECT_EQ(svg.viewBoxF().width(), svg.viewBoxF().height()) << "icon themes want a square";

        for (int size : {16, 18, 48, 128}) {
            QImage file(size, size, QImage::Format_ARGB32_Premultiplied);
            file.fill(Qt::transparent);
            QPainter painter(&file);
            svg.render(&painter, QRectF(0, 0, size, size));
            painter.end();
            const QImage drawn = BrandIcon::glyph(colour, size)
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
                    if (a.alpha() == 255 && !closeTo(a, colour, 8)) {
                        ++offColour;
                    }
                }
            }
            ASSERT_GT(ink, size * size / 10) << size;
            EXPECT_LE(differing, ink / 20 + 1)
                << name << ": pixels where only one has ink, at " << size;
            EXPECT_EQ(offColour, 0)
                << name << ": solid pixels not in the glyph's colour, at " << size;
        }
    }
}

} // namespace
} // namespace tolvane::testing
