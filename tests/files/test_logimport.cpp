// The sensor log import: line formats, thinning, the limit, several files.
#include "logtext.h"

#include "files/logimport.h"
#include "files/loglines.h"
#include "support/recordingprogress.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

#include <vector>

namespace {

struct Rig {
    MeasurementStore store;
    RecordingProgress progress;
    LogImport import{store, &progress};

    FileResult run(QByteArray bytes, MergeMode mode = MergeMode::Replace, int32_t limit = 130000,
                   int64_t size = -1) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        return import.logFile_import(buffer, mode, false, size < 0 ? bytes.size() : size, limit,
                                     QStringLiteral("test.log"));
    }
    // n points with negative water values in place of the store's contents.
    void fill(int n) {
        std::vector<DataPoint> points(static_cast<size_t>(n));
        for (int i = 0; i < n; ++i)
            points[size_t(i)].water = -1.0f - float(i);
        QVERIFY(!store.merge(points.data(), n, MergeMode::Replace));
    }
};

const char *const stamp = "2024-03-05 14:22:10";

} // namespace

class TestLogImport : public QObject {
    Q_OBJECT
private slots:

    void lines_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("fields");
        const auto row = [](const char *name, const QByteArray &text, int count = 0,
                            const QString &fields = {}) {
            QTest::newRow(name) << text << count << fields;
        };
        const auto bad = [](char type, int by) { return fixedLine(type, stamp, {}, by) + "\r\n"; };
        const QByteArray a = fixedLine('A', stamp), b = fixedLine('B', stamp);
        const QString aFields =
            QStringLiteral("2024-3-5 14:22:10 150.5 1800 45.25 0.125 2345 2100 1");
        row("A", a + "\r\n", 1, aFields);
        row("A, LF only, last line unended", a + "\n" + a, 1, aFields);
        row("A bad check, then good", bad('A', 1) + a + "\r\n" + bad('A', 99), 1, aFields);
        row("A one short", a.chopped(1) + "\r\n");
        row("A as B", "A" + b.mid(1) + "\r\n");
        row("B", b + "\r\n", 1,
            QStringLiteral("2024-3-5 14:22:10 150.5 1800 45.25 0.125 2345 2100 2"));
        row("B bad check", bad('B', 50));
        row("B line in an A file", a + "\r\n" + b + "\r\n", 1, aFields);
        row("metadata and comment before A", ":oilname= Gear oil \r\n# sensor 12\r\n" + a + "\r\n",
            1, aFields);
        row("unknown format", "X" + a.mid(1) + "\r\n" + a + "\r\n");

