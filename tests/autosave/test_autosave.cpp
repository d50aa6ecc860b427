#include "core/autosave.h"
#include "core/clock.h"
#include "core/store.h"
#include "support/scriptednotifier.h" // FixedClock

#include <QTest>

class TestAutoSave : public QObject {
    Q_OBJECT
private slots:
    void namesAndPeriods();
};

// The name is taken at each restart from the clock and the folder of that
// moment (within the same second it repeats: the new period overwrites); a
// save runs on every sixth tick of a period when the store holds data.
void TestAutoSave::namesAndPeriods() {
    const QString folder = QStringLiteral("C:\\x\\data\\autosave\\");
    QCOMPARE(AutoSave::fileNameFor(folder, QDateTime(QDate(999, 12, 31), QTime(23, 59, 59))),
             folder + QStringLiteral("NAK_OS_autosave_09991231_235959.txt"));

    MeasurementStore store;
    store.path_autosave = QStringLiteral("/a/");
    FixedClock clock;
    AutoSave autoSave(store, clock, {});
    autoSave.autoSave_restart();
    QCOMPARE(autoSave.timer().interval(), 10000);
    const QString first = autoSave.fileName();
    QCOMPARE(first, QStringLiteral("/a/NAK_OS_autosave_20240305_142210.txt"));
    clock.time = clock.time.addMSecs(500);
    autoSave.autoSave_restart();
    QCOMPARE(autoSave.fileName(), first);

    autoSave.autoSave_stop();
    QVERIFY(!autoSave.isRunning());
    store.path_autosave = QStringLiteral("/b/");
    QCOMPARE(autoSave.fileName(), first);
    clock.time = clock.time.addSecs(1);
    autoSave.autoSave_restart();
    QVERIFY(autoSave.isRunning());
    QCOMPARE(autoSave.fileName(), QStringLiteral("/b/NAK_OS_autosave_20240305_142211.txt"));

    store.append(DataPoint{2024, 5, 6});
    QStringList saved;
    bool fail = false;
    AutoSave saving(store, clock, [&](const QString &name) {
        saved << name;
        return fail;
    });
    const auto ticks = [&](int n) {
        for (int i = 0; i < n; ++i)
            saving.tick();
        return saved.size();
    };
    QCOMPARE(ticks(6), 0); // no file name before the first restart
    saving.autoSave_restart();
    QCOMPARE(ticks(5), 0);
    QCOMPARE(ticks(1), 1);
    QCOMPARE(saved, QStringList{saving.fileName()});
    saving.tick();
    saving.autoSave_restart(); // a restart starts a full period
    QCOMPARE(ticks(5), 1);
    QCOMPARE(ticks(1), 2);

    fail = true; // a failed save is tried again on the next sixth tick
    QCOMPARE(ticks(12), 4);
    QVERIFY(saving.isRunning());
    store.clear(); // an empty store is never saved
    QCOMPARE(ticks(60), 4);
}

QTEST_GUILESS_MAIN(TestAutoSave)
#include "test_autosave.moc"
