#pragma once

#include <QColor>
#include <QImage>
#include <QPalette>
#include <QRect>

#include <gtest/gtest.h>

#include <functional>

class QWidget;

namespace tolvane::testing {

// Panels as a light and a dark desktop theme give them.
QPalette lightPanel();
QPalette darkPanel();

// The widget at `size` (its size hint when empty), painted with its children over the panel's
// window colour, as the menu would show it.
QImage renderOnPanel(QWidget& widget, const QPalette& panel, qreal scale = 1.0, QSize size = {});

// Whether every channel of `a`, alpha included, lies within `tolerance` of `b`'s; a failure
// names both colours.
::testing::AssertionResult closeTo(QColor a, QColor b, int tolerance = 24);

// Pixels of `area` that satisfy `test`.
int countPixels(const QImage& image, const QRect& area, const std::function<bool(QColor)>& test);

// Largest difference of a channel from `background` in `area`: how much ink there is.
int strongestInk(const QImage& image, const QRect& area, QColor background);

} // namespace tolvane::testing
