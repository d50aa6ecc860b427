#include "simlogs.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cmath>

namespace {

constexpr char base36[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// The value right-aligned in `width` characters with `decimals` places, held
// within what the column can show; "." whatever the locale.
QByteArray column(double value, int width, int decimals) {
    const double step = std::pow(10.0, -decimals);
    const double top = std::pow(10.0, width - (decimals > 0 ? decimals + 1 : 0));
    const double clamped = std::clamp(value, -(top / 10.0 - step), top - step);
    return QByteArray::number(clamped, 'f', decimals).rightJustified(width);
}

QByteArray withCheck(QByteArray line, bool spoil) {
    uint8_t sum = 0;
    for (char c : std::as_const(line))
        sum = uint8_t(sum + uint8_t(c));
    const int check = (sum % 100 + (spoil ? 37 : 0)) % 100;
    return line + QByteArray::number(check).rightJustified(2, '0');
}

} // namespace

QString simLogName(QDate day) {
    return QStringLiteral("NAKOS") + QLatin1Char(base36[day.year() - 2020]) +
           QLatin1Char(base36[day.month()]) + QLatin1Char(base36[day.day()]) +
           QStringLiteral(".log");
}

QByteArray simLogLine(const SimReading &r, SimLogFormat format, int stream, bool spoilCheck) {
    const QByteArray stamp = r.stamp.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toLatin1();
    if (format == SimLogFormat::Keyword) {
        return ' ' + stamp + " WATER " + column(r.water, 8, 1) + " PRESSURE " +
               column(r.pressure, 7, 1) + " TEMPERATURE " + column(r.temperature, 7, 2) + " SOOT " +
               column(r.soot, 7, 3) + " ADCREF " + column(r.adcRef, 5, 0) + " ADCMEAS " +
               column(r.adcMeas, 5, 0);
    }
    QByteArray line = QByteArray(format == SimLogFormat::B ? "B " : "A ") + stamp + ' ' +
                      column(r.water, 7, 1) + ' ' + column(r.pressure, 5, 0) + ' ' +
                      column(r.temperature, 6, 2) + ' ' + column(r.soot, 7, 3) + ' ' +
                      column(r.adcRef, 5, 0) + ' ' + column(r.adcMeas, 5, 0) + ' ';
    if (format == SimLogFormat::B)
        line += QByteArray::number(std::clamp(stream, 0, 99)).rightJustified(2) + ' ';
    return withCheck(line, spoilCheck);
}

QStringList writeSimLogs(const SimLogOptions &o, QString *error) {
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return QStringList();
    };
    const QDate last = o.start.addDays(o.days - 1);
    if (!o.start.isValid() || o.days < 1 || o.start.year() < 2020 || last.year() > 2055)
        return fail(QStringLiteral("the days must lie between 2020 and 2055"));
    if (o.intervalSeconds < 1)
        return fail(QStringLiteral("the interval must be at least a second"));
    if (o.badChecks > 0 && o.format == SimLogFormat::Keyword)
        return fail(QStringLiteral("keyword lines have no check number to spoil"));

    const int perDay = (86400 + o.intervalSeconds - 1) / o.intervalSeconds;
    const int64_t total = int64_t(perDay) * o.days;
    ReadingGenerator generator(o.seed, o.stream);
    QStringList written;
    int64_t record = 0;
    QDir().mkpath(o.folder); // a folder it cannot make shows as the first file's failure
    for (QDate day = o.start; day <= last; day = day.addDays(1)) {
        const QString path = QDir(o.folder).filePath(simLogName(day));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return fail(QStringLiteral("cannot write %1").arg(path));
        QByteArray text;
        // UTC: every day has its 24 hours, whatever the local clock does.
        const QDateTime midnight(day, QTime(0, 0), Qt::UTC);
        for (int i = 0; i < perDay; ++i, ++record) {
            // Exactly badChecks records, spread evenly over all of them.
            const bool spoil = (record + 1) * o.badChecks / total > record * o.badChecks / total;
            const SimReading r = generator.next(midnight.addSecs(int64_t(i) * o.intervalSeconds));
            text += simLogLine(r, o.format, o.stream, spoil) + "\r\n";
        }
        if (file.write(text) != text.size() || !file.flush())
            return fail(QStringLiteral("cannot write %1").arg(path));
        written << path;
    }
    return written;
}
