// The measurement store: the append rule, its duplicate index and merges.
#include "core/store.h"
#include "core/timetext.h"
#include "core/title.h"

#include <QTest>

#include <memory>

namespace {

DataPoint at(int y, int mo, int d, int h, int mi, int s, float water = 1.0f) {
    DataPoint p;
    p.year = int16_t(y);
    p.month = uint8_t(mo);
    p.day = uint8_t(d);
    p.hour = uint8_t(h);
    p.minute = uint8_t(mi);
    p.second = uint8_t(s);
    p.water = water;
    return p;
}

// The n-th distinct stamp (no two share year, month, day, minute, second).
DataPoint nth(int n) {
    return at(2000 + n / (12 * 28 * 3600), 1 + (n / (28 * 3600)) % 12, 1 + (n / 3600) % 28,
              (n / 7) % 24, (n / 60) % 60, n % 60, float(n));
}

} // namespace

class TestStore : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void appendRejectsInvalidStamps_data();
    void appendRejectsInvalidStamps();
    void duplicateIgnoresTheHour();
    void capacityEdge();
    void clearKeepsTablesAndResetsTheRest();
    void mergeModes();
    void mergeOverCapacityChangesNothing();
    void indexFollowsBulkWrites();
    void timeTexts();
    void titles();
};

void TestStore::appendRejectsInvalidStamps_data() {
    QTest::addColumn<int>("year");
    QTest::addColumn<int>("month");
    QTest::addColumn<int>("day");
    QTest::addColumn<int>("hour");
    QTest::addColumn<int>("minute");
    QTest::addColumn<int>("second");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("ordinary") << 2024 << 3 << 5 << 14 << 22 << 10 << true;
    QTest::newRow("31st of February") << 2024 << 2 << 31 << 0 << 0 << 0 << true;
    QTest::newRow("first valid year") << 2000 << 1 << 1 << 0 << 0 << 0 << true;
    QTest::newRow("1999") << 1999 << 12 << 31 << 23 << 59 << 59 << false;
    QTest::newRow("month 0") << 2024 << 0 << 5 << 1 << 1 << 1 << false;
    QTest::newRow("month 13") << 2024 << 13 << 5 << 1 << 1 << 1 << false;
    QTest::newRow("day 0") << 2024 << 3 << 0 << 1 << 1 << 1 << false;
    QTest::newRow("day 32") << 2024 << 3 << 32 << 1 << 1 << 1 << false;
    QTest::newRow("hour 24") << 2024 << 3 << 5 << 24 << 1 << 1 << false;
    QTest::newRow("minute 60") << 2024 << 3 << 5 << 1 << 60 << 1 << false;
    QTest::newRow("second 60") << 2024 << 3 << 5 << 1 << 1 << 60 << false;
}

void TestStore::appendRejectsInvalidStamps() {
    QFETCH(int, year);
    QFETCH(int, month);
    QFETCH(int, day);
    QFETCH(int, hour);
    QFETCH(int, minute);
    QFETCH(int, second);
    QFETCH(bool, accepted);
    auto store = std::make_unique<MeasurementStore>();
    const AppendResult r = store->append(at(year, month, day, hour, minute, second));
    QCOMPARE(r, accepted ? AppendResult::Added : AppendResult::Invalid);
    QCOMPARE(store->dataPoint_count, accepted ? 1 : 0);
    QCOMPARE(store->data_changed, accepted);
}

void TestStore::duplicateIgnoresTheHour() {
    auto store = std::make_unique<MeasurementStore>();
    QCOMPARE(store->append(at(2024, 3, 5, 10, 15, 30)), AppendResult::Added);
    store->data_changed = false;
    // Same day, minute and second one hour later: taken as already stored.
    QCOMPARE(store->append(at(2024, 3, 5, 11, 15, 30)), AppendResult::Duplicate);
    QCOMPARE(store->append(at(2024, 3, 5, 10, 15, 30)), AppendResult::Duplicate);
    QCOMPARE(store->dataPoint_count, 1);
    QVERIFY(!store->data_changed);
    // Any other field differing makes it new.
    QCOMPARE(store->append(at(2024, 3, 5, 10, 15, 31)), AppendResult::Added);
    QCOMPARE(store->append(at(2024, 3, 5, 10, 16, 30)), AppendResult::Added);
    QCOMPARE(store->append(at(2024, 3, 6, 10, 15, 30)), AppendResult::Added);
    QCOMPARE(store->append(at(2024, 4, 5, 10, 15, 30)), AppendResult::Added);
    QCOMPARE(store->append(at(2025, 3, 5, 10, 15, 30)), AppendResult::Added);
    QCOMPARE(store->dataPoint_count, 6);
}

void TestStore::capacityEdge() {
    auto store = std::make_unique<MeasurementStore>();
    for (int i = 0; i < MeasurementStore::capacity - 1; ++i)
        store->dataPoints[size_t(i)] = nth(i);
    store->dataPoint_count = MeasurementStore::capacity - 1;
    store->reindex();
    QCOMPARE(store->append(nth(MeasurementStore::capacity - 1)), AppendResult::Added);
    QCOMPARE(store->dataPoint_count, MeasurementStore::capacity);
    QCOMPARE(store->append(nth(MeasurementStore::capacity)), AppendResult::Full);
    QCOMPARE(store->dataPoint_count, MeasurementStore::capacity);
    // The full test comes before the duplicate test, the validity test first.
    QCOMPARE(store->append(nth(5)), AppendResult::Full);
    QCOMPARE(store->append(at(1999, 1, 1, 0, 0, 0)), AppendResult::Invalid);
}

