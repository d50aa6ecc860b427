// The control panel's statistics texts and port numbers.
#include "core/store.h"
#include "panel/panelstats.h"

#include <QTest>

#include <memory>

class TestPanelStats : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void texts_data();
    void texts();
    void ports();
};

void TestPanelStats::texts_data() {
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("firstYear");
    QTest::addColumn<QString>("countText");
    QTest::addColumn<QString>("span");
    QTest::newRow("empty") << 0 << 2024 << QStringLiteral("0 data points in memory") << QString();
    QTest::newRow("one: the same stamp twice")
        << 1 << 2024 << QStringLiteral("1 data point in memory")
        << QStringLiteral("2024-03-05 04:02:01  -  2024-03-05 04:02:01");
    QTest::newRow("two, year 987") << 2 << 987 << QStringLiteral("2 data points in memory")
                                   << QStringLiteral("0987-03-05 04:02:01  -  2024-03-05 04:02:02");
    QTest::newRow("full") << MeasurementStore::capacity << 2024
                          << QStringLiteral("DATA POINT MEMORY FULL!")
                          << QStringLiteral("2024-03-05 04:02:01  -  2024-03-05 04:02:59");
}

void TestPanelStats::texts() {
    QFETCH(int, count);
    QFETCH(int, firstYear);
    QFETCH(QString, countText);
    QFETCH(QString, span);
    auto store = std::make_unique<MeasurementStore>();
    for (int i = 0; i < count; ++i) {
        DataPoint &p = store->dataPoints[size_t(i)];
        p = DataPoint{.year = int16_t(i == 0 ? firstYear : 2024),
                      .month = 3,
                      .day = 5,
                      .hour = 4,
                      .minute = 2,
                      .second = uint8_t(i == count - 1 && count > 2 ? 59 : i + 1)};
    }
    store->dataPoint_count = count;
    QCOMPARE(panel::countText(store->dataPoint_count), countText);
    QCOMPARE(panel::spanText(*store), span);
}

void TestPanelStats::ports() {
    QCOMPARE(panel::portEntry(7), QStringLiteral("COM 7"));
    QCOMPARE(panel::portFromIndex(6), int16_t(7));
    QCOMPARE(panel::portFromIndex(-1), int16_t(0)); // nothing selected
    QCOMPARE(panel::countText(MeasurementStore::capacity - 1),
             QStringLiteral("129999 data points in memory"));
}

QTEST_GUILESS_MAIN(TestPanelStats)
#include "tst_panelstats.moc"
