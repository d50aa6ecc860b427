#include "files/filedialogs.h"

#include <QDir>
#include <QStringList>

const QString FileDialogs::dataFilter =
    QStringLiteral("Text data files (*.txt)|*.txt|All files (*.*)|*.*|");
const QString FileDialogs::logFilter =
    QStringLiteral("Log files (*.log)|*.log|All files (*.*)|*.*|");
const QString FileDialogs::csvFilter =
    QStringLiteral("CSV files (*.csv)|*.csv|All files (*.*)|*.*|");
const QString FileDialogs::initialFolder = QStringLiteral("C:\\");

QString FileDialogs::dialog_openDataFile(const QString &initialPath) {
    return fileDialog(Kind::Open, dataFilter, initialPath);
}

QString FileDialogs::dialog_saveDataFile(const QString &initialPath) {
    return fileDialog(Kind::Save, dataFilter, initialPath);
}

QString FileDialogs::dialog_openLogFile(const QString &initialPath) {
    return fileDialog(Kind::Open, logFilter, initialPath);
}

QString FileDialogs::dialog_saveCsvFile(const QString &initialPath) {
    return fileDialog(Kind::Save, csvFilter, initialPath);
}

QString FileDialogs::qtFilter(const QString &filter) {
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList entries;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString &description = parts[i];
        if (description.isEmpty())
            continue;
        QString pattern = parts[i + 1];
        pattern.replace(QLatin1Char(';'), QLatin1Char(' '));
        if (description.contains(QLatin1Char('(')) || pattern.isEmpty())
            entries << description;
        else
            entries << description + QLatin1String(" (") + pattern + QLatin1Char(')');
    }
    return entries.join(QLatin1String(";;"));
}

QString FileDialogs::startPath(const QString &initialPath) {
#ifdef Q_OS_WIN
    return initialPath;
#else
    // The drive root, with or without its separator ("Import directory"
    // starts at "C:").
    if (initialPath.compare(initialFolder, Qt::CaseInsensitive) == 0 ||
        initialPath.compare(initialFolder.chopped(1), Qt::CaseInsensitive) == 0)
        return QDir::homePath();
    return initialPath;
#endif
}
