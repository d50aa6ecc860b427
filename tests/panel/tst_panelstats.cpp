// The control panel's statistics texts and tooltips, and the stable (by-id)
// name of a port.
#include "core/store.h"
#include "device/linkhealth.h"
#include "device/listreply.h"
#include "device/metareply.h"
#include "device/portnames.h"
#include "panel/panelstats.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestPanelStats : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void texts_data();
    void texts();
    void alarm_data();
    void alarm();
    void health_data();
    void health();
    void stableName_data();
    void stableName();
};

void TestPanelStats::texts_data() {
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("firstYear");
    QTest::addColumn<QString>("countText");
    QTest::addColumn<QString>("span");
    QTest::newRow("empty") << 0 << 2024 << u"0 data points in memory"_s << QString();
    QTest::newRow("one: the same stamp twice") << 1 << 2024 << u"1 data point in memory"_s
                                               << u"2024-03-05 04:02:01  -  2024-03-05 04:02:01"_s;
    QTest::newRow("two, year 987") << 2 << 987 << u"2 data points in memory"_s
                                   << u"0987-03-05 04:02:01  -  2024-03-05 04:02:02"_s;
    QTest::newRow("one short of full") << 130000 - 1 << 2024 << u"129999 data points in memory"_s
                                       << u"2024-03-05 04:02:01  -  2024-03-05 04:02:59"_s;
    QTest::newRow("full") << 130000 << 2024 << u"DATA POINT MEMORY FULL!"_s
                          << u"2024-03-05 04:02:01  -  2024-03-05 04:02:59"_s;
}

void TestPanelStats::texts() {
    QFETCH(int, count);
    QFETCH(int, firstYear);
    auto store = std::make_unique<MeasurementStore>();
    for (int i = 0; i < count; ++i)
        store->dataPoints[size_t(i)] =
            DataPoint{.year = int16_t(i == 0 ? firstYear : 2024),
                      .month = 3,
                      .day = 5,
                      .hour = 4,
                      .minute = 2,
                      .second = uint8_t(i == count - 1 && count > 2 ? 59 : i + 1)};
    store->dataPoint_count = count;
    QTEST(panel::countText(store->dataPoint_count), "countText");
    QTEST(panel::spanText(*store), "span");
}

