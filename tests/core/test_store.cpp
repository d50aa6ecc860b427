// The measurement store: appends and their duplicate key, capacity, merges.
#include "core/store.h"

#include <QTest>

#include <memory>

namespace {

DataPoint at(int y, int mo, int d, int h, int mi, int s) {
    return {int16_t(y), uint8_t(mo), uint8_t(d), uint8_t(h), uint8_t(mi), uint8_t(s)};
}

// The n-th distinct stamp (no two share year, month, day, minute, second),
// water n.
DataPoint nth(int n) {
    DataPoint p = at(2000 + n / (12 * 28 * 3600), 1 + (n / (28 * 3600)) % 12, 1 + (n / 3600) % 28,
                     (n / 7) % 24, (n / 60) % 60, n % 60);
    p.water = float(n);
    return p;
}

} // namespace

class TestStore : public QObject {
    Q_OBJECT
private slots:
    // Against a store holding 2024-03-05 10:15:30: the validity ranges (no
    // check of the day against the month), and the duplicate key, which
    // leaves out the hour unless the full-stamp rule is on.
    void append_data() {
        QTest::addColumn<QList<int>>("stamp");
        QTest::addColumn<AppendResult>("result");
        QTest::addColumn<AppendResult>("fullStampResult");
        using R = AppendResult;
        QTest::newRow("31st of February") << QList{2024, 2, 31, 0, 0, 0} << R::Added << R::Added;
        QTest::newRow("first valid year") << QList{2000, 1, 1, 0, 0, 0} << R::Added << R::Added;
        QTest::newRow("1999") << QList{1999, 12, 31, 23, 59, 59} << R::Invalid << R::Invalid;
        QTest::newRow("month 0") << QList{2024, 0, 5, 1, 1, 1} << R::Invalid << R::Invalid;
        QTest::newRow("month 13") << QList{2024, 13, 5, 1, 1, 1} << R::Invalid << R::Invalid;
        QTest::newRow("day 0") << QList{2024, 3, 0, 1, 1, 1} << R::Invalid << R::Invalid;
        QTest::newRow("day 32") << QList{2024, 3, 32, 1, 1, 1} << R::Invalid << R::Invalid;
        QTest::newRow("hour 24") << QList{2024, 3, 5, 24, 1, 1} << R::Invalid << R::Invalid;
        QTest::newRow("minute 60") << QList{2024, 3, 5, 1, 60, 1} << R::Invalid << R::Invalid;
        QTest::newRow("second 60") << QList{2024, 3, 5, 1, 1, 60} << R::Invalid << R::Invalid;
        QTest::newRow("another hour") << QList{2024, 3, 5, 11, 15, 30} << R::Duplicate << R::Added;
        QTest::newRow("another second") << QList{2024, 3, 5, 10, 15, 31} << R::Added << R::Added;
        QTest::newRow("another minute") << QList{2024, 3, 5, 10, 16, 30} << R::Added << R::Added;
        QTest::newRow("another day") << QList{2024, 3, 6, 10, 15, 30} << R::Added << R::Added;
        QTest::newRow("another month") << QList{2024, 4, 5, 10, 15, 30} << R::Added << R::Added;
        QTest::newRow("another year") << QList{2025, 3, 5, 10, 15, 30} << R::Added << R::Added;
    }

    void append() {
        QFETCH(QList<int>, stamp);
        QFETCH(AppendResult, result);
        auto store = std::make_unique<MeasurementStore>();
        QCOMPARE(store->append(at(2024, 3, 5, 10, 15, 30)), AppendResult::Added);
        store->data_changed = false;
        const DataPoint p = at(stamp[0], stamp[1], stamp[2], stamp[3], stamp[4], stamp[5]);
        QCOMPARE(store->append(p), result);
        const bool added = result == AppendResult::Added;
        QCOMPARE(store->dataPoint_count, added ? 2 : 1);
        QCOMPARE(store->data_changed, added);

        // Switching the rule rebuilds the index from what is stored.
        store->dataPoint_count = 1;
        store->setFullStampDuplicates(true);
        QTEST(store->append(p), "fullStampResult");
        store->dataPoint_count = 1;
        store->setFullStampDuplicates(false);
        QCOMPARE(store->isDuplicate(p), result == AppendResult::Duplicate);
    }

