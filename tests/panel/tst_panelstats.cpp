// The control panel's statistics texts and port numbers.
#include "core/store.h"
#include "device/listreply.h"
#include "device/metareply.h"
#include "panel/panelstats.h"

#include <QTest>

#include <memory>

class TestPanelStats : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void texts_data();
    void texts();
    void ports();
    void alarm_data();
    void alarm();
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

namespace {

// A "list" reply with one reading line per water value, a second apart
// from 15:02:10 on, after `first` seconds.
QByteArray listReply(int first, const QList<QByteArray> &water) {
    QByteArray r = "list\r\n\r\n";
    for (const QByteArray &w : water)
        r += "2026-11-23 15:02:" + QByteArray::number(10 + first++) + " WATER " + w +
             " PRESSURE 1013 TEMPERATURE 45.2 SOOT 0.12 STREAM 1 ADC REF 2345 ADC MEAS 2100\r\n";
    return r;
}

} // namespace

// The alarm line follows the newest reading across the polls: each row is
// an alarm limit reply, then three "list" replies with the text after each.
void TestPanelStats::alarm_data() {
    QTest::addColumn<QByteArray>("limit");
    QTest::addColumn<QList<QByteArray>>("polls"); // water values of one reply, blank-separated
    QTest::addColumn<QStringList>("texts");
    const QString at12 = QStringLiteral("Water above alarm limit: 612 ppm at 2026-11-23 15:02:12");
    QTest::newRow("crossing 500 and back") << QByteArray("ALARMVALUE 500 ALARMDELAY 10")
                                           << QList<QByteArray>{"480 499.9", "612.4", "499.6"}
                                           << QStringList{QString(), at12, QString()};
    QTest::newRow("at the limit is not above")
        << QByteArray("ALARMVALUE 612 ALARMDELAY 10")
        << QList<QByteArray>{"700 612", "612.4", "611"}
        << QStringList{QString(),
                       QStringLiteral("Water above alarm limit: 612 ppm at 2026-11-23 15:02:12"),
                       QString()};
    QTest::newRow("no limit known") << QByteArray("ALARMVALUE 500") // no ALARMDELAY: not taken
                                    << QList<QByteArray>{"480", "612.4", "9999"}
                                    << QStringList{QString(), QString(), QString()};
    QTest::newRow("limit 0 is a limit")
        << QByteArray("ALARMVALUE 0 ALARMDELAY 1") << QList<QByteArray>{"0", "0.6", "0"}
        << QStringList{QString(),
                       QStringLiteral("Water above alarm limit: 1 ppm at 2026-11-23 15:02:11"),
                       QString()};
}

void TestPanelStats::alarm() {
    QFETCH(QByteArray, limit);
    QFETCH(QList<QByteArray>, polls);
    QFETCH(QStringList, texts);
    auto store = std::make_unique<MeasurementStore>();
    QVERIFY(panel::alarmText(*store).isEmpty());
    store->decimalSeparator = QLatin1Char('.');
    applyAlarmReply("alarmlimit get\r\n" + limit + "\r\n", *store);
    int second = 0;
    for (qsizetype i = 0; i < polls.size(); ++i) {
        const QList<QByteArray> water = polls[i].split(' ');
        QCOMPARE(applyListReply(listReply(second, water), *store).added, int(water.size()));
        second += int(water.size());
        QCOMPARE(panel::alarmText(*store), texts[i]);
    }
}

QTEST_GUILESS_MAIN(TestPanelStats)
#include "tst_panelstats.moc"
