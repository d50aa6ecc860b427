#include "files/textformat.h"

#include "core/numbers.h"
#include "core/timetext.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <random>
#include <utility>

class TestTextFormat : public QObject {
    Q_OBJECT
private slots:
    void fixed_data();
    void fixed();
    void fixedMatchesTheGeneralFormatter();
    void dateAndTimeMatchThePadRule();
    void parseMatchesStrToSingle();
};

void TestTextFormat::fixed_data() {
    QTest::addColumn<float>("value");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("half rounds away from zero") << 2.5f << 0 << QByteArray("3");
    QTest::newRow("binary 0.125 to two") << 0.125f << 2 << QByteArray("0.13");
    QTest::newRow("carry into the whole part") << 999.999f << 2 << QByteArray("1000.00");
    QTest::newRow("small negative has no sign") << -0.004f << 2 << QByteArray("0.00");
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
    QCOMPARE(textformat::formatFixed(value, decimals, ','), QByteArray(text).replace('.', ','));
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
            QCOMPARE(textformat::formatFixed(v, decimals, '.'), QByteArray(buf));
        }
    }
}

// The fixed-width writers must give what the padding rule gives, also for
// years and fields wider than their slots.
void TestTextFormat::dateAndTimeMatchThePadRule() {
    const std::pair<int, int> cases[] = {{2024, 7}, {999, 0}, {12345, 59}, {-5, 99}, {2024, 255}};
    for (const auto &[year, field] : cases) {
        DataPoint p;
        p.year = int16_t(year);
        p.month = p.day = p.hour = p.minute = p.second = uint8_t(field);
        char date[10], time[8];
        textformat::writeDate(p, date);
        textformat::writeTime(p, time);
        QCOMPARE(QString::fromLatin1(date, 10), dateText(p));
        QCOMPARE(QString::fromLatin1(time, 8), timeText(p));
    }
}

void TestTextFormat::parseMatchesStrToSingle() {
    QList<QByteArray> texts{"3.4028236e38", "16777217", "0000000000012.5", "-0", "-.5"};
    std::mt19937 rng(11);
    const char alphabet[] = "0123456789000000-.,";
    for (int i = 0; i < 50000; ++i) {
        QByteArray text(int(rng() % 16), Qt::Uninitialized);
        for (char &c : text)
            c = alphabet[rng() % (sizeof alphabet - 1)];
        texts << text;
    }
    for (const QByteArray &text : texts) {
        const float expected =
            str_toSingle(std::string_view(text.constData(), size_t(text.size())));
        const float got = textformat::parseNumber(text.constData(), int(text.size()));
        if (got != expected || std::signbit(got) != std::signbit(expected))
            QFAIL(text.constData());
    }
}

QTEST_GUILESS_MAIN(TestTextFormat)
#include "test_textformat.moc"