        const QByteArray k = " 2024-03-05 14:22:10 WATER 12,5 PRESSURE 1013 TEMPERATURE 45.2 "
                             "SOOT 0.12 ADCREF 2345 ADCMEAS 2100";
        const QString kFields = QStringLiteral("2024-3-5 14:22:10 12.5 1013 45.2 0.12 2345 2100 0");
        row("keywords", k + "\r\n", 1, kFields);
        row("keywords, comment at the end", k + " # ok: x\r\n", 1, kFields);
        row("lower case, blanks around separators, stream",
            " 2024 - 3 -5\t7:8 : 9 water 1 Stream 3 Foo 9 soot 2\r\n", 1,
            QStringLiteral("2024-3-5 7:8:9 1 0 0 2 0 0 3"));
        row("missing keywords read 0", " 2024-03-05 14:22:10\r\n 2024-03-05 14:22:11 WATER 7\r\n",
            2, QStringLiteral("2024-3-5 14:22:11 7 0 0 0 0 0 0"));
        row("keyword without number", k + " SOOT\r\n");
        row("ADC REF split", " 2024-03-05 14:22:10 ADC REF 5\r\n");
        row("bad character", QByteArray(k).replace("45.2", "45;2") + "\r\n");
        row("blank inside a number", " 2024-03-05 14:22:10 WATER 1 2\r\n");
        row("# inside the time", " 2024-03-05 14:22 # 10\r\n");
        row("day glued to hour", " 2024-03-0514:22:10 WATER 1\r\n");
    }

    void lines() {
        QFETCH(QByteArray, text);
        QFETCH(int, count);
        Rig rig;
        const FileResult r = rig.run(text);
        QVERIFY(!r.failed());
        QCOMPARE(rig.store.dataPoint_count, count);
        if (count > 0) {
            const DataPoint &p = rig.store.dataPoints[size_t(count - 1)];
            QTEST(QString::asprintf("%d-%d-%d %d:%d:%d %g %g %g %g %g %g %d", p.year, p.month,
                                    p.day, p.hour, p.minute, p.second, double(p.water),
                                    double(p.pressure), double(p.temperature), double(p.soot),
                                    double(p.adc_ref), double(p.adc_meas), p.stream),
                  "fields");
        }
        if (text.startsWith(":oilname"))
            QCOMPARE(r.oilName.value_or(QString()), QStringLiteral("Gear oil"));
        // Block splits against the whole-line path: fuzz_files_logimport.
    }

    void thinningStep_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<int>("limit");
        QTest::addColumn<int>("step");
        const int keyword = int(LogFormat::Keyword), a = int(LogFormat::FixedA),
                  b = int(LogFormat::FixedB);
        // Estimates from the line size of each format: halves go to the even
        // neighbour.
        QTest::newRow("114 x 10.5 -> 10") << keyword << qint64(1197) << 21 << 1;
        QTest::newRow("70 x 3.5 -> 4") << b << qint64(245) << 8 << 2;
        QTest::newRow("half the limit -> 2") << a << qint64(2500 * 67) << 5000 << 2;
        QTest::newRow("just under half -> 1") << a << qint64(2499 * 67) << 5000 << 1;
        QTest::newRow("2.5 -> 2") << a << qint64(7500 * 67) << 5000 << 2;
        QTest::newRow("3.5 -> 4") << a << qint64(12500 * 67) << 5000 << 4;
        QTest::newRow("no limit") << a << qint64(1) << 0 << 1;
        QTest::newRow("held to 16 bits") << a << (qint64(1) << 40) << 101 << 32767;
    }

    void thinningStep() {
        QFETCH(int, format);
        QFETCH(qint64, size);
        QFETCH(int, limit);
        const int64_t estimate = LogLineReader::recordEstimate(LogFormat(format), size);
        QTEST(int(LogLineReader::thinningStep(estimate, limit)), "step");
    }

    // 670000 bytes of "A" lines with the limit 5000: every third data line is
    // kept; metadata and comment lines do not count. Then the same from a file,
    // with the progress window.
    void thinsLargeFile() {
        Rig rig;
        QByteArray text = fixedLines(10000);
        text.insert(2 * 67, ":alarmthreshold=7\r\n# note\r\n");
        text.insert(67, ":oilname=x\r\n");
        QVERIFY(!rig.run(text, MergeMode::Replace, 5000, 670000).failed());
        QCOMPARE(rig.store.dataPoint_count, 3333);
        QCOMPARE(rig.store.dataPoints[0].water, 2.0f);
        QCOMPARE(rig.store.dataPoints[3332].water, 9998.0f);
        QCOMPARE(rig.store.alarmThreshold, 7.0f);

        QTemporaryDir dir;
        const QString name = dir.filePath(QStringLiteral("big.log"));
        QVERIFY(writeFile(name, fixedLines(10000)));
        QVERIFY(!rig.import.logFile_import(name, MergeMode::Replace, true, 670000, 5000).failed());
        QCOMPARE(rig.store.dataPoint_count, 3333);
        QCOMPARE(rig.progress.captions, QStringLiteral("Importing file...|end").split(u'|'));
    }

    // More records than the limit (a file denser than its size suggests), or
    // than the memory's room: a failure, and the store, its metadata and its
    // mark stay as they were. Exactly the limit fits.
    void limitFailureChangesNothing() {
        Rig rig;
        rig.fill(3);
        rig.store.alarmThreshold = 9.0f;
        rig.store.oilName = QStringLiteral("old");
        rig.store.calTable.count = 2;
        rig.store.data_changed = true;
        const QByteArray meta = ":alarmthreshold=5\r\n:oilname=new\r\n:caltable=\r\n";
        FileResult r = rig.run(meta + fixedLines(201), MergeMode::Append, 200, 0);
        QCOMPARE(r.code, FileResult::Code::TooManyRecords);
        QVERIFY(r.message.contains(QStringLiteral("test.log")));
        QVERIFY(r.message.contains(QStringLiteral("200")));
        rig.fill(130000 - 150);
        rig.store.data_changed = true;
        r = rig.run(meta + fixedLines(151), MergeMode::InsertBefore, 0);
        QCOMPARE(r.code, FileResult::Code::TooManyRecords);
        QCOMPARE(rig.store.dataPoint_count, 130000 - 150);
        QCOMPARE(rig.store.alarmThreshold, 9.0f);
        QCOMPARE(rig.store.oilName, QStringLiteral("old"));
        QCOMPARE(int(rig.store.calTable.count), 2);
        QVERIFY(rig.store.data_changed);

        QVERIFY(!rig.run(meta + fixedLines(150), MergeMode::InsertBefore, 150, 0).failed());
        QCOMPARE(rig.store.dataPoint_count, 130000);
        QCOMPARE(rig.store.dataPoints[149].water, 149.0f);
        QCOMPARE(int(rig.store.calTable.count), 0); // the file had the line
    }

    void importLoop() {
        QTemporaryDir dir;
        QList<LogFileRef> files;
        for (int day = 1; day <= 3; ++day) {
            const QString name = dir.filePath(QStringLiteral("d%1.log").arg(day));
            const QByteArray line = fixedLine('A', stamp, {.pressure = float(day)}) + "\r\n";
            QVERIFY(writeFile(name, (day == 2 ? ":oilname=second\r\n" : "") + line + line));
            files << logFile_ref(name);
        }
        QCOMPARE(files[0].size, 2 * 67);
        const auto pressures = [](const MeasurementStore &s) {
            QList<float> p;
            for (int i = 0; i < s.dataPoint_count; ++i)
                p << s.dataPoints[size_t(i)].pressure;
            return p;
        };

        Rig rig;
        rig.fill(5);
        rig.store.data_changed = true;
        // A file gone since it was listed is passed over.
        LogImportRun run = rig.import.logFiles_import(
            {files[0], {dir.filePath(QStringLiteral("gone.log")), 10}, files[1], files[2]},
            MergeMode::Replace, false);
        QCOMPARE(pressures(rig.store), (QList<float>{1, 1, 2, 2, 3, 3}));
        QCOMPARE(run.filesImported, 3);
        QCOMPARE(run.failures.size(), 1);
        QCOMPARE(run.failures[0].code, FileResult::Code::OpenFailed);
        QVERIFY(!run.capacityFailure());
        QCOMPARE(run.oilName.value_or(QString()), QStringLiteral("second"));
        QVERIFY(!rig.store.data_changed);

        // Insert before: the files end up in their order, before the old points.
        rig.fill(2);
        run = rig.import.logFiles_import(files, MergeMode::InsertBefore, false);
        QCOMPARE(pressures(rig.store), (QList<float>{1, 1, 2, 2, 3, 3, 0, 0}));
        QVERIFY(rig.store.data_changed);

        // Append with 100 free points: nothing at all.
        rig.fill(130000 - 100);
        rig.store.data_changed = false;
        run = rig.import.logFiles_import(files, MergeMode::Append, false);
        QVERIFY(run.noRoom);
        QCOMPARE(rig.store.dataPoint_count, 130000 - 100);
        QVERIFY(!rig.store.data_changed);

        // Room for 101, computed once: the first file fits, the second (102
        // points, its size given as 0 so that it is not thinned) no more, which
        // ends the run before the third.
        const LogFileRef unthinned{dir.filePath(QStringLiteral("many.log")), 0};
        QVERIFY(writeFile(unthinned.path, fixedLines(102)));
        rig.fill(130000 - 101);
        run = rig.import.logFiles_import({files[0], unthinned, files[2]}, MergeMode::Append, false);
        QCOMPARE(run.filesImported, 1);
        QVERIFY(run.capacityFailure());
        QCOMPARE(rig.store.dataPoint_count, 130000 - 99);
        QVERIFY(rig.store.data_changed);

        // A run whose first file does not fit leaves the mark as it was.
        rig.fill(130000 - 101);
        rig.store.data_changed = false;
        run = rig.import.logFiles_import({unthinned}, MergeMode::Append, false);
        QVERIFY(run.capacityFailure());
        QVERIFY(!rig.store.data_changed);
    }
};

QTEST_GUILESS_MAIN(TestLogImport)
#include "test_logimport.moc"
