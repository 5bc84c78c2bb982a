#pragma once

#include <QImage>

namespace tolvane {

// A blur close to a Gaussian of standard deviation `sigma` (in pixels), made of three box
// passes each way. Returns a premultiplied ARGB copy; pixels past the edges count as the edge
// pixel, so a picture keeps its brightness up to its border. A sigma below 0.5 copies.
QImage gaussianBlurred(const QImage& source, qreal sigma);

} // namespace tolvane
