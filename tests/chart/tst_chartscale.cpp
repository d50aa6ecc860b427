// The arithmetic of the charts without any painting. Placement and zoom are
// driven by real windows in the chart window tests.
#include "chart/chartmodel.h"
#include "chart/chartscale.h"
#include "chart/windowlayout.h"

#include <QTest>

#include <cmath>
#include <limits>

namespace {

// A one-in, one-out table, each row named after its input.
template <typename In, typename Out, size_t N> void table(const std::pair<In, Out> (&rows)[N]) {
    QTest::addColumn<In>("in");
    QTest::addColumn<Out>("out");
    for (const auto &[in, out] : rows)
        QTest::addRow("%g", double(in)) << in << out;
}

} // namespace

class TestChartScale : public QObject {
    Q_OBJECT
private slots:
    void rounding_data() {
        const double inf = std::numeric_limits<double>::infinity();
        const std::pair<double, int> rows[] = {
            {2.5, 2},          {3.5, 4},          {-2.5, -2},         {0.49, 0},
            {std::nan(""), 0}, {inf, 1000000000}, {-inf, -1000000000}};
        table(rows);
    }
    void rounding() {
        QFETCH(double, in);
        QTEST(chart_round(in), "out");
    }

    void stepCascade_data() {
        // Each row past 4 needs a different step of the cascade; up to 1
        // the step is kept.
        const std::pair<float, float> rows[] = {
            {1.3f, 2},   {4, 4},       {7, 10},      {26, 60},     {60, 100},    {260, 600},
            {501, 1000}, {1001, 2000}, {2600, 3000}, {1.0f, 1.0f}, {0.37f, .37f}};
        table(rows);
    }
    void stepCascade() {
        QFETCH(float, in);
        QTEST(chart_stepCascade(in), "out");
    }

    void yLabelDecimals_data() {
        QTest::addColumn<float>("y1");
        QTest::addColumn<float>("y2");
        QTest::addColumn<int>("decimals");
        const std::tuple<float, float, int> rows[] = {
            {0, 9.99f, 3}, {-4.9f, 3.06f, 3}, {0, 10, 2},   {-10, 0, 2},
            {0, 100, 1},   {-100, 5, 1},      {0, 1000, 0}, {-1000, -999, 0}};
        for (const auto &[y1, y2, decimals] : rows)
            QTest::addRow("%g .. %g", double(y1), double(y2)) << y1 << y2 << decimals;
    }
    void yLabelDecimals() {
        QFETCH(float, y1);
        QFETCH(float, y2);
        QTEST(chart_yLabelDecimals(y1, y2), "decimals");
    }

    // One decimal at most, and only when the seven-digit plain form has a
    // point: that of 1e-5 is "1E-05", so it gets none.
    void infoValueText_data() {
        const std::pair<float, QByteArray> rows[] = {
            {3, "3"},         {12.3456f, "12.3"},   {1e-5f, "0"},
            {1.5e-5f, "0.0"}, {1234567, "1234567"}, {12345678, "12345678.0"}};
        table(rows);
    }
    void infoValueText() {
        QFETCH(float, in);
        QTEST(chart_infoValueText(in).toLatin1(), "out");
    }

    void snap() {
        // Against a panel at 0,0 .. 299,399; the moving window's own
        // rectangle in the list is ignored.
        const std::pair<QPoint, QPoint> rows[] = {
            {{306, 50}, {300, 50}},    // left edge snaps beside
            {{295, 50}, {300, 50}},    // overlapping snaps beside
            {{305, 7}, {300, 0}},      // top edges flush
            {{-6, 404}, {0, 400}},     // below, left edges flush
            {{306, 500}, {306, 500}},  // no overlap across the axis
            {{-205, 50}, {-200, 50}}}; // right edge beside
        for (const auto &[from, to] : rows) {
            const QRect others[] = {QRect(from, QSize(200, 100)), QRect(0, 0, 300, 400)};
            QCOMPARE(window_snap(others[0], others), to);
        }
    }

    void bufferAndLineLimits() {
        ChartModel m;
        for (int i = 0; i < ChartModel::capacity; ++i)
            QVERIFY(m.addDataPoint(float(i), 1.0f, 2024, 1, 1, 0, 0, 0));
        QVERIFY(!m.addDataPoint(9999.0f, 2.0f, 2024, 1, 1, 0, 0, 0));
        QVERIFY(!m.addMultiDataPoint(9999.0f, 2.0f, 3.0f, 2024, 1, 1, 0, 0, 0));
        QCOMPARE(m.point_count, ChartModel::capacity);
        // The extra slot the drawing may read stays untouched.
        QCOMPARE(m.points[ChartModel::capacity].value_x, 0.0f);
        QVERIFY(m.addXLine(1.0f, 1) && m.addXLine(2.0f, 2) && !m.addXLine(3.0f, 3));
    }

    // On a 600 x 400 canvas: plot 70,40 .. 580,370 (510 x 330).
    void infoIndex_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("zoomed"); // to 10 .. 20
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<int>("index");
        QTest::newRow("left of plot") << 100 << false << QPoint(69, 100) << -1;
        QTest::newRow("below plot") << 100 << false << QPoint(100, 371) << -1;
        QTest::newRow("left edge") << 100 << false << QPoint(70, 100) << 0;
        // f = 459 / 510 = 0.9 of the count (90), not of count - 1 (89.1).
        QTest::newRow("cursor runs ahead") << 100 << false << QPoint(529, 100) << 90;
        QTest::newRow("right edge held at count - 1") << 100 << false << QPoint(580, 100) << 99;
        QTest::newRow("empty chart") << 0 << false << QPoint(325, 100) << 0;
        QTest::newRow("zoomed") << 100 << true << QPoint(325, 100) << 15;
    }

    void infoIndex() {
        QFETCH(int, count);
        QFETCH(bool, zoomed);
        QFETCH(QPoint, pos);
        ChartModel m;
        m.setCanvasSize(600, 400);
        for (int i = 0; i < count; ++i)
            m.addDataPoint(float(i), 1, 2024, 1, 1, 0, 0, 0);
        m.dataPoints_drawn = count; // as the last drawing left it
        m.zoomActive = zoomed;
        m.zoom_x1 = 10;
        m.zoom_x2 = 20;
        QTEST(int(m.infoIndexAt(pos.x(), pos.y())), "index");
    }
};

QTEST_GUILESS_MAIN(TestChartScale)
#include "tst_chartscale.moc"
