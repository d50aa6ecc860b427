#include "chart/chartrender.h"

#include "chart/chartscale.h"

#include <QFontDatabase>
#include <QFontInfo>

QString chart_fontFamily() {
    static const QString family = [] {
        const QString verdana = QStringLiteral("Verdana");
        if (QFontDatabase::families().contains(verdana))
            return verdana;
        QFont sans;
        sans.setStyleHint(QFont::SansSerif);
        sans.setFamily(QStringLiteral("sans-serif"));
        return QFontInfo(sans).family();
    }();
    return family;
}

QFont chart_font(int points, bool boldUnderlined) {
    QFont f(chart_fontFamily());
    f.setPixelSize(chart_round(points * 96.0 / 72.0));
    f.setBold(boldUnderlined);
    f.setUnderline(boldUnderlined);
    f.setItalic(false);
    f.setStrikeOut(false);
    return f;
}