void TestStore::clearKeepsTablesAndResetsTheRest() {
    auto store = std::make_unique<MeasurementStore>();
    store->append(at(2024, 3, 5, 10, 15, 30));
    store->fileName_current = QStringLiteral("/x/run1.txt");
    store->alarmThreshold = 500.0f;
    store->calTable.count = 2;
    store->clear();
    QCOMPARE(store->dataPoint_count, 0);
    QVERIFY(store->fileName_current.isEmpty());
    QVERIFY(!store->data_changed);
    QCOMPARE(store->alarmThreshold, -1.0f);
    QCOMPARE(store->calTable.count, int16_t(2));
    // The index went with the points: the same stamp is new again.
    QCOMPARE(store->append(at(2024, 3, 5, 10, 15, 30)), AppendResult::Added);
}

void TestStore::mergeModes() {
    auto store = std::make_unique<MeasurementStore>();
    for (int i = 0; i < 5; ++i)
        store->append(nth(100 + i));
    const DataPoint incoming[3] = {nth(1), nth(2), nth(3)};

    QVERIFY(!store->merge(incoming, 3, MergeMode::InsertBefore));
    QCOMPARE(store->dataPoint_count, 8);
    const float expected[8] = {1, 2, 3, 100, 101, 102, 103, 104};
    for (int i = 0; i < 8; ++i)
        QCOMPARE(store->dataPoints[size_t(i)].water, expected[i]);

    QVERIFY(!store->merge(incoming, 0, MergeMode::InsertBefore));
    QCOMPARE(store->dataPoint_count, 8);

    QVERIFY(!store->merge(incoming, 2, MergeMode::Append));
    QCOMPARE(store->dataPoint_count, 10);
    QCOMPARE(store->dataPoints[9].water, 2.0f);

    QVERIFY(!store->merge(incoming + 2, 1, MergeMode::Replace));
    QCOMPARE(store->dataPoint_count, 1);
    QCOMPARE(store->dataPoints[0].water, 3.0f);
    // The index knows only what is stored now.
    QCOMPARE(store->append(nth(100)), AppendResult::Added);
    QCOMPARE(store->append(nth(3)), AppendResult::Duplicate);
}

void TestStore::mergeOverCapacityChangesNothing() {
    auto store = std::make_unique<MeasurementStore>();
    std::vector<DataPoint> many(size_t(MeasurementStore::capacity) + 1);
    for (size_t i = 0; i < many.size(); ++i)
        many[i] = nth(int(i));
    store->append(nth(200000));
    QVERIFY(store->merge(many.data(), MeasurementStore::capacity + 1, MergeMode::Replace));
    QVERIFY(store->merge(many.data(), MeasurementStore::capacity, MergeMode::Append));
    QVERIFY(store->merge(many.data(), MeasurementStore::capacity, MergeMode::InsertBefore));
    QCOMPARE(store->dataPoint_count, 1);
    QCOMPARE(store->dataPoints[0].water, 200000.0f);
    QCOMPARE(store->append(nth(7)), AppendResult::Added);
    // Exactly full is allowed.
    QVERIFY(!store->merge(many.data(), MeasurementStore::capacity, MergeMode::Replace));
    QCOMPARE(store->dataPoint_count, MeasurementStore::capacity);
}

void TestStore::indexFollowsBulkWrites() {
    auto store = std::make_unique<MeasurementStore>();
    // Many stamps in one hour-less key space: every hour of a day collides.
    for (int h = 0; h < 24; ++h)
        QCOMPARE(store->append(at(2024, 3, 5, h, 0, 0)),
                 h == 0 ? AppendResult::Added : AppendResult::Duplicate);
    store->dataPoints[0] = at(2024, 3, 5, 0, 0, 1);
    store->reindex();
    QCOMPARE(store->append(at(2024, 3, 5, 7, 0, 0)), AppendResult::Added);
    QCOMPARE(store->append(at(2024, 3, 5, 7, 0, 1)), AppendResult::Duplicate);
}

void TestStore::timeTexts() {
    DataPoint p = at(987, 3, 5, 4, 2, 9);
    QCOMPARE(dateText(p), QStringLiteral("0987-03-05"));
    QCOMPARE(timeText(p), QStringLiteral("04:02:09"));
    p.year = 2024;
    p.day = 31;
    p.hour = 23;
    QCOMPARE(stampText(p), QStringLiteral("2024-03-31 23:02:09"));
    QCOMPARE(pad4(12345), QStringLiteral("2345")); // the last four are kept
}

void TestStore::titles() {
    auto store = std::make_unique<MeasurementStore>();
    QCOMPARE(mainWindowTitle(*store), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>]"));
    store->data_changed = true;
    QCOMPARE(mainWindowTitle(*store), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>] *"));
    store->fileName_current = QStringLiteral("C:\\x\\run1.txt");
    QCOMPARE(mainWindowTitle(*store), QStringLiteral("ORLUK Water Monitor   [C:\\x\\run1.txt] *"));
    store->data_changed = false;
    QCOMPARE(mainWindowTitle(*store), QStringLiteral("ORLUK Water Monitor   [C:\\x\\run1.txt]"));
}

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
