#include "Tolvane/look/Theme.h"

namespace tolvane {

QLinearGradient ThemeGradient::over(const QRectF& rect) const {
    const auto at = [&rect](QPointF unit) {
        return QPointF(rect.left() + unit.x() * rect.width(),
                       rect.top() + unit.y() * rect.height());
    };
    QLinearGradient gradient(at(start), at(end));
    gradient.setColorAt(0, first);
    gradient.setColorAt(1, second);
    return gradient;
}

ThemeGradient ThemeGradient::withOpacity(qreal opacity) const {
    ThemeGradient faded = *this;
    faded.first.setAlphaF(float(first.alphaF() * opacity));
    faded.second.setAlphaF(float(second.alphaF() * opacity));
    return faded;
}

namespace Theme {

const QColor& cobalt() {
    static const QColor c(59, 91, 255);
    return c;
}

const QColor& violet() {
    static const QColor c(138, 123, 255);
    return c;
}

const ThemeGradient& cpu() {
    static const ThemeGradient g{cobalt(), violet(), UnitPoint::top, UnitPoint::bottom};
    return g;
}

const ThemeGradient& memory() {
    static const ThemeGradient g{QColor(20, 184, 166), QColor(74, 222, 128), UnitPoint::top,
                                 UnitPoint::bottom};
    return g;
}

const ThemeGradient& storage() {
    static const ThemeGradient g{QColor(245, 158, 11), QColor(249, 115, 98), UnitPoint::top,
                                 UnitPoint::bottom};
    return g;
}

const QColor& cleanStart() {
    static const QColor c(34, 193, 238);
    return c;
}

const ThemeGradient& cleanGradient() {
    static const ThemeGradient g{cleanStart(), cobalt(), UnitPoint::leading, UnitPoint::trailing};
    return g;
}

const ThemeGradient& warn() {
    static const ThemeGradient g{QColor(255, 95, 109), QColor(255, 59, 48), UnitPoint::top,
                                 UnitPoint::bottom};
    return g;
}

} // namespace Theme
} // namespace tolvane
