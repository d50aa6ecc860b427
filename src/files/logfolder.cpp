#include "files/logfolder.h"

#include "files/datafilescanner.h"
#include "files/loglines.h"

#include "core/timetext.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <optional>

namespace logfolder {

namespace {

const QString prefix = QStringLiteral("NAKOS");

QString inFolder(const QString &folder, const QString &name) {
    if (folder.isEmpty() || folder.endsWith(QLatin1Char('/')) || folder.endsWith(QDir::separator()))
        return folder + name;
    return folder + QDir::separator() + name;
}

// Passes each line to the log reader and remembers the first and the last
// record it gives; keeps none itself.
class RecordSpan : public DataLineReader {
public:
    bool readLine(const char *line, const char *end, DataPoint &) override {
        DataPoint p;
        if (!reader.readLine(line, end, p))
            return false;
        if (!first)
            first = p;
        last = p;
        return false;
    }

    LogLineReader reader{0, 0}; // every line counts
    std::optional<DataPoint> first;
    std::optional<DataPoint> last;
};

QString stamp(const DataPoint &p) {
    return dateText(p) + QLatin1String("   ") + timeText(p);
}

} // namespace

QString describe(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return noInformation;
    const int64_t size = file.size();
    const bool whole = size <= wholeFileLimit;
    RecordSpan span;
    DataFileScanner scanner(nullptr, 0);
    scanner.setLineReader(&span);
    const CalTable none;
    scanner.reset(none, none);

    char block[tailBytes + 1];
    // The beginning, up to the first record (the whole of a small file).
    const int64_t headEnd = whole ? size : size - tailBytes;
    for (int64_t at = 0; at < headEnd && (whole || !span.first);) {
        const qint64 n = file.read(block, std::min<int64_t>(tailBytes, headEnd - at));
        if (n <= 0)
            break;
        scanner.scan(block, n);
        at += n;
    }
    if (!whole && file.seek(size - tailBytes - 1)) {
        // The byte before the tail tells whether it starts with a whole line;
        // a piece of a line is not read, it could pass for a record.
        const qint64 n = file.read(block, tailBytes + 1);
        if (n > 0) {
            const char *p = block + 1;
            const char *const end = block + n;
            if (block[0] != '\r' && block[0] != '\n') {
                while (p != end && *p != '\r' && *p != '\n')
                    ++p;
            }
            scanner.reset(none, none);
            scanner.scan(p, end - p);
        }
    }
    if (!span.first)
        return noInformation;
    return stamp(*span.first) + QLatin1String("     to     ") + stamp(*span.last);
}

QList<LogFileEntry> list(const QString &folder) {
    QDir dir(folder);
    dir.setFilter(QDir::Files | QDir::CaseSensitive);
    dir.setSorting(QDir::Name);
    dir.setNameFilters({prefix + QLatin1Char('*')});
    QList<LogFileEntry> entries;
    const QStringList names = dir.entryList();
    for (const QString &name : names) {
        if (entries.size() == maxFiles)
            break;
        if (name.startsWith(prefix))
            entries.append({name, describe(inFolder(folder, name))});
    }
    return entries;
}

QString combinedFileName(const QString &folder, const QList<LogFileEntry> &entries) {
    if (entries.isEmpty())
        return QString();
    return inFolder(folder, entries.constFirst().name + QLatin1String("_combined.txt"));
}

QList<LogFileRef> files(const QString &folder, const QList<LogFileEntry> &entries,
                        const QList<int> &rows) {
    QList<int> sorted = rows;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    QList<LogFileRef> chosen;
    for (int row : std::as_const(sorted)) {
        if (row >= 0 && row < entries.size())
            chosen.append(logFile_ref(inFolder(folder, entries[row].name)));
    }
    return chosen;
}

} // namespace logfolder
