#pragma once

#include <QColor>
#include <QLinearGradient>
#include <QPointF>
#include <QRectF>

namespace tolvane {

// Two colours and five linear gradients, the same in light and dark panels. Start and end
// are unit points of the painted rectangle, with y growing downwards.
struct ThemeGradient {
    QColor first;
    QColor second;
    QPointF start;
    QPointF end;

    QLinearGradient over(const QRectF& rect) const;
    ThemeGradient withOpacity(qreal opacity) const;
};

namespace Theme {
// The program's blue, shared by the tray icon and the menu, and the violet it fades into.
const QColor& cobalt();
const QColor& violet();
const ThemeGradient& cpu();
const ThemeGradient& memory();
const ThemeGradient& storage();
const QColor& cleanStart();
const ThemeGradient& cleanGradient();
const ThemeGradient& warn();
} // namespace Theme

namespace UnitPoint {
inline constexpr QPointF top{0.5, 0.0};
inline constexpr QPointF bottom{0.5, 1.0};
inline constexpr QPointF leading{0.0, 0.5};
inline constexpr QPointF trailing{1.0, 0.5};
inline constexpr QPointF topLeading{0.0, 0.0};
inline constexpr QPointF bottomTrailing{1.0, 1.0};
} // namespace UnitPoint

} // namespace tolvane
