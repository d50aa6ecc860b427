// Number parsing of sensor and file texts.
#include "core/numbers.h"

#include <QTest>

class TestNumbers : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void single_data();
    void single();
    void integer_data();
    void integer();
    void leading();
};

void TestNumbers::single_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<float>("value");
    QTest::newRow("point") << QStringLiteral("12.5") << 12.5f;
    QTest::newRow("comma") << QStringLiteral("12,5") << 12.5f;
    QTest::newRow("blanks around") << QStringLiteral("  123.4  ") << 123.4f;
    QTest::newRow("negative") << QStringLiteral("-3,7") << -3.7f;
    QTest::newRow("plus") << QStringLiteral("+2") << 2.0f;
    QTest::newRow("no integer part") << QStringLiteral(",5") << 0.5f;
    QTest::newRow("exponent") << QStringLiteral("1.5E3") << 1500.0f;
    QTest::newRow("empty") << QString() << 0.0f;
    QTest::newRow("only blanks") << QStringLiteral("   ") << 0.0f;
    QTest::newRow("letters") << QStringLiteral("ABC") << 0.0f;
    QTest::newRow("trailing junk") << QStringLiteral("12.5x") << 0.0f;
    QTest::newRow("two separators") << QStringLiteral("1.234,5") << 0.0f;
    QTest::newRow("blank inside") << QStringLiteral("12 5") << 0.0f;
    QTest::newRow("double sign") << QStringLiteral("--5") << 0.0f;
    QTest::newRow("only sign") << QStringLiteral("-") << 0.0f;
    QTest::newRow("infinity") << QStringLiteral("inf") << 0.0f;
    QTest::newRow("nan") << QStringLiteral("nan") << 0.0f;
    QTest::newRow("too large") << QStringLiteral("1e39") << 0.0f;
    QTest::newRow("non-latin digit") << QString::fromUtf8("\xd9\xa3") << 0.0f;
}

void TestNumbers::single() {
    QFETCH(QString, text);
    QFETCH(float, value);
    QCOMPARE(str_toSingle(QStringView(text)), value);
    const QByteArray bytes = text.toUtf8();
    QCOMPARE(str_toSingle(std::string_view(bytes.constData(), size_t(bytes.size()))), value);
}

void TestNumbers::integer_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("lo");
    QTest::addColumn<int>("hi");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("value");
    QTest::newRow("stream") << QStringLiteral(" 2 ") << -32768 << 32767 << true << 2;
    QTest::newRow("stream letters") << QStringLiteral(" X") << -32768 << 32767 << false << 0;
    QTest::newRow("stream too big") << QStringLiteral("40000") << -32768 << 32767 << false << 0;
    QTest::newRow("byte negative") << QStringLiteral("-1") << 0 << 255 << false << 0;
    QTest::newRow("byte 255") << QStringLiteral("255") << 0 << 255 << true << 255;
    QTest::newRow("byte 256") << QStringLiteral("256") << 0 << 255 << false << 0;
    QTest::newRow("decimal") << QStringLiteral("2.0") << 0 << 255 << false << 0;
    QTest::newRow("empty") << QString() << 0 << 255 << false << 0;
    QTest::newRow("huge") << QStringLiteral("99999999999999999999") << 0 << 255 << false << 0;
}

void TestNumbers::integer() {
    QFETCH(QString, text);
    QFETCH(int, lo);
    QFETCH(int, hi);
    QFETCH(bool, ok);
    QFETCH(int, value);
    const std::optional<int32_t> r = parseInteger(QStringView(text), lo, hi);
    QCOMPARE(r.has_value(), ok);
    if (ok)
        QCOMPARE(*r, value);
}

void TestNumbers::leading() {
    QCOMPARE(leadingNumber("2024"), 2024);
    QCOMPARE(leadingNumber("07x"), 7);
    QCOMPARE(leadingNumber(""), 0);
    QCOMPARE(leadingNumber("x1"), 0);
    QCOMPARE(leadingNumber("99999999999999"), INT32_MAX);
}

QTEST_GUILESS_MAIN(TestNumbers)
#include "test_numbers.moc"
