// Daily log chains found by name, and the log files of a folder with the
// time span each covers.
#include "logtext.h"

#include "files/logchain.h"
#include "files/logfolder.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool writeFile(const QString &path, const QByteArray &bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

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
    void chain_data();
    void chain();
    void chainStopsAt100();
    void startNames_data();
    void startNames();
    void folder();
};

void TestLogFiles::chain_data() {
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QStringList>("chain");
    const auto list = [](const char *names) {
        return QString::fromLatin1(names).split(QLatin1Char(' '));
    };
    QTest::newRow("30 April, 1 May, 2 May missing")
        << list("NAKOS44U.log NAKOS451.log NAKOS453.log") << QStringLiteral("NAKOS44U.log")
        << list("NAKOS44U.log NAKOS451.log");
    QTest::newRow("31 December, 1 January")
        << list("NAKOS4CV.log NAKOS511.log") << QStringLiteral("NAKOS4CV.log")
        << list("NAKOS4CV.log NAKOS511.log");
    QTest::newRow("leap year: a missing 29 February ends it")
        << list("NAKOS42S.log NAKOS431.log") << QStringLiteral("NAKOS42S.log")
        << list("NAKOS42S.log");
    QTest::newRow("leap year: 29 February")
        << list("NAKOS42S.log NAKOS42T.log NAKOS431.log") << QStringLiteral("NAKOS42S.log")
        << list("NAKOS42S.log NAKOS42T.log NAKOS431.log");
    QTest::newRow("common year: 28 February, 1 March")
        << list("NAKOS52S.log NAKOS531.log") << QStringLiteral("NAKOS52S.log")
        << list("NAKOS52S.log NAKOS531.log");
    QTest::newRow("year 9 to year A")
        << list("NAKOS9CV.x NAKOSA11.x") << QStringLiteral("NAKOS9CV.x")
        << list("NAKOS9CV.x NAKOSA11.x");
    QTest::newRow("start missing")
        << list("NAKOS412.log") << QStringLiteral("NAKOS411.log") << QStringList();
    QTest::newRow("rest of the name kept")
        << list("NAKOS411_a.txt NAKOS412_a.txt NAKOS413.txt") << QStringLiteral("NAKOS411_a.txt")
        << list("NAKOS411_a.txt NAKOS412_a.txt");
    QTest::newRow("a letter year in the start name reads 0")
        << list("NAKOSA11.log NAKOS011.log") << QStringLiteral("NAKOSA11.log")
        << list("NAKOS011.log");
}

void TestLogFiles::chain() {
    QFETCH(QStringList, present);
    QFETCH(QString, start);
    QFETCH(QStringList, chain);
    QTemporaryDir dir;
    for (const QString &name : std::as_const(present))
        QVERIFY(writeFile(dir.filePath(name), name.toLatin1()));
    QStringList found;
    for (const LogFileRef &f : logchain::collect(dir.filePath(start))) {
        QVERIFY(f.path.startsWith(dir.path() + QLatin1Char('/')));
        QCOMPARE(f.size, QFileInfo(f.path).fileName().size());
        found << QFileInfo(f.path).fileName();
    }
    QCOMPARE(found, chain);
}

void TestLogFiles::chainStopsAt100() {
    QTemporaryDir dir;
    const QDate first(2020, 1, 1);
    for (int i = 0; i <= 100; ++i)
        QVERIFY(writeFile(dir.filePath(dayName(first.addDays(i))), QByteArray(i, 'x')));
    const QList<LogFileRef> chain = logchain::collect(dir.filePath(dayName(first)));
    QCOMPARE(chain.size(), 100);
    QCOMPARE(chain.constLast().path, dir.filePath(dayName(first.addDays(99))));
    QCOMPARE(chain.constLast().size, 99);
}

void TestLogFiles::startNames_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("valid");
    QTest::newRow("5 March") << QStringLiteral("NAKOS435.log") << true;
    QTest::newRow("letter year") << QStringLiteral("NAKOSZCV") << true;
    QTest::newRow("lower-case prefix") << QStringLiteral("nakos435.log") << false;
    QTest::newRow("prefix inside") << QStringLiteral("XNAKOS435.log") << false;
    QTest::newRow("too short") << QStringLiteral("NAKOS43") << false;
    QTest::newRow("month 0") << QStringLiteral("NAKOS405.log") << false;
    QTest::newRow("month 13") << QStringLiteral("NAKOS4D5.log") << false;
    QTest::newRow("day 32") << QStringLiteral("NAKOS43W.log") << false;
    QTest::newRow("lower-case day") << QStringLiteral("NAKOS43a.log") << false;
}

void TestLogFiles::startNames() {
    QFETCH(QString, name);
    QFETCH(bool, valid);
    QCOMPARE(logchain::isStartName(name), valid);
}

// Only "NAKOS" files, in name order, each with the span of its records; the
// combined file's name; the chosen files with their sizes in list order.
void TestLogFiles::folder() {
    QTemporaryDir tmp;
    const QString folder = tmp.path() + QLatin1Char('/');
    // Over 16384 bytes: its end is read apart from its beginning.
    QByteArray big = ":oilname=x\r\n# head\r\n" + fixedLines(300) + fixedLines(3, "2024-03-06", 7);
    QVERIFY(big.size() > 16384);
    QVERIFY(writeFile(folder + QStringLiteral("NAKOS435.log"), big));
    QVERIFY(writeFile(folder + QStringLiteral("NAKOS436.log"),
                      " 2024-03-06 00:00:04 WATER 1\r\n 2024-03-06 23:59:56 WATER 2\r\n"));
    QVERIFY(writeFile(folder + QStringLiteral("NAKOS434.log"), fixedLines(200, "2024-03-04", 1)));
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
    QCOMPARE(logfolder::describe(folder + QStringLiteral("missing.log")), logfolder::noInformation);
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

QTEST_GUILESS_MAIN(TestLogFiles)
#include "test_logfiles.moc"
