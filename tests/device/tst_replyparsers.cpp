// The readers of the sensor's "list", "alarmlimit get" and "calibration get"
// replies, fed with reply texts and checked against a store.
#include "core/numbers.h"
#include "core/store.h"
#include "device/listreply.h"
#include "device/metareply.h"

#include <QTest>

#include <bit>
#include <memory>
#include <random>

namespace {

const QByteArray kEcho = "list\r\n\r\n";
const QByteArray kLine = "2024-03-05 14:22:10 WATER 123.4 PRESSURE 1013 TEMPERATURE 45.2 "
                         "SOOT 0.12 STREAM 1 ADC REF 2345 ADC MEAS 2100";

QByteArray replyOf(const QList<QByteArray> &lines) {
    QByteArray r = kEcho;
    for (const QByteArray &l : lines)
        r += l + "\r\n";
    return r;
}

QString tableText(const CalTable &t) {
    QStringList parts;
    for (int i = 0; i < t.count; ++i)
        parts << QString::number(double(t.pairs[i].first)) + QLatin1Char(':') +
                     QString::number(double(t.pairs[i].second));
    return parts.join(QLatin1Char(';'));
}

void presetTables(MeasurementStore &s) {
    s.calSource.count = 2;
    s.calSource.pairs[0] = {9, 90};
    s.calSource.pairs[1] = {8, 80};
    s.calTable.count = 1;
    s.calTable.pairs[0] = {7, 70};
}

DataPoint point(int year, int month, int day, int hour, int minute, int second) {
    DataPoint p;
    p.year = int16_t(year);
    p.month = uint8_t(month);
    p.day = uint8_t(day);
    p.hour = uint8_t(hour);
    p.minute = uint8_t(minute);
    p.second = uint8_t(second);
    return p;
}

} // namespace

class TestReplyParsers : public QObject {
    Q_OBJECT

private slots:
    void listLine_data();
    void listLine();
    void listLine_valuesReadAsStrToSingle();
    void listReply_data();
    void listReply();
    void listReply_sameLogTwiceAddsOnce();
    void listReply_duplicateOfStoredPoint();
    void listReply_fullStoreAddsNothing();
    void alarmReply_data();
    void alarmReply();
    void calibrationReply_data();
    void calibrationReply();
    void calibrationReply_secondReplyClearsBothTables();
};

