// Scale arithmetic of the charts: rounding, the step cascade, label formats,
// the cursor's value text, and the snapping rule of the window layout.
#include "chart/chartscale.h"
#include "chart/windowlayout.h"

#include <QTest>

#include <limits>
#include <vector>

class TestChartScale : public QObject {
    Q_OBJECT
private slots:
    void rounding_data();
    void rounding();
    void stepCascade_data();
    void stepCascade();
    void yLabelDecimals_data();
    void yLabelDecimals();
    void infoValueText_data();
    void infoValueText();
    void dateAndTimeTexts();
    void snap_data();
    void snap();
    void placement_data();
    void placement();
};

void TestChartScale::rounding_data() {
    QTest::addColumn<double>("in");
    QTest::addColumn<int>("out");
    QTest::newRow("2.5 to even") << 2.5 << 2;
    QTest::newRow("3.5 to even") << 3.5 << 4;
    QTest::newRow("-2.5 to even") << -2.5 << -2;
    QTest::newRow("0.49") << 0.49 << 0;
    QTest::newRow("NaN") << std::numeric_limits<double>::quiet_NaN() << 0;
    QTest::newRow("+inf held") << std::numeric_limits<double>::infinity() << 1000000000;
    QTest::newRow("-inf held") << -std::numeric_limits<double>::infinity() << -1000000000;
}

void TestChartScale::rounding() {
    QFETCH(double, in);
    QFETCH(int, out);
    QCOMPARE(chart_round(in), out);
}

void TestChartScale::stepCascade_data() {
    QTest::addColumn<float>("step");
    QTest::addColumn<float>("rounded");
    const std::pair<float, float> rows[] = {
        {1.3f, 2},   {3, 4},       {4, 4},       {7, 10},      {12, 20},       {26, 60},
        {30, 60},    {60, 100},    {101, 200},   {201, 300},   {260, 600},     {499, 600},
        {501, 1000}, {1001, 2000}, {2600, 3000}, {1.0f, 1.0f}, {0.37f, 0.37f}, {1e-7f, 1e-7f},
    };
    for (const auto &[in, out] : rows)
        QTest::addRow("%g", double(in)) << in << out;
}

void TestChartScale::stepCascade() {
    QFETCH(float, step);
    QFETCH(float, rounded);
    QCOMPARE(chart_stepCascade(step), rounded);
}

void TestChartScale::yLabelDecimals_data() {
    QTest::addColumn<float>("y1");
    QTest::addColumn<float>("y2");
    QTest::addColumn<int>("decimals");
    QTest::newRow("small positive") << 0.0f << 9.99f << 3;
    QTest::newRow("-5 .. 3") << -4.9f << 3.06f << 3;
    QTest::newRow("reaches 10") << 0.0f << 10.0f << 2;
    QTest::newRow("down to -10") << -10.0f << 0.0f << 2;
    QTest::newRow("reaches 100") << 0.0f << 100.0f << 1;
    QTest::newRow("down to -100") << -100.0f << 5.0f << 1;
    QTest::newRow("reaches 1000") << 0.0f << 1000.0f << 0;
    QTest::newRow("down to -1000") << -1000.0f << -999.0f << 0;
}

void TestChartScale::yLabelDecimals() {
    QFETCH(float, y1);
    QFETCH(float, y2);
    QFETCH(int, decimals);
    QCOMPARE(chart_yLabelDecimals(y1, y2), decimals);
}

void TestChartScale::infoValueText_data() {
    QTest::addColumn<float>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("integer") << 3.0f << QStringLiteral("3");
    QTest::newRow("one decimal") << 12.5f << QStringLiteral("12.5");
    QTest::newRow("decimals capped") << 12.3456f << QStringLiteral("12.3");
    QTest::newRow("negative") << -2.76f << QStringLiteral("-2.8");
    QTest::newRow("small with point") << 0.04f << QStringLiteral("0.0");
    // The plain form of 1e-5 is "1E-05": no point, so no decimals.
    QTest::newRow("exponent without point") << 1e-5f << QStringLiteral("0");
    QTest::newRow("exponent with point") << 1.5e-5f << QStringLiteral("0.0");
    QTest::newRow("seven digits") << 1234567.0f << QStringLiteral("1234567");
    QTest::newRow("eight digits") << 12345678.0f << QStringLiteral("12345678.0");
}

void TestChartScale::infoValueText() {
    QFETCH(float, value);
    QFETCH(QString, text);
    QCOMPARE(chart_infoValueText(value), text);
}

void TestChartScale::dateAndTimeTexts() {
    QCOMPARE(chart_dateText(2024, 3, 5), QStringLiteral("2024-03-05"));
    QCOMPARE(chart_dateText(999, 12, 31), QStringLiteral("0999-12-31"));
    QCOMPARE(chart_timeText(7, 0, 9), QStringLiteral("07:00:09"));
}

void TestChartScale::snap_data() {
    QTest::addColumn<QRect>("moving");
    QTest::addColumn<QRect>("other");
    QTest::addColumn<QPoint>("topLeft");
    const QRect panel(0, 0, 300, 400); // right() = 299
    QTest::newRow("far away stays") << QRect(400, 50, 200, 100) << panel << QPoint(400, 50);
    QTest::newRow("left edge snaps beside") << QRect(306, 50, 200, 100) << panel << QPoint(300, 50);
    QTest::newRow("left edge overlapping snaps beside")
        << QRect(295, 50, 200, 100) << panel << QPoint(300, 50);
    QTest::newRow("top edges flush") << QRect(305, 7, 200, 100) << panel << QPoint(300, 0);
    QTest::newRow("below, left edges flush") << QRect(-6, 404, 200, 100) << panel << QPoint(0, 400);
    QTest::newRow("no overlap across the axis")
        << QRect(306, 500, 200, 100) << panel << QPoint(306, 500);
    QTest::newRow("right edge beside") << QRect(-205, 50, 200, 100) << panel << QPoint(-200, 50);
}

void TestChartScale::snap() {
    QFETCH(QRect, moving);
    QFETCH(QRect, other);
    QFETCH(QPoint, topLeft);
    const std::vector<QRect> others{moving, other}; // its own rectangle is ignored
    QCOMPARE(window_snap(moving, others), topLeft);
}

void TestChartScale::placement_data() {
    QTest::addColumn<int>("areaWidth");
    QTest::addColumn<int>("secondColumn");
    // Panel 318 wide, charts 700 x 450.
    QTest::newRow("wide area: side by side") << 3000 << 1018;
    QTest::newRow("narrower: pulled in to the right edge") << 1400 << 700;
    QTest::newRow("too narrow: on top of the first column") << 500 << 318;
}

void TestChartScale::placement() {
    QFETCH(int, areaWidth);
    QFETCH(int, secondColumn);
    const QSize chart(700, 450);
    const auto at = window_chartPlacement(QRect(0, 0, 318, 340), QSize(areaWidth, 900),
                                          {chart, chart, chart, chart});
    QCOMPARE(at[0], QPoint(318, 0));
    QCOMPARE(at[1], QPoint(secondColumn, 0));
    QCOMPARE(at[2], QPoint(318, 450));
    QCOMPARE(at[3], QPoint(secondColumn, 450));
}

QTEST_GUILESS_MAIN(TestChartScale)
#include "tst_chartscale.moc"