    // A rollover empties the store but keeps the archived stamps in the
    // duplicate test until the next one (or New): a sensor listing them
    // again adds nothing twice.
    void rollOver() {
        auto store = std::make_unique<MeasurementStore>();
        store->setFullStampDuplicates(true);
        store->oilName = QStringLiteral("gear");
        QCOMPARE(store->append(at(2024, 3, 5, 10, 15, 30)), AppendResult::Added);
        QCOMPARE(store->append(at(2024, 3, 5, 11, 15, 30)), AppendResult::Added);
        store->rollOver();
        QCOMPARE(store->dataPoint_count, 0);
        QVERIFY(!store->data_changed);
        QCOMPARE(store->oilName, QStringLiteral("gear"));
        QCOMPARE(store->append(at(2024, 3, 5, 11, 15, 30)), AppendResult::Duplicate);
        QCOMPARE(store->append(at(2024, 3, 5, 12, 15, 30)), AppendResult::Added);
        store->rollOver();
        QCOMPARE(store->append(at(2024, 3, 5, 12, 15, 30)), AppendResult::Duplicate);
        QCOMPARE(store->append(at(2024, 3, 5, 10, 15, 30)), AppendResult::Added);
        store->clear();
        QCOMPARE(store->append(at(2024, 3, 5, 12, 15, 30)), AppendResult::Added);
    }

    // The validity test comes first, then the full test, then the
    // duplicate test. Clearing empties the index with the points and keeps
    // the calibration tables (the session's New pins what it resets).
    void capacityAndClear() {
        auto store = std::make_unique<MeasurementStore>();
        for (int i = 0; i < 130000 - 1; ++i)
            store->dataPoints[size_t(i)] = nth(i);
        store->dataPoint_count = 130000 - 1;
        store->reindex();
        QCOMPARE(store->append(nth(130000 - 1)), AppendResult::Added);
        QCOMPARE(store->append(nth(130000)), AppendResult::Full);
        QCOMPARE(store->append(nth(5)), AppendResult::Full);
        QCOMPARE(store->append(at(1999, 1, 1, 0, 0, 0)), AppendResult::Invalid);
        QCOMPARE(store->dataPoint_count, 130000);

        store->calTable.count = 2;
        store->clear();
        QCOMPARE(store->calTable.count, int16_t(2));
        QCOMPARE(store->append(nth(5)), AppendResult::Added);
    }

    // Insert before, nothing, append, replace; the index then knows only
    // what is stored.
    void mergeModes() {
        auto store = std::make_unique<MeasurementStore>();
        for (int i = 0; i < 5; ++i)
            store->append(nth(100 + i));
        const DataPoint incoming[3] = {nth(1), nth(2), nth(3)};
        QVERIFY(!store->merge(incoming, 3, MergeMode::InsertBefore));
        QVERIFY(!store->merge(incoming, 0, MergeMode::InsertBefore));
        QVERIFY(!store->merge(incoming, 2, MergeMode::Append));
        QList<float> water;
        for (int i = 0; i < store->dataPoint_count; ++i)
            water << store->dataPoints[size_t(i)].water;
        QCOMPARE(water, (QList<float>{1, 2, 3, 100, 101, 102, 103, 104, 1, 2}));
        QCOMPARE(store->append(nth(3)), AppendResult::Duplicate);
        QCOMPARE(store->append(nth(104)), AppendResult::Duplicate);

        QVERIFY(!store->merge(incoming + 2, 1, MergeMode::Replace));
        QCOMPARE(store->dataPoint_count, 1);
        QCOMPARE(store->dataPoints[0].water, 3.0f);
        QCOMPARE(store->append(nth(100)), AppendResult::Added);
        QCOMPARE(store->append(nth(3)), AppendResult::Duplicate);
    }
};

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