void TestReplyParsers::listLine_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("stamp");  // y-m-d h:m:s of the parsed fields
    QTest::addColumn<QString>("values"); // water pressure temperature soot stream ref meas

    QTest::newRow("full line") << kLine << true << "2024-3-5 14:22:10"
                               << "123.4 1013 45.2 0.12 1 2345 2100";
    QTest::newRow("keys in any order")
        << QByteArray("2024-03-05 14:22:10 ADC MEAS 7 STREAM 2 SOOT 3 WATER 5 ADC REF 6 "
                      "TEMPERATURE 4 PRESSURE 1")
        << true << "2024-3-5 14:22:10"
        << "5 1 4 3 2 6 7";
    QTest::newRow("separators not examined")
        << QByteArray("2024x03x05x14x22x10 WATER 1") << true << "2024-3-5 14:22:10"
        << "1 0 0 0 0 0 0";
    QTest::newRow("31st of February accepted")
        << QByteArray("2024-02-31 00:00:00 WATER 1") << true << "2024-2-31 0:0:0"
        << "1 0 0 0 0 0 0";
    QTest::newRow("year 1999") << QByteArray("1999-03-05 14:22:10 WATER 1") << false << ""
                               << "";
    QTest::newRow("month 13") << QByteArray("2024-13-05 14:22:10 WATER 1") << false << ""
                              << "";
    QTest::newRow("month 0") << QByteArray("2024-00-05 14:22:10 WATER 1") << false << ""
                             << "";
    QTest::newRow("day 0") << QByteArray("2024-03-00 14:22:10 WATER 1") << false << ""
                           << "";
    QTest::newRow("day 32") << QByteArray("2024-03-32 14:22:10 WATER 1") << false << ""
                            << "";
    QTest::newRow("hour 24") << QByteArray("2024-03-05 24:22:10 WATER 1") << false << ""
                             << "";
    QTest::newRow("minute 60") << QByteArray("2024-03-05 14:60:10 WATER 1") << false << ""
                               << "";
    QTest::newRow("second 60") << QByteArray("2024-03-05 14:22:60 WATER 1") << false << ""
                               << "";
    QTest::newRow("year not a number") << QByteArray("20X4-03-05 14:22:10 WATER 1") << false << ""
                                       << "";
    QTest::newRow("negative minute") << QByteArray("2024-03-05 14:-1:10 WATER 1") << false << ""
                                     << "";
    QTest::newRow("no SOOT reads 0")
        << QByteArray("2024-03-05 14:22:10 WATER 5 STREAM 3") << true << "2024-3-5 14:22:10"
        << "5 0 0 0 3 0 0";
    QTest::newRow("WATER ABC reads 0, line kept")
        << QByteArray("2024-03-05 14:22:10 WATER ABC SOOT 2") << true << "2024-3-5 14:22:10"
        << "0 0 0 2 0 0 0";
    QTest::newRow("garbled number reads 0")
        << QByteArray("2024-03-05 14:22:10 WATER 1.2.3 SOOT 2") << true << "2024-3-5 14:22:10"
        << "0 0 0 2 0 0 0";
    QTest::newRow("decimal comma")
        << QByteArray("2024-03-05 14:22:10 WATER 12,5") << true << "2024-3-5 14:22:10"
        << "12.5 0 0 0 0 0 0";
    QTest::newRow("value right after key")
        << QByteArray("2024-03-05 14:22:10 WATER-7.5PRESSURE 3") << true << "2024-3-5 14:22:10"
        << "-7.5 3 0 0 0 0 0";
    QTest::newRow("STREAM X invalid")
        << QByteArray("2024-03-05 14:22:10 WATER 1 STREAM X") << false << ""
        << "";
    QTest::newRow("STREAM at line end invalid")
        << QByteArray("2024-03-05 14:22:10 WATER 1 STREAM") << false << ""
        << "";
    QTest::newRow("STREAM beyond 16 bits invalid")
        << QByteArray("2024-03-05 14:22:10 STREAM 40000") << false << ""
        << "";
    QTest::newRow("negative STREAM")
        << QByteArray("2024-03-05 14:22:10 STREAM -2") << true << "2024-3-5 14:22:10"
        << "0 0 0 0 -2 0 0";
    QTest::newRow("STREAM with decimals rounds")
        << QByteArray("2024-03-05 14:22:10 STREAM 2.0") << true << "2024-3-5 14:22:10"
        << "0 0 0 0 2 0 0";
    QTest::newRow("NUL inside the line")
        << QByteArray("2024-03-05 14:22:10 \0WATER 4\0 SOOT 1", 36) << true << "2024-3-5 14:22:10"
        << "4 0 0 1 0 0 0";
}

void TestReplyParsers::listLine() {
    QFETCH(QByteArray, line);
    QFETCH(bool, valid);
    QFETCH(QString, stamp);
    QFETCH(QString, values);

    DataPoint p;
    QCOMPARE(parseListLine(std::string_view(line.constData(), size_t(line.size())), p), valid);
    if (!valid)
        return;
    QCOMPARE(QStringLiteral("%1-%2-%3 %4:%5:%6")
                 .arg(p.year)
                 .arg(p.month)
                 .arg(p.day)
                 .arg(p.hour)
                 .arg(p.minute)
                 .arg(p.second),
             stamp);
    const QList<double> got = {p.water,          p.pressure, p.temperature, p.soot,
                               double(p.stream), p.adc_ref,  p.adc_meas};
    const QStringList want = values.split(QLatin1Char(' '));
    QCOMPARE(want.size(), got.size());
    for (int i = 0; i < got.size(); ++i)
        QCOMPARE(float(got[i]), want[i].toFloat());
}

