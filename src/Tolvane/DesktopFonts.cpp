#include "Tolvane/DesktopFonts.h"

#include <QApplication>
#include <QFontDatabase>
#include <QStringList>

namespace tolvane::DesktopFonts {

namespace {

QFont sized(QFont font, int pixels, QFont::Weight weight) {
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

// Looked up once: the installed fonts do not change under a running program often enough to
// pay for a search on every paint.
const QString& roundedFamily() {
    static const QString family = [] {
        for (const QString& name : QFontDatabase::families()) {
            if (name.contains(QLatin1String("Rounded"), Qt::CaseInsensitive) ||
                name.endsWith(QLatin1String(" Round"), Qt::CaseInsensitive)) {
                return name;
            }
        }
        return QString();
    }();
    return family;
}

} // namespace

QFont ui(int pixels, QFont::Weight weight) {
    return sized(QApplication::font(), pixels, weight);
}

QFont rounded(int pixels, QFont::Weight weight) {
    QFont font = ui(pixels, weight);
    if (!roundedFamily().isEmpty()) {
        font.setFamilies({roundedFamily()});
    }
    return font;
}

QFont monospaced(int pixels, QFont::Weight weight) {
    return sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), pixels, weight);
}

} // namespace tolvane::DesktopFonts
