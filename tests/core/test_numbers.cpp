// Numbers in sensor and file texts: the single and integer parsers, the
// leading number and the padded year.
#include "core/numbers.h"
#include "core/timetext.h"

#include <QTest>

class TestNumbers : public QObject {
    Q_OBJECT
private slots:
    // Either decimal separator, blanks around, one sign; anything else,
    // infinities and non-Latin digits included, reads 0.
    void single_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("value");
        const std::pair<const char *, float> rows[] = {
            {"12,5", 12.5f}, {"  123.4  ", 123.4f}, {"-3,7", -3.7f}, {"+2", 2},
            {",5", 0.5f},    {"1.5E3", 1500},       {"", 0},         {"12.5x", 0},
            {"1.234,5", 0},  {"12 5", 0},           {"--5", 0},      {"-", 0},
            {"inf", 0},      {"1e39", 0},           {"\xd9\xa3", 0}};
        for (const auto &[text, value] : rows)
            QTest::addRow("'%s'", text) << QString::fromUtf8(text) << value;
    }
    void single() {
        QFETCH(QString, text);
        QFETCH(float, value);
        QCOMPARE(str_toSingle(QStringView(text)), value);
        const QByteArray bytes = text.toUtf8();
        QCOMPARE(str_toSingle(std::string_view(bytes.constData(), size_t(bytes.size()))), value);
    }

    // parseInteger within lo .. hi (-1: rejected); leadingNumber of the
    // same text, held at INT32_MAX.
    void integer_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("lo");
        QTest::addColumn<int>("hi");
        QTest::addColumn<int>("parsed");
        QTest::addColumn<int>("leading");
        QTest::newRow("stream") << QStringLiteral(" 2 ") << -32768 << 32767 << 2 << 0;
        QTest::newRow("stream too big")
            << QStringLiteral("40000") << -32768 << 32767 << -1 << 40000;
        QTest::newRow("byte negative") << QStringLiteral("-1") << 0 << 255 << -1 << 0;
        QTest::newRow("byte 255") << QStringLiteral("255") << 0 << 255 << 255 << 255;
        QTest::newRow("byte 256") << QStringLiteral("256") << 0 << 255 << -1 << 256;
        QTest::newRow("decimal") << QStringLiteral("2.0") << 0 << 255 << -1 << 2;
        QTest::newRow("empty") << QString() << 0 << 255 << -1 << 0;
        QTest::newRow("huge") << QStringLiteral("99999999999999999999") << 0 << 255 << -1
                              << INT32_MAX;
    }
    void integer() {
        QFETCH(QString, text);
        QFETCH(int, lo);
        QFETCH(int, hi);
        QFETCH(int, parsed);
        QFETCH(int, leading);
        QCOMPARE(parseInteger(QStringView(text), lo, hi).value_or(-1), parsed);
        QCOMPARE(leadingNumber(text.toStdString()), leading);
    }

    // Years read from files may have five digits; the last four are kept.
    void paddedYear() { QCOMPARE(pad4(12345), QStringLiteral("2345")); }
};

QTEST_GUILESS_MAIN(TestNumbers)
#include "test_numbers.moc"