// Every value must read exactly (to the bit) as str_toSingle reads its text,
// whatever shortcut the reader takes for plain decimals.
void TestReplyParsers::listLine_valuesReadAsStrToSingle() {
    QList<QByteArray> texts = {"0",       "-0",       "0.1",       "123.4",     "-7,25",
                               "9999999", "16777217", "1677721.7", "0.0000001", "99999999",
                               "12.",     ".5",       "1-2",       "--1",       "1.2.3",
                               " 1 2 ",   "3,",       "-",         "",          "00000000001.5"};
    std::mt19937 rng(11);
    for (int i = 0; i < 20000; ++i) {
        QByteArray digits = QByteArray::number(uint32_t(rng() % 100000000u));
        const int point = int(rng() % uint32_t(digits.size() + 1));
        if (point < digits.size())
            digits.insert(point, (rng() & 1) ? '.' : ',');
        texts << ((rng() & 1) ? "-" + digits : digits);
    }
    for (const QByteArray &text : texts) {
        const QByteArray line = "2024-03-05 14:22:10 WATER " + text + " SOOT 1";
        DataPoint p;
        QVERIFY(parseListLine(std::string_view(line.constData(), size_t(line.size())), p));
        const QByteArray value = " " + text + " ";
        const float want = str_toSingle(std::string_view(value.constData(), size_t(value.size())));
        if (std::bit_cast<uint32_t>(p.water) != std::bit_cast<uint32_t>(want))
            QFAIL(qPrintable(QStringLiteral("WATER %1 read as %2, expected %3")
                                 .arg(QString::fromLatin1(text))
                                 .arg(double(p.water), 0, 'g', 9)
                                 .arg(double(want), 0, 'g', 9)));
    }
}

void TestReplyParsers::listReply_data() {
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QChar>("separator");
    QTest::addColumn<bool>("echoOk");
    QTest::addColumn<int>("lines");
    QTest::addColumn<int>("added");
    QTest::addColumn<int>("duplicates");
    QTest::addColumn<float>("lastWater");

    const QChar point = QLatin1Char('.');
    QTest::newRow("one reading") << replyOf({kLine}) << point << true << 1 << 1 << 0 << 123.4f;
    QTest::newRow("empty reply") << QByteArray() << point << false << 0 << 0 << 0 << 0.f;
    QTest::newRow("only the echo") << kEcho << point << true << 0 << 0 << 0 << 0.f;
    QTest::newRow("no echo, valid lines")
        << QByteArray("\r\n" + kLine + "\r\n") << point << false << 0 << 0 << 0 << 0.f;
    QTest::newRow("echo in upper case")
        << QByteArray("LIST\r\n\r\n" + kLine + "\r\n") << point << false << 0 << 0 << 0 << 0.f;
    QTest::newRow("echo without the empty line")
        << QByteArray("list\r\n" + kLine + "\r\n") << point << false << 0 << 0 << 0 << 0.f;
    QTest::newRow("garbage before the echo")
        << QByteArray("\x7f" + replyOf({kLine})) << point << false << 0 << 0 << 0 << 0.f;
    QTest::newRow("last line without CR")
        << QByteArray(kEcho + "2024-03-05 10:00:01 WATER 1\r\n2024-03-05 10:00:02 WATER 2") << point
        << true << 1 << 1 << 0 << 1.f;
    QTest::newRow("LF alone does not end a line")
        << QByteArray(kEcho + "2024-03-05 10:00:01 WATER 1\n") << point << true << 0 << 0 << 0
        << 0.f;
    QTest::newRow("CR alone ends a line") << QByteArray(kEcho + "2024-03-05 10:00:01 WATER 1\r")
                                          << point << true << 1 << 1 << 0 << 1.f;
    QTest::newRow("21 characters read, 20 skipped")
        << replyOf({"2024-03-05 10:00:01XY", "2024-03-05 10:00:02X"}) << point << true << 1 << 1
        << 0 << 0.f;
    QTest::newRow("blanks around a line trimmed first")
        << replyOf({"   2024-03-05 10:00:01   ", "  2024-03-05 10:00:02 WATER 9  "}) << point
        << true << 1 << 1 << 0 << 9.f;
    QTest::newRow("same stamp but the hour is a duplicate")
        << replyOf({"2024-03-05 10:15:30 WATER 1", "2024-03-05 11:15:30 WATER 2"}) << point << true
        << 2 << 1 << 1 << 1.f;
    QTest::newRow("invalid lines between valid ones")
        << replyOf({"2024-03-05 10:00:01 WATER 1", "1999-03-05 10:00:02 WATER 2",
                    "2024-03-05 10:00:03 STREAM X", "2024-03-05 10:00:04 WATER 4"})
        << point << true << 4 << 2 << 0 << 4.f;
    QTest::newRow("lower case keys")
        << replyOf({"2024-03-05 10:00:01 water 6.5"}) << point << true << 1 << 1 << 0 << 6.5f;
    QTest::newRow("decimal comma system, point in reply")
        << replyOf({"2024-03-05 10:00:01 WATER 12.5"}) << QChar(QLatin1Char(',')) << true << 1 << 1
        << 0 << 12.5f;
    QTest::newRow("point system, comma in reply")
        << replyOf({"2024-03-05 10:00:01 WATER 12,5"}) << point << true << 1 << 1 << 0 << 12.5f;
}

