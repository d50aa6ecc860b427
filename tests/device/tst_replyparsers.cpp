// The readers of the sensor's list, alarm limit and calibration replies.
#include "core/numbers.h"
#include "core/store.h"
#include "device/listreply.h"
#include "device/metareply.h"

#include <QTest>

#include <algorithm>
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

std::string_view view(const QByteArray &b) {
    return {b.constData(), size_t(b.size())};
}

QString tableText(const CalTable &t) {
    QStringList parts;
    for (int i = 0; i < t.count; ++i)
        parts << QString::number(double(t.pairs[i].first)) + QLatin1Char(':') +
                     QString::number(double(t.pairs[i].second));
    return parts.join(QLatin1Char(';'));
}

} // namespace

class TestReplyParsers : public QObject {
    Q_OBJECT

private slots:

    void listLine_data() {
        QTest::addColumn<QByteArray>("line");
        // "y-m-d h:m:s water pressure temperature soot stream ref meas"; empty = invalid
        QTest::addColumn<QString>("parsed");

        const auto row = [](const char *name, const QByteArray &line, const char *parsed) {
            QTest::newRow(name) << line << QString::fromLatin1(parsed);
        };
        row("full line", kLine, "2024-3-5 14:22:10 123.4 1013 45.2 0.12 1 2345 2100");
        row("keys in any order",
            "2024-03-05 14:22:10 ADC MEAS 7 STREAM 2 SOOT 3 WATER 5 ADC REF 6 TEMPERATURE 4 "
            "PRESSURE 1",
            "2024-3-5 14:22:10 5 1 4 3 2 6 7");
        row("separators not examined, absent keys read 0", "2024x03x05x14x22x10 WATER 1",
            "2024-3-5 14:22:10 1 0 0 0 0 0 0");
        row("31st of February accepted", "2024-02-31 00:00:00 WATER 1",
            "2024-2-31 0:0:0 1 0 0 0 0 0 0");
        row("WATER ABC reads 0, line kept", "2024-03-05 14:22:10 WATER ABC SOOT 2",
            "2024-3-5 14:22:10 0 0 0 2 0 0 0");
        row("value right after key", "2024-03-05 14:22:10 WATER-7.5PRESSURE 3",
            "2024-3-5 14:22:10 -7.5 3 0 0 0 0 0");
        row("STREAM with decimals rounds", "2024-03-05 14:22:10 STREAM 2.0",
            "2024-3-5 14:22:10 0 0 0 0 2 0 0");
        row("NUL inside the line", QByteArray("2024-03-05 14:22:10 \0WATER 4\0 SOOT 1", 36),
            "2024-3-5 14:22:10 4 0 0 1 0 0 0");
        for (const char *bad :
             {"1999-03-05 14:22:10 WATER 1", "2024-13-05 14:22:10 WATER 1",
              "2024-00-05 14:22:10 WATER 1", "2024-03-00 14:22:10 WATER 1",
              "2024-03-32 14:22:10 WATER 1", "2024-03-05 24:22:10 WATER 1",
              "2024-03-05 14:60:10 WATER 1", "2024-03-05 14:22:60 WATER 1",
              "20X4-03-05 14:22:10 WATER 1", "2024-03-05 14:-1:10 WATER 1",
              "2024-03-05 14:22:10 WATER 1 STREAM X", "2024-03-05 14:22:10 WATER 1 STREAM",
              "2024-03-05 14:22:10 STREAM 40000"})
            row(bad, bad, "");
    }

    void listLine() {
        QFETCH(QByteArray, line);
        QFETCH(QString, parsed);

        DataPoint p;
        const bool valid = parseListLine(view(line), p);
        QCOMPARE(valid, !parsed.isEmpty());
        if (!valid)
            return;
        QString got = QString::asprintf("%d-%d-%d %d:%d:%d", p.year, p.month, p.day, p.hour,
                                        p.minute, p.second);
        for (const float v :
             {p.water, p.pressure, p.temperature, p.soot, float(p.stream), p.adc_ref, p.adc_meas})
            got += QLatin1Char(' ') + QString::number(double(v));
        QCOMPARE(got, parsed);
    }

