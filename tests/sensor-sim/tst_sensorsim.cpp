// The simulated sensor: its log, the exact bytes of its replies and the
// faults it adds on request.
#include "core/clock.h"
#include "sensorsim.h"
#include "support/scriptednotifier.h"

#include <QTest>

class TestSensorSim : public QObject {
    Q_OBJECT

private slots:
    void logAndReplies() {
        FixedClock clock; // 2024-03-05 14:22:10
        SimOptions o;
        o.readingIntervalMs = 0;
        o.prefill = 8;
        o.logSize = 5;
        SensorSimulator sim(o, &clock);
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

        SimFaults f;
        f.noEcho = true;
        f.garbage = true;
        f.nulBytes = true;
        sim.setFaults(f);
        QCOMPARE(sim.replyTo("alarmlimit get"), "ALARMVALUE 500.0 ALARMDELAY 10\r\n");
        const QByteArray faulty = sim.replyTo("list");
        QCOMPARE(faulty.count("\r\n"), 1 + 5 + 1); // a garbage line after every third reading
        QCOMPARE(faulty.count('\0'), 2 * 5);
    }

    void scheduleLogsReadings() {
        SimOptions o;
        o.readingIntervalMs = 20;
        SensorSimulator sim(o);
        QVERIFY(!sim.open());
        QTRY_VERIFY(sim.logLines().size() >= 3);
        sim.close();
        QVERIFY(!sim.isOpen());
    }
};

QTEST_GUILESS_MAIN(TestSensorSim)
#include "tst_sensorsim.moc"