void TestReplyParsers::listReply() {
    QFETCH(QByteArray, reply);
    QFETCH(QChar, separator);
    QFETCH(bool, echoOk);
    QFETCH(int, lines);
    QFETCH(int, added);
    QFETCH(int, duplicates);
    QFETCH(float, lastWater);

    auto store = std::make_unique<MeasurementStore>();
    store->decimalSeparator = separator;
    const ListReplyResult r = applyListReply(reply, *store);
    QCOMPARE(r.echoOk, echoOk);
    QCOMPARE(r.lines, lines);
    QCOMPARE(r.added, added);
    QCOMPARE(r.duplicates, duplicates);
    QCOMPARE(store->dataPoint_count, added);
    QCOMPARE(store->data_changed, added > 0);
    if (added > 0)
        QCOMPARE(store->dataPoints[size_t(added - 1)].water, lastWater);
}

void TestReplyParsers::listReply_sameLogTwiceAddsOnce() {
    auto store = std::make_unique<MeasurementStore>();
    const QByteArray first = replyOf({"2024-03-05 10:00:01 WATER 1", "2024-03-05 10:00:02 W 2"});
    const QByteArray second = replyOf(
        {"2024-03-05 10:00:01 WATER 1", "2024-03-05 10:00:02 W 2", "2024-03-05 10:00:03 WATER 3"});
    QCOMPARE(applyListReply(first, *store).added, 2);
    const ListReplyResult r = applyListReply(second, *store);
    QCOMPARE(r.added, 1);
    QCOMPARE(r.duplicates, 2);
    QCOMPARE(store->dataPoint_count, 3);
    QCOMPARE(store->dataPoints[2].second, uint8_t(3));
}

void TestReplyParsers::listReply_duplicateOfStoredPoint() {
    auto store = std::make_unique<MeasurementStore>();
    const DataPoint stored = point(2024, 3, 5, 8, 15, 30);
    QVERIFY(!store->merge(&stored, 1, MergeMode::Replace));
    const ListReplyResult r = applyListReply(
        replyOf({"2024-03-05 23:15:30 WATER 1", "2024-03-06 08:15:30 WATER 2"}), *store);
    QCOMPARE(r.duplicates, 1);
    QCOMPARE(r.added, 1);
    QCOMPARE(store->dataPoints[1].day, uint8_t(6));
}

