// The simulated sensor: its log, replies and faults; the log files it writes.
#include "core/clock.h"
#include "files/logchain.h"
#include "files/logimport.h"
#include "sensorsim.h"
#include "simlogs.h"
#include "support/scriptednotifier.h"

#include <QTemporaryDir>
#include <QTest>

class TestSensorSim : public QObject {
    Q_OBJECT

private slots:

    void logAndReplies() {
        FixedClock clock; // 2024-03-05 14:22:10
        SensorSimulator sim({.readingIntervalMs = 0, .logSize = 5, .prefill = 8, .faults = {}},
                            &clock);
        // The clock stands still: each new reading still gets its own second,
        // and the log keeps the most recent ones.
        sim.addReading();
        QCOMPARE(sim.logLines().size(), size_t(5));
        QVERIFY(sim.logLines().back().startsWith("2024-03-05 14:22:11 WATER "));
        const QByteArray list = sim.replyTo("list");
        QVERIFY(list.startsWith("list\r\n\r\n2024-03-05 14:22:07 WATER "));
        QCOMPARE(list.count("\r\n"), 2 + 5);
        QCOMPARE(sim.replyTo("alarmlimit get"),
                 "alarmlimit get\r\nALARMVALUE 500.0 ALARMDELAY 10\r\n");
        QCOMPARE(sim.replyTo("calibration get"),
                 "calibration get\r\nCAL SOURCE\r\n0.12500\t150\r\n0.25000\t300\r\n0.50000\t600\r\n"
                 "CAL TABLE\r\n0.10000\t100\r\n0.20000\t210\r\n");
        QCOMPARE(sim.replyTo("serial get"), "serial get\r\n");

        sim.setFaults({.noEcho = true, .garbage = true, .nulBytes = true});
        QCOMPARE(sim.replyTo("alarmlimit get"), "ALARMVALUE 500.0 ALARMDELAY 10\r\n");
        const QByteArray faulty = sim.replyTo("list");
        QCOMPARE(faulty.count("\r\n"), 1 + 5 + 1); // a garbage line after every third reading
        QCOMPARE(faulty.count('\0'), 2 * 5);
    }

    void scheduleLogsReadings() {
        SensorSimulator sim({.readingIntervalMs = 20, .faults = {}});
        QVERIFY(!sim.open());
        QTRY_VERIFY(sim.logLines().size() >= 3);
        sim.close();
        QVERIFY(!sim.isOpen());
    }

    void writesLogs_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("lineLength");
        QTest::addColumn<int>("badChecks");
        QTest::newRow("A") << int(SimLogFormat::A) << 65 << 0;
        QTest::newRow("B, 5 bad checks") << int(SimLogFormat::B) << 68 << 5;
        QTest::newRow("keyword") << int(SimLogFormat::Keyword) << 112 << 0;
    }

    // Three days across a leap day, as a chain the program finds and imports:
    // every record but the spoiled ones.
    void writesLogs() {
        QFETCH(int, format);
        QFETCH(int, lineLength);
        QFETCH(int, badChecks);
        QTemporaryDir dir;
        const SimLogOptions o{.folder = dir.path(),
                              .start = QDate(2024, 2, 28),
                              .days = 3,
                              .format = SimLogFormat(format),
                              .intervalSeconds = 600,
                              .badChecks = badChecks,
                              .stream = 4};
        QString error;
        const QStringList files = writeSimLogs(o, &error);
        QCOMPARE(files, QStringList({dir.filePath(QStringLiteral("NAKOS42S.log")),
                                     dir.filePath(QStringLiteral("NAKOS42T.log")),
                                     dir.filePath(QStringLiteral("NAKOS431.log"))}));
        QFile first(files[0]);
        QVERIFY(first.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = first.readAll().split('\n');
        QCOMPARE(lines.size(), 144 + 1);
        for (qsizetype i = 0; i + 1 < lines.size(); ++i)
            QCOMPARE(lines[i].size(), lineLength + 1); // with its CR

        MeasurementStore store;
        LogImport import(store);
        const LogImportRun run =
            import.logFiles_import(logchain::collect(files[0]), MergeMode::Replace, false);
        QCOMPARE(run.filesImported, 3);
        QCOMPARE(store.dataPoint_count, 3 * 144 - badChecks);
        const DataPoint &last = store.dataPoints[size_t(store.dataPoint_count - 1)];
        QCOMPARE(QDate(last.year, last.month, last.day), QDate(2024, 3, 1));
        // 23:50, unless that last record of all is one of the spoiled ones.
        QCOMPARE(int(last.hour * 60 + last.minute), 24 * 60 - (badChecks ? 20 : 10));
        QCOMPARE(int(last.stream), o.format == SimLogFormat::B ? 4 : o.format == SimLogFormat::A);
        QVERIFY(last.water > 0.0f && last.pressure > 1000.0f);
    }
};

QTEST_GUILESS_MAIN(TestSensorSim)
#include "tst_sensorsim.moc"
