#include "core/autosave.h"
#include "core/clock.h"
#include "core/store.h"

#include <QTest>

namespace {

class FixedClock : public Clock {
public:
    QDateTime time;
    QDateTime now() const override { return time; }
};

QDateTime at(int y, int mo, int d, int h, int mi, int s) {
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s));
}

void addPoint(MeasurementStore &store, int second) {
    DataPoint p;
    p.year = 2024;
    p.month = 5;
    p.day = 6;
    p.second = uint8_t(second);
    store.append(p);
}

} // namespace

class TestAutoSave : public QObject {
    Q_OBJECT
private slots:
    void fileNames_data();
    void fileNames();
    void restartStartsAPeriod();
    void savesOnEverySixthTick();
    void emptyStoreIsNeverSaved();
    void failedSaveIsRetriedAMinuteLater();
};

void TestAutoSave::fileNames_data() {
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<QString>("name");
    QTest::newRow("example") << at(2010, 1, 24, 9, 5, 7)
                             << QStringLiteral("NAK_OS_autosave_20100124_090507.txt");
    QTest::newRow("year 999") << at(999, 12, 31, 23, 59, 59)
                              << QStringLiteral("NAK_OS_autosave_09991231_235959.txt");
}

void TestAutoSave::fileNames() {
    QFETCH(QDateTime, time);
    QFETCH(QString, name);
    MeasurementStore store;
    store.path_autosave = QStringLiteral("C:\\x\\data\\autosave\\");
    FixedClock clock;
    clock.time = time;
    AutoSave autoSave(store, clock, {});
    QCOMPARE(autoSave.fileName(), QString());
    autoSave.autoSave_createFilename();
    QCOMPARE(autoSave.fileName(), store.path_autosave + name);
}

void TestAutoSave::restartStartsAPeriod() {
    MeasurementStore store;
    store.path_autosave = QStringLiteral("/a/");
    FixedClock clock;
    clock.time = at(2024, 5, 6, 7, 8, 9);
    AutoSave autoSave(store, clock, {});
    autoSave.autoSave_restart();
    QVERIFY(autoSave.isRunning());
    QCOMPARE(autoSave.timer().interval(), 10000);
    const QString first = autoSave.fileName();
    autoSave.tick();
    autoSave.tick();
    QCOMPARE(autoSave.tickCounter(), 2);

    // Within the same second the name repeats: the new period overwrites.
    clock.time = clock.time.addMSecs(500);
    autoSave.autoSave_restart();
    QCOMPARE(autoSave.fileName(), first);
    QCOMPARE(autoSave.tickCounter(), 0);

    // Stop keeps the name; a new folder counts from the next restart on.
    autoSave.autoSave_stop();
    QVERIFY(!autoSave.isRunning());
    store.path_autosave = QStringLiteral("/b/");
    QCOMPARE(autoSave.fileName(), first);
    clock.time = clock.time.addSecs(1);
    autoSave.autoSave_restart();
    QCOMPARE(autoSave.fileName(), QStringLiteral("/b/NAK_OS_autosave_20240506_070810.txt"));
}

void TestAutoSave::savesOnEverySixthTick() {
    MeasurementStore store;
    addPoint(store, 1);
    FixedClock clock;
    clock.time = at(2024, 5, 6, 7, 8, 9);
    QStringList saved;
    AutoSave autoSave(store, clock, [&](const QString &name) {
        saved << name;
        return false;
    });
    // Without a file name (no restart yet) nothing is written.
    for (int i = 0; i < 6; ++i)
        autoSave.tick();
    QCOMPARE(saved.size(), 0);

    autoSave.autoSave_restart();
    for (int i = 0; i < 5; ++i)
        autoSave.tick();
    QCOMPARE(saved.size(), 0);
    autoSave.tick();
    QCOMPARE(saved, QStringList{autoSave.fileName()});
    QCOMPARE(autoSave.tickCounter(), 0);
    for (int i = 0; i < 12; ++i)
        autoSave.tick();
    QCOMPARE(saved.size(), 3);
}

void TestAutoSave::emptyStoreIsNeverSaved() {
    MeasurementStore store;
    FixedClock clock;
    clock.time = at(2024, 5, 6, 7, 8, 9);
    int saves = 0;
    AutoSave autoSave(store, clock, [&](const QString &) {
        ++saves;
        return false;
    });
    autoSave.autoSave_restart();
    for (int i = 0; i < 600; ++i)
        autoSave.tick();
    QCOMPARE(saves, 0);
}

void TestAutoSave::failedSaveIsRetriedAMinuteLater() {
    MeasurementStore store;
    addPoint(store, 1);
    FixedClock clock;
    clock.time = at(2024, 5, 6, 7, 8, 9);
    int saves = 0;
    AutoSave autoSave(store, clock, [&](const QString &) {
        ++saves;
        return true;
    });
    autoSave.autoSave_restart();
    for (int i = 0; i < 7; ++i)
        autoSave.tick();
    QCOMPARE(saves, 1);
    QVERIFY(autoSave.isRunning());
    for (int i = 0; i < 5; ++i)
        autoSave.tick();
    QCOMPARE(saves, 2);
}

QTEST_GUILESS_MAIN(TestAutoSave)
#include "test_autosave.moc"