void TestReplyParsers::listReply_fullStoreAddsNothing() {
    auto store = std::make_unique<MeasurementStore>();
    std::vector<DataPoint> points(size_t(MeasurementStore::capacity));
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = point(2001 + int(i / 3600), 1, 1, 0, int(i / 60 % 60), int(i % 60));
    QVERIFY(!store->merge(points.data(), MeasurementStore::capacity, MergeMode::Replace));
    const ListReplyResult r = applyListReply(replyOf({kLine}), *store);
    QCOMPARE(r.full, 1);
    QCOMPARE(r.added, 0);
    QCOMPARE(store->dataPoint_count, MeasurementStore::capacity);
    QVERIFY(!store->data_changed);
}

void TestReplyParsers::alarmReply_data() {
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("set");
    QTest::addColumn<float>("threshold"); // starts at -1

    QTest::newRow("echo and limit line")
        << QByteArray("alarmlimit get\r\nALARMVALUE 500 ALARMDELAY 10\r\n") << true << 500.f;
    QTest::newRow("delay missing") << QByteArray("ALARMVALUE 350\r\n") << false << -1.f;
    QTest::newRow("value missing") << QByteArray("ALARMDELAY 350\r\n") << false << -1.f;
    QTest::newRow("decimal comma on any system")
        << QByteArray("ALARMVALUE 12,5 ALARMDELAY 3\r\n") << true << 12.5f;
    QTest::newRow("keys in the other order")
        << QByteArray("ALARMDELAY 3 ALARMVALUE 42\r\n") << true << 42.f;
    QTest::newRow("last valid line wins")
        << QByteArray("ALARMVALUE 1 ALARMDELAY 1\r\nALARMVALUE 2 ALARMDELAY 1\r\n"
                      "ALARMVALUE 3\r\n")
        << true << 2.f;
    QTest::newRow("lower case") << QByteArray("alarmvalue 7.25 alarmdelay 1\r\n") << true << 7.25f;
    QTest::newRow("negative") << QByteArray("ALARMVALUE -5.5 ALARMDELAY 1\r\n") << true << -5.5f;
    QTest::newRow("unreadable value reads 0")
        << QByteArray("ALARMVALUE OFF ALARMDELAY 1\r\n") << true << 0.f;
    QTest::newRow("line without CR ignored")
        << QByteArray("alarmlimit get\r\nALARMVALUE 500 ALARMDELAY 10") << false << -1.f;
    QTest::newRow("LF line ends only")
        << QByteArray("ALARMVALUE 500 ALARMDELAY 10\n") << false << -1.f;
    QTest::newRow("empty reply") << QByteArray() << false << -1.f;
}

void TestReplyParsers::alarmReply() {
    QFETCH(QByteArray, reply);
    QFETCH(bool, set);
    QFETCH(float, threshold);

    auto store = std::make_unique<MeasurementStore>();
    QCOMPARE(applyAlarmReply(reply, *store), set);
    QCOMPARE(store->alarmThreshold, threshold);
    QVERIFY(!store->data_changed);
}

