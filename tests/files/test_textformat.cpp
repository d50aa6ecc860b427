#include "files/textformat.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <random>

class TestTextFormat : public QObject {
    Q_OBJECT
private slots:

    // The writers' fixed-point formatter at its edges: exact halves round away
    // from zero, beyond the 32-bit range, infinity.
    void fixed_data() {
        QTest::addColumn<float>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("half rounds away from zero") << 2.5f << 0 << QByteArray("3");
        QTest::newRow("binary 0.125 to two") << 0.125f << 2 << QByteArray("0.13");
        QTest::newRow("largest float") << std::numeric_limits<float>::max() << 0
                                       << QByteArray("340282346638528859811704183484516925440");
        QTest::newRow("infinity") << std::numeric_limits<float>::infinity() << 2
                                  << QByteArray("inf");
    }

    void fixed() {
        QFETCH(float, value);
        QFETCH(int, decimals);
        QFETCH(QByteArray, text);
        QCOMPARE(textformat::formatFixed(value, decimals, '.'), text);
        QCOMPARE(textformat::formatFixed(value, decimals, ','), QByteArray(text).replace('.', ','));
    }

    // Against printf on the exact value with a half-away-from-zero decision,
    // over random floats of the ranges the files carry.
    void fixedMatchesTheGeneralFormatter() {
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
};

QTEST_GUILESS_MAIN(TestTextFormat)
#include "test_textformat.moc"
