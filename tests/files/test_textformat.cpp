#include "files/textformat.h"

#include "core/numbers.h"
#include "core/timetext.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <random>

class TestTextFormat : public QObject {
    Q_OBJECT
private slots:
    void fixed_data();
    void fixed();
    void fixedMatchesTheGeneralFormatter();
    void dateAndTimeMatchThePadRule_data();
    void dateAndTimeMatchThePadRule();
    void parseMatchesStrToSingle_data();
    void parseMatchesStrToSingle();
    void parseMatchesStrToSingleOnRandomText();
};

void TestTextFormat::fixed_data() {
    QTest::addColumn<float>("value");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("whole") << 123.0f << 0 << QByteArray("123");
    QTest::newRow("half rounds away from zero") << 2.5f << 0 << QByteArray("3");
    QTest::newRow("negative half") << -2.5f << 0 << QByteArray("-3");
    QTest::newRow("float below the half") << 1234.6f << 0 << QByteArray("1235");
    QTest::newRow("two decimals of 45.1") << 45.1f << 2 << QByteArray("45.10");
    QTest::newRow("binary 0.125 to two") << 0.125f << 2 << QByteArray("0.13");
    QTest::newRow("0.35 is just below") << 0.35f << 2 << QByteArray("0.35");
    QTest::newRow("carry into the whole part") << 999.999f << 2 << QByteArray("1000.00");
    QTest::newRow("small negative has no sign") << -0.004f << 2 << QByteArray("0.00");
    QTest::newRow("negative zero") << -0.0f << 0 << QByteArray("0");
    QTest::newRow("five decimals") << 0.03125f << 5 << QByteArray("0.03125");
    QTest::newRow("five decimals, tiny") << 1e-6f << 5 << QByteArray("0.00000");
    QTest::newRow("threshold -1") << -1.0f << 0 << QByteArray("-1");
    QTest::newRow("beyond 32 bits") << 1.23456789e10f << 2 << QByteArray("12345678848.00");
    QTest::newRow("largest float") << std::numeric_limits<float>::max() << 0
                                   << QByteArray("340282346638528859811704183484516925440");
    QTest::newRow("infinity") << std::numeric_limits<float>::infinity() << 2 << QByteArray("inf");
}

void TestTextFormat::fixed() {
    QFETCH(float, value);
    QFETCH(int, decimals);
    QFETCH(QByteArray, text);
    QCOMPARE(textformat::formatFixed(value, decimals, '.'), text);
    QByteArray comma = text;
    comma.replace('.', ',');
    QCOMPARE(textformat::formatFixed(value, decimals, ','), comma);
}

// Against printf on the exact value with a half-away-from-zero decision,
// over random floats of the ranges the files carry.
void TestTextFormat::fixedMatchesTheGeneralFormatter() {
    std::mt19937 rng(3);
    std::uniform_real_distribution<float> values(-1e6f, 1e6f);
    for (int i = 0; i < 20000; ++i) {
        const float v = i % 2 ? values(rng) : std::ldexp(values(rng), -int(rng() % 20));
        for (int decimals : {0, 2, 5}) {
            const long double scaled = (long double)v * std::pow(10.0L, decimals);
            long double rounded = std::floor(std::fabs(scaled) + 0.5L);
            char buf[80];
            std::snprintf(buf, sizeof buf, "%s%.*Lf", scaled < 0 && rounded != 0 ? "-" : "",
                          decimals, rounded / std::pow(10.0L, decimals));
            const QByteArray got = textformat::formatFixed(v, decimals, '.');
            if (got != QByteArray(buf))
                QFAIL(qPrintable(QStringLiteral("%1 with %2 decimals: %3, expected %4")
                                     .arg(double(v), 0, 'g', 9)
                                     .arg(decimals)
                                     .arg(QLatin1String(got), QLatin1String(buf))));
        }
    }
}

void TestTextFormat::dateAndTimeMatchThePadRule_data() {
    QTest::addColumn<int>("year");
    QTest::addColumn<int>("field");
    QTest::newRow("ordinary") << 2024 << 7;
    QTest::newRow("year 999") << 999 << 0;
    QTest::newRow("five-digit year") << 12345 << 59;
    QTest::newRow("negative year") << -5 << 99;
    QTest::newRow("three-digit field") << 2024 << 255;
}

void TestTextFormat::dateAndTimeMatchThePadRule() {
    QFETCH(int, year);
    QFETCH(int, field);
    DataPoint p;
    p.year = int16_t(year);
    p.month = p.day = p.hour = p.minute = p.second = uint8_t(field);
    char date[10], time[8];
    textformat::writeDate(p, date);
    textformat::writeTime(p, time);
    QCOMPARE(QString::fromLatin1(date, 10), dateText(p));
    QCOMPARE(QString::fromLatin1(time, 8), timeText(p));
}

void TestTextFormat::parseMatchesStrToSingle_data() {
    QTest::addColumn<QByteArray>("text");
    for (const char *t : {"12,5",     "12.5",     "-0",          "0",        "-5.13",
                          "1013.25",  "0.000001", "9999999",     "12345678", "0000000000012.5",
                          "5.",       ".5",       "-.5",         "-",        ".",
                          "",         "1-2",      "1.2.3",       "--1",      "1,2,3",
                          "16777217", "0.1",      "3.4028236e38"})
        QTest::newRow(t) << QByteArray(t);
}

void TestTextFormat::parseMatchesStrToSingle() {
    QFETCH(QByteArray, text);
    const float expected = str_toSingle(std::string_view(text.constData(), size_t(text.size())));
    const float got = textformat::parseNumber(text.constData(), int(text.size()));
    QCOMPARE(std::signbit(got), std::signbit(expected));
    QCOMPARE(got, expected);
}

void TestTextFormat::parseMatchesStrToSingleOnRandomText() {
    std::mt19937 rng(11);
    const char alphabet[] = "0123456789000000-.,";
    for (int i = 0; i < 50000; ++i) {
        char text[12];
        const int n = int(rng() % 11);
        for (int k = 0; k < n; ++k)
            text[k] = alphabet[rng() % (sizeof alphabet - 1)];
        const float expected = str_toSingle(std::string_view(text, size_t(n)));
        const float got = textformat::parseNumber(text, n);
        if (got != expected || std::signbit(got) != std::signbit(expected))
            QFAIL(qPrintable(QStringLiteral("\"%1\"").arg(QLatin1String(text, n))));
    }
}

QTEST_GUILESS_MAIN(TestTextFormat)
#include "test_textformat.moc"