// The alarm line follows the newest reading across the polls: each row is
// an alarm limit reply, then three "list" replies with the text after each.
void TestPanelStats::alarm_data() {
    QTest::addColumn<QByteArray>("limit");
    QTest::addColumn<QList<QByteArray>>("polls"); // water values of one reply, blank-separated
    QTest::addColumn<QStringList>("texts");
    const QString at12 = u"Water above alarm limit: 612 ppm at 2026-11-23 15:02:12"_s;
    QTest::newRow("crossing 500 and back")
        << "ALARMVALUE 500 ALARMDELAY 10"_ba << QList<QByteArray>{"480 499.9", "612.4", "499.6"}
        << QStringList{QString(), at12, QString()};
    QTest::newRow("at the limit is not above")
        << "ALARMVALUE 612 ALARMDELAY 10"_ba << QList<QByteArray>{"700 612", "612.4", "611"}
        << QStringList{QString(), at12, QString()};
    QTest::newRow("no limit known") << "ALARMVALUE 500"_ba // no ALARMDELAY: not taken
                                    << QList<QByteArray>{"480", "612.4", "9999"}
                                    << QStringList{QString(), QString(), QString()};
    QTest::newRow("limit 0 is a limit")
        << "ALARMVALUE 0 ALARMDELAY 1"_ba << QList<QByteArray>{"0", "0.6", "0"}
        << QStringList{QString(), u"Water above alarm limit: 1 ppm at 2026-11-23 15:02:11"_s,
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
    int second = 10; // one reading line per water value, a second apart
    for (qsizetype i = 0; i < polls.size(); ++i) {
        const QList<QByteArray> water = polls[i].split(' ');
        QByteArray reply = "list\r\n\r\n";
        for (const QByteArray &w : water)
            reply += "2026-11-23 15:02:" + QByteArray::number(second++) + " WATER " + w +
                     " PRESSURE 1013 TEMPERATURE 45.2 SOOT 0.12 STREAM 1 ADC REF 2345 ADC MEAS "
                     "2100\r\n";
        QCOMPARE(applyListReply(reply, *store).added, int(water.size()));
        QCOMPARE(panel::alarmText(*store), texts[i]);
    }
}

void TestPanelStats::health_data() {
    QTest::addColumn<int>("age"); // seconds since the last reading; -1: none
    QTest::addColumn<QString>("last");
    QTest::newRow("none yet") << -1 << u"no reading yet"_s;
    QTest::newRow("just now") << 0 << u"last reading 0 s ago"_s;
    QTest::newRow("119 s") << 119 << u"last reading 119 s ago"_s;
    QTest::newRow("2 min") << 120 << u"last reading 2 min ago"_s;
    QTest::newRow("119 min") << 7199 << u"last reading 119 min ago"_s;
    QTest::newRow("2 h") << 7200 << u"last reading 2 h ago"_s;
    QTest::newRow("a clock set back") << -30 << u"last reading 0 s ago"_s;
}

void TestPanelStats::health() {
    QFETCH(int, age);
    QFETCH(QString, last);
    const QDateTime now(QDate(2024, 3, 5), QTime(14, 22, 10));
    LinkHealth h{.pollsWithReadings = 12,
                 .pollsWithoutPort = 2,
                 .repliesWithoutEcho = 1,
                 .bytesReceived = 123456,
                 .lastReading = age == -1 ? QDateTime() : now.addSecs(-age)};
    QCOMPARE(panel::healthText(h, now), u"polls with readings: 12\npolls without port: 2\n"
                                        "replies without echo: 1\nbytes received: 123456\n"_s +
                                            last);
}

// A folder of links as /dev/serial/by-id holds them, to files standing in
// for the devices: ttyUSB0 behind a by-id name, ttyUSB1 behind none.
void TestPanelStats::stableName_data() {
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("stable"); // empty: none
    QTest::addColumn<QString>("tip");
    const QString id = u"by-id/usb-ORLUK_0042-if00-port0"_s;
    QTest::newRow("linked device") << u"ttyUSB0"_s << id << id + u" (ttyUSB0)"_s;
    QTest::newRow("named through another link") << u"serial0"_s << id << id + u" (serial0)"_s;
    QTest::newRow("the by-id name itself") << id << id << id;
    QTest::newRow("no link to it") << u"ttyUSB1"_s << QString() << u"ttyUSB1"_s;
    QTest::newRow("not there") << u"ttyUSB9"_s << QString() << u"ttyUSB9"_s;
    QTest::newRow("no device") << QString() << QString() << u"no such port"_s;
}

void TestPanelStats::stableName() {
    QFETCH(QString, device);
    QFETCH(QString, stable);
    QTemporaryDir dir;
    QDir d(dir.path());
    QVERIFY(d.mkdir(u"by-id"_s));
    for (const QString &name : {u"ttyUSB0"_s, u"ttyUSB1"_s})
        QVERIFY(QFile(d.filePath(name)).open(QIODevice::WriteOnly));
    const auto link = [&](const QString &to, const QString &from) {
        return QFile::link(d.filePath(to), d.filePath(from));
    };
    QVERIFY(link(u"ttyUSB0"_s, u"by-id/usb-ORLUK_0042-if00-port0"_s));
    QVERIFY(link(u"ttyUSB0"_s, u"serial0"_s));
    QVERIFY(link(u"ttyUSB9"_s, u"by-id/usb-gone-if00-port0"_s));
    const auto full = [&](const QString &name) { return name.isEmpty() ? name : d.filePath(name); };
    const QString found = portNames_byId(full(device), d.filePath(u"by-id"_s));
    QCOMPARE(found, full(stable));
    QTEST(panel::portTip(full(device), found).remove(d.path() + QLatin1Char('/')), "tip");
}

QTEST_GUILESS_MAIN(TestPanelStats)
#include "tst_panelstats.moc"
