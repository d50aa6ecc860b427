// The control panel's statistics texts, port numbers and tooltips, and the
// stable (by-id) name of a port.
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

class TestPanelStats : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void texts_data();
    void texts();
    void ports();
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
    QTest::newRow("empty") << 0 << 2024 << QStringLiteral("0 data points in memory") << QString();
    QTest::newRow("one: the same stamp twice")
        << 1 << 2024 << QStringLiteral("1 data point in memory")
        << QStringLiteral("2024-03-05 04:02:01  -  2024-03-05 04:02:01");
    QTest::newRow("two, year 987") << 2 << 987 << QStringLiteral("2 data points in memory")
                                   << QStringLiteral("0987-03-05 04:02:01  -  2024-03-05 04:02:02");
    QTest::newRow("full") << 130000 << 2024 << QStringLiteral("DATA POINT MEMORY FULL!")
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
    QCOMPARE(panel::countText(130000 - 1), QStringLiteral("129999 data points in memory"));
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

void TestPanelStats::health_data() {
    QTest::addColumn<int>("age"); // seconds since the last reading; -1: none
    QTest::addColumn<QString>("last");
    QTest::newRow("none yet") << -1 << QStringLiteral("no reading yet");
    QTest::newRow("just now") << 0 << QStringLiteral("last reading 0 s ago");
    QTest::newRow("119 s") << 119 << QStringLiteral("last reading 119 s ago");
    QTest::newRow("2 min") << 120 << QStringLiteral("last reading 2 min ago");
    QTest::newRow("119 min") << 7199 << QStringLiteral("last reading 119 min ago");
    QTest::newRow("2 h") << 7200 << QStringLiteral("last reading 2 h ago");
    QTest::newRow("a clock set back") << -30 << QStringLiteral("last reading 0 s ago");
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
    QCOMPARE(panel::healthText(h, now),
             QStringLiteral("polls with readings: 12\npolls without port: 2\n"
                            "replies without echo: 1\nbytes received: 123456\n") +
                 last);
}

// A folder of links as /dev/serial/by-id holds them, to files standing in
// for the devices: ttyUSB0 behind a by-id name, ttyUSB1 behind none.
void TestPanelStats::stableName_data() {
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("stable"); // empty: none
    QTest::addColumn<QString>("tip");
    QTest::newRow("linked device") << "ttyUSB0"
                                   << "by-id/usb-ORLUK_0042-if00-port0"
                                   << "by-id/usb-ORLUK_0042-if00-port0 (ttyUSB0)";
    QTest::newRow("named through another link") << "serial0"
                                                << "by-id/usb-ORLUK_0042-if00-port0"
                                                << "by-id/usb-ORLUK_0042-if00-port0 "
                                                   "(serial0)";
    QTest::newRow("the by-id name itself") << "by-id/usb-ORLUK_0042-if00-port0"
                                           << "by-id/usb-ORLUK_0042-if00-port0"
                                           << "by-id/usb-ORLUK_0042-if00-port0";
    QTest::newRow("no link to it") << "ttyUSB1"
                                   << ""
                                   << "ttyUSB1";
    QTest::newRow("not there") << "ttyUSB9"
                               << ""
                               << "ttyUSB9";
    QTest::newRow("no device") << ""
                               << ""
                               << "no such port";
}

void TestPanelStats::stableName() {
    QFETCH(QString, device);
    QFETCH(QString, stable);
    QFETCH(QString, tip);
    QTemporaryDir dir;
    QDir d(dir.path());
    QVERIFY(d.mkdir(QStringLiteral("by-id")));
    for (const char *name : {"ttyUSB0", "ttyUSB1"}) {
        QFile f(d.filePath(QLatin1String(name)));
        QVERIFY(f.open(QIODevice::WriteOnly));
    }
    QVERIFY(QFile::link(d.filePath(QStringLiteral("ttyUSB0")),
                        d.filePath(QStringLiteral("by-id/usb-ORLUK_0042-if00-port0"))));
    QVERIFY(
        QFile::link(d.filePath(QStringLiteral("ttyUSB0")), d.filePath(QStringLiteral("serial0"))));
    QVERIFY(QFile::link(d.filePath(QStringLiteral("ttyUSB9")),
                        d.filePath(QStringLiteral("by-id/usb-gone-if00-port0"))));
    const auto full = [&](const QString &name) { return name.isEmpty() ? name : d.filePath(name); };
    const QString found = portNames_byId(full(device), d.filePath(QStringLiteral("by-id")));
    QCOMPARE(found, full(stable));
    QCOMPARE(panel::portTip(full(device), found).remove(d.path() + QLatin1Char('/')), tip);
}

QTEST_GUILESS_MAIN(TestPanelStats)
#include "tst_panelstats.moc"
