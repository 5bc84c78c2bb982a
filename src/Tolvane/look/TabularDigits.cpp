#include "Tolvane/look/TabularDigits.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace tolvane::TabularDigits {

namespace {

bool isDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

qreal cellWidth(const QFontMetricsF& metrics) {
    qreal widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit) {
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    }
    return widest;
}

// Calls `piece` for each run of text between digits and for each digit, left to right, with
// the run's left edge and the width it takes.
template <typename Piece>
qreal walk(const QString& text, const QFontMetricsF& metrics, Piece&& piece) {
    const qreal cell = cellWidth(metrics);
    qreal x = 0;
    qsizetype start = 0;
    while (start < text.size()) {
        if (isDigit(text[start])) {
            const QString digit(text[start]);
            piece(digit, x + (cell - metrics.horizontalAdvance(digit)) / 2);
            x += cell;
            ++start;
            continue;
        }
        qsizetype end = start;
        while (end < text.size() && !isDigit(text[end])) {
            ++end;
        }
        const QString run = text.mid(start, end - start);
        piece(run, x);
        x += metrics.horizontalAdvance(run);
        start = end;
    }
    return x;
}

} // namespace

qreal width(const QString& text, const QFont& font) {
    return walk(text, QFontMetricsF(font), [](const QString&, qreal) {});
}

QString elided(const QString& text, const QFont& font, qreal room) {
    if (width(text, font) <= room) {
        return text;
    }
    const QString ellipsis(QChar(0x2026));
    QString cut = text;
    while (!cut.isEmpty() && width(cut + ellipsis, font) > room) {
        cut.chop(1);
    }
    return cut + ellipsis;
}

void draw(QPainter& painter, const QString& text, QPointF origin, const QFont& font) {
    painter.setFont(font);
    walk(text, QFontMetricsF(font), [&](const QString& piece, qreal left) {
        painter.drawText(origin + QPointF(left, 0), piece);
    });
}

} // namespace tolvane::TabularDigits