void TestReplyParsers::calibrationReply_data() {
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("source"); // before: 9:90;8:80
    QTest::addColumn<QString>("table");  // before: 7:70

    QTest::newRow("source and table")
        << QByteArray("calibration get\r\nCAL SOURCE\r\n0.125\t150\r\n0.25\t300\r\nCAL TABLE\r\n"
                      "0.5\t600\r\n")
        << "0.125:150;0.25:300"
        << "0.5:600";
    QTest::newRow("no reply leaves both") << QByteArray() << "9:90;8:80"
                                          << "7:70";
    QTest::newRow("no heading leaves both")
        << QByteArray("calibration get\r\n0.5\t600\r\n") << "9:90;8:80"
        << "7:70";
    QTest::newRow("only a table heading clears the source too")
        << QByteArray("CAL TABLE\r\n1\t10\r\n") << ""
        << "1:10";
    QTest::newRow("heading without CAL") << QByteArray("SOURCE\r\n1\t10\r\n") << "1:10"
                                         << "";
    QTest::newRow("table before source, cleared once")
        << QByteArray("CAL TABLE\r\n1\t10\r\nCAL SOURCE\r\n2\t20\r\nCAL TABLE\r\n3\t30\r\n")
        << "2:20"
        << "1:10;3:30";
    QTest::newRow("rows before a heading ignored")
        << QByteArray("5\t50\r\nCAL SOURCE\r\n1\t10\r\n") << "1:10"
        << "";
    QTest::newRow("other CAL lines skipped")
        << QByteArray("CAL SOURCE\r\nCALIBRATED 2024\r\n1\t10\r\n") << "1:10"
        << "";
    QTest::newRow("single field pairs with 0") << QByteArray("CAL SOURCE\r\n0.3\r\n") << "0.3:0"
                                               << "";
    QTest::newRow("one-character last field dropped")
        << QByteArray("CAL SOURCE\r\n0.5\t6\r\n0.5\t60\r\n") << "0.5:0;0.5:60"
        << "";
    QTest::newRow("one-character row gives nothing") << QByteArray("CAL SOURCE\r\n5\r\n") << ""
                                                     << "";
    QTest::newRow("blanks inside fields removed")
        << QByteArray("CAL SOURCE\r\n0. 5 \t 6 0\r\n") << "0.5:60"
        << "";
    QTest::newRow("empty first field stops the split")
        << QByteArray("CAL SOURCE\r\n\t5\t60\r\n") << ""
        << "";
    QTest::newRow("extra fields ignored")
        << QByteArray("CAL SOURCE\r\n1\t10\t11\t12\t13\t14\t15\t16\t17\t18\t19\t20\r\n") << "1:10"
        << "";
    QTest::newRow("decimal comma") << QByteArray("CAL TABLE\r\n0,125\t150\r\n") << ""
                                   << "0.125:150";
    QTest::newRow("unreadable numbers read 0") << QByteArray("CAL TABLE\r\nAB\tCD\r\n") << ""
                                               << "0:0";
    QTest::newRow("last row without CR ignored")
        << QByteArray("CAL SOURCE\r\n1\t10\r\n2\t20") << "1:10"
        << "";

    QByteArray twelve = "CAL SOURCE\r\n";
    QStringList ten;
    for (int i = 1; i <= 12; ++i) {
        twelve += QByteArray::number(i) + "\t" + QByteArray::number(i * 100) + "\r\n";
        if (i <= 10)
            ten << QStringLiteral("%1:%2").arg(i).arg(i * 100);
    }
    QTest::newRow("12 rows keep the first 10") << twelve << ten.join(QLatin1Char(';')) << "";
}

void TestReplyParsers::calibrationReply() {
    QFETCH(QByteArray, reply);
    QFETCH(QString, source);
    QFETCH(QString, table);

    auto store = std::make_unique<MeasurementStore>();
    presetTables(*store);
    applyCalibrationReply(reply, *store);
    QCOMPARE(tableText(store->calSource), source);
    QCOMPARE(tableText(store->calTable), table);
    QVERIFY(!store->data_changed);
}

void TestReplyParsers::calibrationReply_secondReplyClearsBothTables() {
    auto store = std::make_unique<MeasurementStore>();
    QVERIFY(applyCalibrationReply("CAL SOURCE\r\n1\t10\r\nCAL TABLE\r\n2\t20\r\n", *store));
    QCOMPARE(tableText(store->calSource), QStringLiteral("1:10"));
    QVERIFY(applyCalibrationReply("calibration get\r\nCAL TABLE\r\n3\t30\r\n", *store));
    QCOMPARE(store->calSource.count, int16_t(0));
    QCOMPARE(tableText(store->calTable), QStringLiteral("3:30"));
}

QTEST_GUILESS_MAIN(TestReplyParsers)
#include "tst_replyparsers.moc"
