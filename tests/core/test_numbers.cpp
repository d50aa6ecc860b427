// Numbers in sensor and file texts.
#include "core/numbers.h"
#include "core/timetext.h"

#include <QTest>

#include <cstdio>

// The float's exact value and sign, so that one step off counts.
static QByteArray exact(float v) {
    char text[32];
    std::snprintf(text, sizeof text, "%a", double(v));
    return text;
}

class TestNumbers : public QObject {
    Q_OBJECT
private slots:
    // Either decimal separator, blanks around, one sign, an exponent; a
    // text that is no number at all, infinities, hex, non-Latin digits and
    // more than 64 characters included, reads 0. Compared bit for bit, so a
    // float one step off or a zero of the other sign fails.
    void single_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<float>("value");
        const auto add = [](std::initializer_list<std::pair<const char *, float>> rows) {
            for (const auto &[text, value] : rows)
                QTest::addRow("'%s'", text) << QByteArray(text) << value;
        };
        // Signs, separators, blanks.
        add({{".5", 0.5f},      {"5.", 5.0f},   {"-0", -0.0f},  {"0", 0.0f},
             {"-0,000", -0.0f}, {"+1", 1.0f},   {"-,5", -0.5f}, {" \t1.5\t ", 1.5f},
             {"1 5", 0},        {"- 1", 0},     {"1,5", 1.5f},  {"1.5", 1.5f},
             {"-3,7", -3.7f},   {"1.234,5", 0}, {"--5", 0},     {"+-1", 0},
             {".", 0},          {"-", 0},       {"", 0},        {"  ", 0}});
        // Digits (up to seven the quick path, from eight the full conversion),
        // exponents, and what is no number.
        // clang-format off
        add({{"0.9", 0.9f},               {"0,05", 0.05f},            {"9999999", 9999999.0f},
             {"12345678", 12345678.0f},   {"16777217", 16777216.0f},  {"123456789", 123456792.0f},
             {"1677721.7", 1677721.75f},  {"3.1415926", 3.1415925f},  {"00000001.5", 1.5f},
             {"0,00000001", 1e-8f},       {"0.00000000001", 1e-11f},  {"1e3", 1000.0f},
             {"1E-2", 0.01f},             {"1.5E3", 1500.0f},         {"1e", 0},
             {"e1", 0},                   {"1e39", 0},                {"12a", 0},
             {"0x10", 0},                 {"inf", 0},                 {"nan", 0},
             {"\xd9\xa3", 0}});
        // clang-format on
        QTest::newRow("30 digits") << QByteArray(30, '9') << 1e30f;
        QTest::newRow("64 characters") << QByteArray(63, '0').append('1') << 1.0f;
        QTest::newRow("65 characters") << QByteArray(64, '0').append('1') << 0.0f;
    }
    void single() {
        QFETCH(QByteArray, text);
        QFETCH(float, value);
        const std::string_view view(text.constData(), size_t(text.size()));
        QCOMPARE(exact(str_toSingle(view)), exact(value));
        QCOMPARE(exact(str_toSingle(QStringView(QString::fromUtf8(text)))), exact(value));
        QCOMPARE(exact(parseSingle(view).value_or(0.0f)), exact(value));
        float quick = 0.0f;
        if (readPlainDecimal(text.cbegin(), text.cend(), quick) == text.cend())
            QCOMPARE(exact(quick), exact(value));
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
        QTEST(parseInteger(QStringView(text), lo, hi).value_or(-1), "parsed");
        QTEST(leadingNumber(text.toStdString()), "leading");
    }

    // Years read from files may have five digits; the last four are kept.
    void paddedYear() { QCOMPARE(pad4(12345), QStringLiteral("2345")); }
};

QTEST_GUILESS_MAIN(TestNumbers)
#include "test_numbers.moc"
