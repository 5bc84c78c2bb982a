#include "Tolvane/lock/ImageBlur.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tolvane {

namespace {

// One box pass along `count` pixels, from `in` to `out`.
void boxPass(const QRgb* in, QRgb* out, int count, int radius) {
    const int width = 2 * radius + 1;
    auto at = [&](int i) { return in[std::clamp(i, 0, count - 1)]; };
    int a = 0, r = 0, g = 0, b = 0;
    for (int i = -radius; i <= radius; ++i) {
        const QRgb p = at(i);
        a += qAlpha(p), r += qRed(p), g += qGreen(p), b += qBlue(p);
    }
    for (int i = 0; i < count; ++i) {
        out[i] = qRgba(r / width, g / width, b / width, a / width);
        const QRgb gone = at(i - radius);
        const QRgb next = at(i + radius + 1);
        a += qAlpha(next) - qAlpha(gone);
        r += qRed(next) - qRed(gone);
        g += qGreen(next) - qGreen(gone);
        b += qBlue(next) - qBlue(gone);
    }
}

// Three boxes of this radius have about the variance of the Gaussian: 3 (w^2 - 1) / 12.
int boxRadiusFor(qreal sigma) {
    return int(std::lround((std::sqrt(4 * sigma * sigma + 1) - 1) / 2));
}

} // namespace

QImage gaussianBlurred(const QImage& source, qreal sigma) {
    QImage image = source.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int radius = boxRadiusFor(sigma);
    if (radius < 1 || image.isNull()) {
        return image;
    }
    const int w = image.width();
    const int h = image.height();
    std::vector<QRgb> line(size_t(std::max(w, h)));
    std::vector<QRgb> scratch(line.size());
    for (int y = 0; y < h; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int pass = 0; pass < 3; ++pass) {
            boxPass(row, scratch.data(), w, radius);
            std::copy_n(scratch.data(), w, row);
        }
    }
    const qsizetype stride = image.bytesPerLine() / qsizetype(sizeof(QRgb));
    auto* first = reinterpret_cast<QRgb*>(image.bits());
    for (int x = 0; x < w; ++x) {
        for (int y = 0; y < h; ++y) {
            line[size_t(y)] = first[x + y * stride];
        }
        for (int pass = 0; pass < 3; ++pass) {
            boxPass(line.data(), scratch.data(), h, radius);
            std::copy_n(scratch.data(), h, line.data());
        }
        for (int y = 0; y < h; ++y) {
            first[x + y * stride] = line[size_t(y)];
        }
    }
    return image;
}

} // namespace tolvane
