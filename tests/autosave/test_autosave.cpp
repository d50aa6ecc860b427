#include "core/autosave.h"
#include "core/clock.h"
#include "core/store.h"
#include "support/scriptednotifier.h" // FixedClock

#include <QTest>

class TestAutoSave : public QObject {
    Q_OBJECT
private slots:
    // The name is taken at each restart from the clock and the folder of that
    // moment (within the same second it repeats: the new period overwrites); a
    // save runs on every sixth tick of a period while the store holds data, and
    // a failed one is simply tried again at the next sixth tick.
    void namesAndPeriods() {
        QCOMPARE(AutoSave::fileNameFor(QStringLiteral("C:\\x\\"),
                                       QDateTime(QDate(999, 12, 31), QTime(23, 59, 58))),
                 QStringLiteral("C:\\x\\NAK_OS_autosave_09991231_235958.txt"));

        MeasurementStore store;
        store.path_autosave = QStringLiteral("/a/");
        store.append(DataPoint{2024, 5, 6});
        FixedClock clock;
        QStringList saved;
        bool fail = false;
        AutoSave autoSave(store, clock, [&](const QString &name) {
            saved << name;
            return fail;
        });
        const auto ticks = [&](int n) {
            for (int i = 0; i < n; ++i)
                autoSave.tick();
            return saved.size();
        };
        QCOMPARE(ticks(6), 0); // no file name before the first restart
        autoSave.autoSave_restart();
        QCOMPARE(autoSave.timer().interval(), 10000);
        QCOMPARE(ticks(5), 0);
        QCOMPARE(ticks(1), 1);
        autoSave.tick();
        clock.time = clock.time.addMSecs(500);
        autoSave.autoSave_restart(); // a restart starts a full period
        QCOMPARE(ticks(5), 1);
        QCOMPARE(ticks(1), 2);

        clock.time = clock.time.addSecs(1);
        store.path_autosave = QStringLiteral("/b/");
        autoSave.autoSave_restart();
        fail = true;
        QCOMPARE(ticks(12), 4);
        QVERIFY(autoSave.isRunning());
        store.clear(); // an empty store is never saved
        QCOMPARE(ticks(60), 4);
        const QString a = QStringLiteral("/a/NAK_OS_autosave_20240305_142210.txt");
        const QString b = QStringLiteral("/b/NAK_OS_autosave_20240305_142211.txt");
        QCOMPARE(saved, (QStringList{a, a, b, b}));
    }
};

QTEST_GUILESS_MAIN(TestAutoSave)
#include "test_autosave.moc"
