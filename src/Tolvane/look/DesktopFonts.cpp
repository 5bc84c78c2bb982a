#include "Tolvane/look/DesktopFonts.h"

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

} // namespace

// Looked up once: the installed fonts do not change under a running program often enough to
// pay for a search on every paint. Faces desktops commonly ship come first, then any family
// whose name says it is rounded.
const QString& roundedFamily() {
    static const QString family = [] {
        const QStringList installed = QFontDatabase::families();
        for (const char* name : {"SF Pro Rounded", "Nunito", "Varela Round", "M PLUS Rounded 1c",
                                 "Quicksand", "Comfortaa"}) {
            if (installed.contains(QString::fromLatin1(name))) {
                return QString::fromLatin1(name);
            }
        }
        for (const QString& name : installed) {
            if (name.contains(QLatin1String("Rounded"), Qt::CaseInsensitive) ||
                name.endsWith(QLatin1String(" Round"), Qt::CaseInsensitive)) {
                return name;
            }
        }
        return QString();
    }();
    return family;
}

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
