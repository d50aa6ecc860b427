#include "files/logchain.h"

#include "core/numbers.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <string_view>

namespace logchain {

namespace {

const QString prefix = QStringLiteral("NAKOS");
constexpr char digits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// The folder part of a path, separator included, as the caller wrote it.
qsizetype nameStart(const QString &path) {
    qsizetype cut = path.lastIndexOf(QLatin1Char('/'));
    if (QDir::separator() != QLatin1Char('/'))
        cut = std::max(cut, path.lastIndexOf(QDir::separator()));
    return cut + 1;
}

} // namespace

QChar base36Digit(int value) {
    return value >= 0 && value < 36 ? QLatin1Char(digits[value]) : QChar();
}

int base36Value(QChar digit) {
    const char16_t c = digit.unicode();
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'A' && c <= u'Z')
        return c - u'A' + 10;
    return -1;
}

int monthLength(int month, int year) {
    switch (month) {
    case 1:
    case 3:
    case 5:
    case 7:
    case 8:
    case 10:
    case 12:
        return 31;
    case 4:
    case 6:
    case 9:
    case 11:
        return 30;
    case 2:
        return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0) ? 29 : 28;
    default:
        return 0;
    }
}

bool isStartName(const QString &fileName) {
    if (!fileName.startsWith(prefix) || fileName.size() < 8)
        return false;
    const int month = base36Value(fileName[6]);
    const int day = base36Value(fileName[7]);
    return month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

QString dayFileName(const QString &startName, int year, int month, int day) {
    const QChar y = base36Digit(year), m = base36Digit(month), d = base36Digit(day);
    if (y.isNull() || m.isNull() || d.isNull())
        return QString();
    return startName.left(5) + y + m + d + startName.mid(8);
}

QList<LogFileRef> collect(const QString &startPath) {
    const QString folder = startPath.left(nameStart(startPath));
    const QString start = startPath.mid(folder.size());
    if (!isStartName(start))
        return {};
    const char yearChar = start[5].unicode() < 0x80 ? char(start[5].unicode()) : '\0';
    int year = leadingNumber(std::string_view(&yearChar, 1));
    int month = base36Value(start[6]);
    int day = base36Value(start[7]);

    QList<LogFileRef> chain;
    while (chain.size() < maxFiles) {
        const QString name = dayFileName(start, year, month, day);
        if (name.isEmpty())
            break; // past the last year a digit can name
        QFile file(folder + name);
        if (file.open(QIODevice::ReadOnly)) {
            chain.append({file.fileName(), int64_t(file.size())});
            ++day;
        } else if (day != 1) {
            // Past the month's end: go on with the next month's first day;
            // a day missing inside the month ends the chain.
            if (day <= monthLength(month, year))
                break;
            day = 1;
            ++month;
        } else {
            if (month <= 12)
                break;
            month = 1;
            ++year;
        }
    }
    return chain;
}

} // namespace logchain
