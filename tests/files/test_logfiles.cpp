// Daily log chains found by name; a folder's log files and their time spans.
#include "logtext.h"

#include "files/logchain.h"
#include "files/logfolder.h"

#include <QDate>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The sensor's name of a day's log, from the calendar (year digit = years
// since 2020).
QString dayName(QDate d) {
    const char *digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return QStringLiteral("NAKOS") + QLatin1Char(digits[d.year() - 2020]) +
           QLatin1Char(digits[d.month()]) + QLatin1Char(digits[d.day()]) + QStringLiteral(".log");
}

} // namespace

class TestLogFiles : public QObject {
    Q_OBJECT
private slots:

    // Each row: the files present, the chain found from the start (the first of
    // them unless given).
    void chain_data() {
        QTest::addColumn<QStringList>("present");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QStringList>("chain");
        const auto row = [](const char *name, const char *present, const char *chain,
                            const char *start = nullptr) {
            const QStringList files = QString::fromLatin1(present).split(u' ');
            QTest::newRow(name) << files << (start ? QString::fromLatin1(start) : files[0])
                                << QString::fromLatin1(chain).split(u' ', Qt::SkipEmptyParts);
        };
        row("30 April, 1 May, 2 May missing", "NAKOS44U NAKOS451 NAKOS453", "NAKOS44U NAKOS451");
        row("31 December, 1 January", "NAKOS4CV NAKOS511", "NAKOS4CV NAKOS511");
        row("leap year: a missing 29 February ends it", "NAKOS42S NAKOS431", "NAKOS42S");
        row("leap year: 29 February", "NAKOS42S NAKOS42T NAKOS431", "NAKOS42S NAKOS42T NAKOS431");
        row("common year: 28 February, 1 March", "NAKOS52S NAKOS531", "NAKOS52S NAKOS531");
        row("year 9 to year A", "NAKOS9CV.x NAKOSA11.x", "NAKOS9CV.x NAKOSA11.x");
        row("start missing", "NAKOS412", "", "NAKOS411");
        row("rest of the name kept", "NAKOS411_a.txt NAKOS412_a.txt NAKOS413.txt",
            "NAKOS411_a.txt NAKOS412_a.txt");
        row("a letter year in the start name reads 0", "NAKOSA11.log NAKOS011.log", "NAKOS011.log");
        QStringList days; // 2020-01-01 and the 100 days after it
        for (QDate d(2020, 1, 1); days.size() <= 100; d = d.addDays(1))
            days << dayName(d);
        QTest::newRow("stops at 100") << days << days[0] << days.first(100);
    }

    void chain() {
        QFETCH(QStringList, present);
        QFETCH(QString, start);
        QTemporaryDir dir;
        for (const QString &name : std::as_const(present))
            QVERIFY(writeFile(dir.filePath(name), name.toLatin1()));
        QStringList found;
        for (const LogFileRef &f : logchain::collect(dir.filePath(start))) {
            QVERIFY(f.path.startsWith(dir.path() + QLatin1Char('/')));
            QCOMPARE(f.size, QFileInfo(f.path).fileName().size());
            found << QFileInfo(f.path).fileName();
        }
        QTEST(found, "chain");
    }

    // Invalid: lower-case prefix, prefix inside, too short, month 0, month 13,
    // day 32, lower-case day.
    void startNames() {
        for (const char *name : {"NAKOS435.log", "NAKOSZCV"})
            QVERIFY2(logchain::isStartName(QLatin1String(name)), name);
        for (const char *name : {"nakos435.log", "XNAKOS435.log", "NAKOS43", "NAKOS405.log",
                                 "NAKOS4D5.log", "NAKOS43W.log", "NAKOS43a.log"})
            QVERIFY2(!logchain::isStartName(QLatin1String(name)), name);
    }

    // Only "NAKOS" files, in name order, each with the span of its records; the
    // combined file's name; the chosen files with their sizes in list order.
    void folder() {
        QTemporaryDir tmp;
        const QString folder = tmp.path() + QLatin1Char('/');
        // Over 16384 bytes: its end is read apart from its beginning.
        QByteArray big =
            ":oilname=x\r\n# head\r\n" + fixedLines(300) + fixedLines(3, "2024-03-06", 7);
        QVERIFY(big.size() > 16384);
        QVERIFY(writeFile(folder + QStringLiteral("NAKOS435.log"), big));
        QVERIFY(writeFile(folder + QStringLiteral("NAKOS436.log"),
                          " 2024-03-06 00:00:04 WATER 1\r\n 2024-03-06 23:59:56 WATER 2\r\n"));
        QVERIFY(
            writeFile(folder + QStringLiteral("NAKOS434.log"), fixedLines(200, "2024-03-04", 1)));
        QVERIFY(writeFile(folder + QStringLiteral("nakos437.log"), fixedLines(1)));
        QVERIFY(writeFile(folder + QStringLiteral("other.log"), fixedLines(1)));
        QVERIFY(QDir(folder).mkdir(QStringLiteral("NAKOS438.log")));

        const QList<LogFileEntry> entries = logfolder::list(folder);
        QStringList seen;
        for (const LogFileEntry &e : entries)
            seen << e.name + QLatin1Char('|') + e.description;
        QCOMPARE(seen, QStringList({
                           QStringLiteral("NAKOS434.log|No information available"),
                           QStringLiteral("NAKOS435.log|2024-03-05   00:00:00     to     "
                                          "2024-03-05   04:59:00"),
                           QStringLiteral("NAKOS436.log|2024-03-06   00:00:04     to     "
                                          "2024-03-06   23:59:56"),
                       }));
        QCOMPARE(logfolder::describe(folder + QStringLiteral("missing.log")),
                 logfolder::noInformation);
        QCOMPARE(logfolder::combinedFileName(folder, entries),
                 folder + QStringLiteral("NAKOS434.log_combined.txt"));
        QCOMPARE(logfolder::combinedFileName(tmp.path(), entries),
                 folder + QStringLiteral("NAKOS434.log_combined.txt"));

        const QList<LogFileRef> chosen = logfolder::files(folder, entries, {2, 1});
        QCOMPARE(chosen.size(), 2);
        QCOMPARE(chosen[0].path, folder + QStringLiteral("NAKOS435.log"));
        QCOMPARE(chosen[0].size, big.size());
        QCOMPARE(chosen[1].path, folder + QStringLiteral("NAKOS436.log"));
    }
};

QTEST_GUILESS_MAIN(TestLogFiles)
#include "test_logfiles.moc"