    // Every value must read exactly (to the bit) as str_toSingle reads its text,
    // whatever shortcut the reader takes for plain decimals.
    void listLine_valuesReadAsStrToSingle() {
        QList<QByteArray> texts = {"-0",       "-7,25", "16777217", "1677721.7", "0.0000001",
                                   "99999999", "12.",   ".5",       "1-2",       "--1",
                                   "1.2.3",    " 1 2 ", "3,",       "-",         ""};
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
            QVERIFY(parseListLine(view(line), p));
            const float want = str_toSingle(view(" " + text + " "));
            QVERIFY2(std::bit_cast<uint32_t>(p.water) == std::bit_cast<uint32_t>(want),
                     ("WATER " + text).constData());
        }
    }

    void listReply_data() {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QChar>("separator");
        // "echoOk lines added duplicates water-of-the-last-added"
        QTest::addColumn<QString>("result");

        const auto row = [](const char *name, const QByteArray &reply, const char *result,
                            char separator = '.') {
            QTest::newRow(name) << reply << QChar(QLatin1Char(separator))
                                << QString::fromLatin1(result);
        };
        row("one reading", replyOf({kLine}), "1 1 1 0 123.4");
        row("empty reply", "", "0 0 0 0 -");
        row("no echo, valid lines", "\r\n" + kLine + "\r\n", "0 0 0 0 -");
        row("echo in upper case", "LIST\r\n\r\n" + kLine + "\r\n", "0 0 0 0 -");
        row("echo without the empty line", "list\r\n" + kLine + "\r\n", "0 0 0 0 -");
        row("last line without CR",
            kEcho + "2024-03-05 10:00:01 WATER 1\r\n2024-03-05 10:00:02 WATER 2", "1 1 1 0 1");
        row("LF alone does not end a line", kEcho + "2024-03-05 10:00:01 WATER 1\n", "1 0 0 0 -");
        row("CR alone ends a line", kEcho + "2024-03-05 10:00:01 WATER 1\r", "1 1 1 0 1");
        row("21 characters read, 20 skipped",
            replyOf({"2024-03-05 10:00:01XY", "2024-03-05 10:00:02X"}), "1 1 1 0 0");
        row("blanks around a line trimmed first",
            replyOf({"   2024-03-05 10:00:01   ", "  2024-03-05 10:00:02 WATER 9  "}), "1 1 1 0 9");
        row("same stamp but the hour is a duplicate",
            replyOf({"2024-03-05 10:15:30 WATER 1", "2024-03-05 11:15:30 WATER 2"}), "1 2 1 1 1");
        row("invalid lines between valid ones",
            replyOf({"2024-03-05 10:00:01 WATER 1", "1999-03-05 10:00:02 WATER 2",
                     "2024-03-05 10:00:03 STREAM X", "2024-03-05 10:00:04 WATER 4"}),
            "1 4 2 0 4");
        row("lower case keys", replyOf({"2024-03-05 10:00:01 water 6.5"}), "1 1 1 0 6.5");
        row("decimal comma system, point in reply", replyOf({"2024-03-05 10:00:01 WATER 12.5"}),
            "1 1 1 0 12.5", ',');
        row("point system, comma in reply", replyOf({"2024-03-05 10:00:01 WATER 12,5"}),
            "1 1 1 0 12.5");
        row("a line read by its first 16384 characters",
            replyOf({"2024-03-05 10:00:01 WATER 7" + QByteArray(16384 - 27, ' ') + "8 SOOT 1",
                     "2024-03-05 10:00:02 SOOT 1" + QByteArray(20000, ' ') + "WATER 3"}),
            "1 2 2 0 0");
    }

    void listReply() {
        QFETCH(QByteArray, reply);
        QFETCH(QChar, separator);

        // The whole reply at once, then as the link reads it: in pieces of 1 and
        // of 5 bytes, which split the echo and every line end.
        for (const qsizetype piece : {reply.size(), qsizetype(1), qsizetype(5)}) {
            auto store = std::make_unique<MeasurementStore>();
            store->decimalSeparator = separator;
            ListReplyResult r;
            if (piece == reply.size()) {
                r = applyListReply(reply, *store);
            } else {
                ListReplyReader reader(separator, listStoreSink(*store, r));
                for (qsizetype at = 0; at < reply.size(); at += piece)
                    reader.feed(
                        QByteArrayView(reply).sliced(at, std::min(piece, reply.size() - at)));
                r.echoOk = reader.finish();
                r.lines = reader.lines();
            }
            const QString last =
                r.added > 0 ? QString::number(double(store->dataPoints[size_t(r.added - 1)].water))
                            : QStringLiteral("-");
            QTEST(QString::asprintf("%d %d %d %d ", r.echoOk, r.lines, r.added, r.duplicates) +
                      last,
                  "result");
            QCOMPARE(store->dataPoint_count, r.added);
            QCOMPARE(store->data_changed, r.added > 0);
        }
    }

    // Both readers see every reply, so each must also leave alone what the other's
    // reply sets. Before: threshold -1, source 9:90;8:80, table 7:70.
    void metaReply_data() {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<float>("threshold");
        QTest::addColumn<float>("delay");
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("table");

        const auto row = [](const char *name, const QByteArray &reply, float threshold, float delay,
                            const char *source = "9:90;8:80", const char *table = "7:70") {
            QTest::newRow(name) << reply << threshold << delay << QString::fromLatin1(source)
                                << QString::fromLatin1(table);
        };
        const auto cal = [&row](const char *name, const QByteArray &reply, const char *source,
                                const char *table) { row(name, reply, -1.f, -1.f, source, table); };
        row("echo and limit line", "alarmlimit get\r\nALARMVALUE 500 ALARMDELAY 10\r\n", 500.f,
            10.f);
        row("delay missing", "ALARMVALUE 350\r\n", -1.f, -1.f);
        row("value missing", "ALARMDELAY 350\r\n", -1.f, -1.f);
        row("decimal comma, keys swapped", "ALARMDELAY 3 ALARMVALUE 12,5\r\n", 12.5f, 3.f);
        row("last valid line wins",
            "ALARMVALUE 1 ALARMDELAY 1\r\nALARMVALUE 2 ALARMDELAY 5\r\nALARMVALUE 3\r\n", 2.f, 5.f);
        row("lower case, negative", "alarmvalue -7.25 alarmdelay 1\r\n", -7.25f, 1.f);
        row("unreadable value reads 0", "ALARMVALUE OFF ALARMDELAY 1\r\n", 0.f, 1.f);
        row("line without CR ignored", "alarmlimit get\r\nALARMVALUE 500 ALARMDELAY 10", -1.f,
            -1.f);
        row("LF line ends only", "ALARMVALUE 500 ALARMDELAY 10\n", -1.f, -1.f);
        row("empty reply", "", -1.f, -1.f);
        cal("source and table",
            "calibration get\r\nCAL SOURCE\r\n0.125\t150\r\n0.25\t300\r\nCAL TABLE\r\n0.5\t600\r\n",
            "0.125:150;0.25:300", "0.5:600");
        row("no heading leaves both", "calibration get\r\n0.5\t600\r\n", -1.f, -1.f);
        cal("only a table heading clears the source too", "CAL TABLE\r\n1\t10\r\n", "", "1:10");
        cal("heading without CAL", "SOURCE\r\n1\t10\r\n", "1:10", "");
        cal("table before source, cleared once",
            "CAL TABLE\r\n1\t10\r\nCAL SOURCE\r\n2\t20\r\nCAL TABLE\r\n3\t30\r\n", "2:20",
            "1:10;3:30");
        cal("rows before a heading ignored", "5\t50\r\nCAL SOURCE\r\n1\t10\r\n", "1:10", "");
        cal("other CAL lines skipped", "CAL SOURCE\r\nCALIBRATED 2024\r\n1\t10\r\n", "1:10", "");
        cal("single field pairs with 0", "CAL SOURCE\r\n0.3\r\n", "0.3:0", "");
        cal("one-character last field dropped", "CAL SOURCE\r\n0.5\t6\r\n0.5\t60\r\n",
            "0.5:0;0.5:60", "");
        cal("one-character row gives nothing", "CAL SOURCE\r\n5\r\n", "", "");
        cal("blanks inside fields removed", "CAL SOURCE\r\n0. 5 \t 6 0\r\n", "0.5:60", "");
        cal("empty first field stops the split", "CAL SOURCE\r\n\t5\t60\r\n", "", "");
        cal("extra fields ignored", "CAL SOURCE\r\n1\t10\t11\t12\r\n", "1:10", "");
        cal("decimal comma", "CAL TABLE\r\n0,125\t150\r\n", "", "0.125:150");
        cal("unreadable numbers read 0", "CAL TABLE\r\nAB\tCD\r\n", "", "0:0");
        cal("last row without CR ignored", "CAL SOURCE\r\n1\t10\r\n2\t20", "1:10", "");

        QByteArray twelve = "CAL SOURCE\r\n";
        for (int i = 1; i <= 12; ++i)
            twelve += QByteArray::number(i) + "\t" + QByteArray::number(i * 100) + "\r\n";
        cal("12 rows keep the first 10", twelve,
            "1:100;2:200;3:300;4:400;5:500;6:600;7:700;8:800;9:900;10:1000", "");
    }

    void metaReply() {
        QFETCH(QByteArray, reply);
        QFETCH(float, threshold);
        QFETCH(QString, source);

        auto store = std::make_unique<MeasurementStore>();
        store->calSource = CalTable{{{9, 90}, {8, 80}}, 2};
        store->calTable = CalTable{{{7, 70}}, 1};
        QCOMPARE(applyAlarmReply(reply, *store), threshold != -1.f);
        QCOMPARE(store->alarmThreshold, threshold);
        QTEST(store->alarmDelay, "delay");
        QCOMPARE(applyCalibrationReply(reply, *store), source != QLatin1String("9:90;8:80"));
        QCOMPARE(tableText(store->calSource), source);
        QTEST(tableText(store->calTable), "table");
        QVERIFY(!store->data_changed);
    }
};

QTEST_GUILESS_MAIN(TestReplyParsers)
#include "tst_replyparsers.moc"
