// The Modbus register map from known events, with literal registers; the
// recorder's server is read by a real client in tst_record.
#include "modbus/modbusmap.h"

#include <QTest>

using Regs = QList<int>;

class TestModbus : public QObject {
    Q_OBJECT
private slots:
    void map_data();
    void map();
};

void TestModbus::map_data() {
    QTest::addColumn<bool>("lowFirst");
    QTest::addColumn<QList<int>>("readings"); // how many came with each newest
    QTest::addColumn<float>("threshold");
    QTest::addColumn<QString>("polls"); // R readings, E nothing new, N no echo, P no port
    QTest::addColumn<int>("ageMs");     // since the last reading
    QTest::addColumn<Regs>("expected");
    const Regs values = {0x4400, 0x2000, 0x422d, 0, 0x44e2, 0x4000, 0xbf00, 0};
    const Regs stamp = {2026, 11, 24, 13, 28, 10};
    QTest::newRow("before the first reading")
        << false << QList<int>() << -1.0f << "" << 0
        << Regs{0x7fc0, 0, 0x7fc0, 0, 0x7fc0, 0, 0x7fc0, 0, 0x7fc0, 0, 0,
                0,      0, 65535,  0, 0,      0, 0,      0, 0,      0};
    QTest::newRow("above the threshold, port gone")
        << false << QList<int>{3} << 500.0f << "RNNNP" << 2500
        << values + Regs{0x43fa, 0, 3, 1, 0, 2, 3} + stamp;
    QTest::newRow("low word first, no threshold")
        << true << QList<int>{1} << -1.0f << "RN" << 0
        << Regs{0x2000, 0x4400, 0, 0x422d, 0x4000, 0x44e2, 0, 0xbf00, 0, 0x7fc0, 3, 0, 1, 0, 1} +
               stamp;
    QTest::newRow("at the threshold, counter wraps, no echo thrice, age saturates")
        << false << QList<int>{65535, 2} << 512.5f << "ENNN" << 70'000'000
        << values + Regs{0x4400, 0x2000, 3, 0, 2, 65535, 1} + stamp;
}

void TestModbus::map() {
    QFETCH(bool, lowFirst);
    QFETCH(QList<int>, readings);
    QFETCH(float, threshold);
    QFETCH(QString, polls);
    QFETCH(int, ageMs);
    QFETCH(Regs, expected);
    ModbusMap map(lowFirst ? ModbusMap::WordOrder::LowFirst : ModbusMap::WordOrder::HighFirst);
    for (int count : readings)
        map.addReading({2026, 11, 24, 13, 28, 10, 512.5f, 43.25f, 1810.0f, -0.5f, 3, 0, 0}, count,
                       1000);
    map.setThreshold(threshold);
    using S = PollOutcome::Status;
    for (QChar c : polls)
        map.addPoll(c == u'R'   ? S::Readings
                    : c == u'E' ? S::NothingNew
                    : c == u'N' ? S::NoEcho
                                : S::PortMissing);
    const ModbusMap::Registers regs = map.registers(1000 + ageMs);
    QCOMPARE(Regs(regs.begin(), regs.end()), expected);
}

QTEST_GUILESS_MAIN(TestModbus)
#include "tst_modbus.moc"
