// The chart model: buffer limits and the state operations, the mouse
// arithmetic (cursor index, selection zoom with its nesting rule) and the
// zoom handed over from another chart.
#include "chart/chartmodel.h"

#include <QTest>

namespace {

// A model as the last drawing of `count` points with values 0 .. max left it,
// on a 600 x 400 canvas (plot 70,40 .. 580,370).
void prepare(ChartModel &m, int count, float maxValue) {
    m.setCanvasSize(600, 400);
    for (int i = 0; i < count; ++i)
        m.addDataPoint(float(i), maxValue * i / std::max(1, count - 1), 2024, 1, 1, 0, 0, 0);
    m.dataIndex_min = 0;
    m.dataIndex_max = count - 1;
    m.dataValue_min = 0.0f;
    m.dataValue_max = maxValue * 1.02f;
    m.dataPoints_drawn = count;
}

} // namespace

class TestChartModel : public QObject {
    Q_OBJECT
private slots:
    void initialState();
    void bufferAndLineLimits();
    void clearDataKeepsSecondSeries();
    void geometry_data();
    void geometry();
    void infoIndex_data();
    void infoIndex();
    void infoTexts();
    void clickWithoutMovementStartsNothing();
    void dragZoomsToRectangle();
    void zeroWidthRectangle();
    void nestedZoomComesOutNarrower();
    void setZoomClampsAndSkipsFullRange();
    void setZoomNestsAndResetsDepth();
};

void TestChartModel::initialState() {
    ChartModel m;
    QCOMPARE(m.color_back, qRgb(255, 255, 240));
    QCOMPARE(m.color_graph, qRgb(150, 130, 20));
    QCOMPARE(m.color_second, qRgb(0, 0, 0));
    QCOMPARE(m.color_lines, qRgb(50, 50, 0));
    QCOMPARE(m.color_scaling, qRgb(230, 230, 210));
    QCOMPARE(m.color_text, qRgb(0, 0, 0));
    QCOMPARE(m.color_title, qRgb(0, 0, 0));

    m.title = QStringLiteral("x");
    m.set_xAxis_text(QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                     QStringLiteral("d"), QStringLiteral("e"));
    m.addXLine(1.0f, 0);
    m.addMultiDataPoint(0, 1, 2, 2024, 1, 1, 0, 0, 0);
    m.zoomActive = m.selecting = m.drawing = true;
    m.objectIndex = 3;
    m.init();
    QVERIFY(m.title.isEmpty() && m.x_axis_stringLeft_a.isEmpty() &&
            m.x_axis_stringMiddle_a.isEmpty() && m.x_axis_stringRight_b.isEmpty());
    QCOMPARE(m.point_count, 0);
    QCOMPARE(m.xLine_count, 0);
    QVERIFY(!m.multiSeries && !m.zoomActive && !m.selecting && !m.drawing);
    QCOMPARE(m.objectIndex, 3);
}

void TestChartModel::bufferAndLineLimits() {
    ChartModel m;
    for (int i = 0; i < ChartModel::capacity; ++i)
        QVERIFY(m.addDataPoint(float(i), 1.0f, 2024, 1, 1, 0, 0, 0));
    QVERIFY(!m.addDataPoint(9999.0f, 2.0f, 2024, 1, 1, 0, 0, 0));
    QVERIFY(!m.addMultiDataPoint(9999.0f, 2.0f, 3.0f, 2024, 1, 1, 0, 0, 0));
    QCOMPARE(m.point_count, ChartModel::capacity);
    // The extra slot the drawing may read stays untouched.
    QCOMPARE(m.points[ChartModel::capacity].value_x, 0.0f);

    QVERIFY(m.addXLine(1.0f, qRgb(1, 2, 3)));
    QVERIFY(m.addXLine(2.0f, qRgb(4, 5, 6)));
    QVERIFY(!m.addXLine(3.0f, qRgb(7, 8, 9)));
    QCOMPARE(m.xLine_count, 2);
    QCOMPARE(m.xLines[1].value, 2.0f);
    m.clearXLines();
    QCOMPARE(m.xLine_count, 0);
}

void TestChartModel::clearDataKeepsSecondSeries() {
    ChartModel m;
    m.addMultiDataPoint(0, 1, 7, 2024, 1, 1, 0, 0, 0);
    m.zoomActive = m.selecting = true;
    m.clearData();
    QCOMPARE(m.point_count, 0);
    QVERIFY(!m.zoomActive && !m.selecting);
    QVERIFY(m.multiSeries);
    m.addDataPoint(0, 1, 2024, 1, 1, 0, 0, 0);
    QCOMPARE(m.value_y1[0], 7.0f); // the second curve keeps its old value
}

void TestChartModel::geometry_data() {
    QTest::addColumn<int>("w");
    QTest::addColumn<int>("h");
    QTest::addColumn<QList<int>>("expected"); // right, bottom, plotWidth, plotHeight
    QTest::newRow("normal") << 600 << 400 << QList<int>{580, 370, 510, 330};
    QTest::newRow("page") << 800 << 600 << QList<int>{780, 570, 710, 530};
    QTest::newRow("tiny") << 1 << 1 << QList<int>{-19, -29, -89, -69};
}

void TestChartModel::geometry() {
    QFETCH(int, w);
    QFETCH(int, h);
    QFETCH(QList<int>, expected);
    const ChartGeometry g = ChartGeometry::forCanvas(w, h);
    QCOMPARE(g.left, 70);
    QCOMPARE(g.top, 40);
    QCOMPARE((QList<int>{g.right, g.bottom, g.plotWidth, g.plotHeight}), expected);
}

void TestChartModel::infoIndex_data() {
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("zoomed");
    QTest::addColumn<QPoint>("pos");
    QTest::addColumn<int>("index");
    // Plot 70 .. 580 (width 510), 40 .. 370.
    QTest::newRow("left of plot") << 100 << false << QPoint(69, 100) << -1;
    QTest::newRow("above plot") << 100 << false << QPoint(100, 39) << -1;
    QTest::newRow("below plot") << 100 << false << QPoint(100, 371) << -1;
    QTest::newRow("left edge") << 100 << false << QPoint(70, 100) << 0;
    // f = 255 / 510 = 0.5; 0.5 * 100 = 50 (the count, not count - 1).
    QTest::newRow("middle runs ahead") << 100 << false << QPoint(325, 100) << 50;
    QTest::newRow("right edge held at count - 1") << 100 << false << QPoint(580, 100) << 99;
    QTest::newRow("empty chart") << 0 << false << QPoint(325, 100) << 0;
    // Zoom 10 .. 20: f 0.5 -> 15.
    QTest::newRow("zoomed") << 100 << true << QPoint(325, 100) << 15;
}

void TestChartModel::infoIndex() {
    QFETCH(int, count);
    QFETCH(bool, zoomed);
    QFETCH(QPoint, pos);
    QFETCH(int, index);
    ChartModel m;
    prepare(m, count, 10.0f);
    if (zoomed) {
        m.zoomActive = true;
        m.zoom_x1 = 10.0f;
        m.zoom_x2 = 20.0f;
    }
    QCOMPARE(int(m.infoIndexAt(pos.x(), pos.y())), index);
}

void TestChartModel::infoTexts() {
    ChartModel m;
    m.addDataPoint(0, 12.25f, 2024, 3, 5, 14, 2, 9);
    m.addDataPoint(1, 40.0f, 999, 12, 31, 0, 0, 0);
    const ChartInfoTexts a = m.infoTexts(0);
    QCOMPARE(a.date, QStringLiteral("2024-03-05"));
    QCOMPARE(a.time, QStringLiteral("14:02:09"));
    QCOMPARE(a.value.left(3), QStringLiteral("12.")); // one decimal
    QCOMPARE(a.value.size(), 4);
    const ChartInfoTexts b = m.infoTexts(1);
    QCOMPARE(b.date, QStringLiteral("0999-12-31"));
    QCOMPARE(b.value, QStringLiteral("40"));
    for (int out : {-1, 2, 5200}) {
        const ChartInfoTexts t = m.infoTexts(out);
        QVERIFY(t.date.isEmpty() && t.time.isEmpty() && t.value.isEmpty());
    }
}

void TestChartModel::clickWithoutMovementStartsNothing() {
    ChartModel m;
    prepare(m, 100, 10.0f);
    // No movement while the button was down: the next movement has no
    // button, and no selection is in progress.
    const ChartSelectionStep s = m.selectionMove(200, 200, false, false);
    QCOMPARE(s.kind, ChartSelectionStep::None);
    QVERIFY(!m.selecting && !m.zoomActive);
    // Another button than the left alone does not start one either.
    QCOMPARE(m.selectionMove(200, 200, false, true).kind, ChartSelectionStep::None);
    QVERIFY(!m.selecting);
}

void TestChartModel::dragZoomsToRectangle() {
    ChartModel m;
    prepare(m, 101, 10.0f); // extent: index 0 .. 100, value 0 .. 10.2
    // Dragged from bottom right to top left: the corners are ordered.
    QCOMPARE(m.selectionMove(325, 205, true, true).kind, ChartSelectionStep::Started);
    QCOMPARE(m.selectionMove(300, 150, true, true).kind, ChartSelectionStep::Dragging);
    QVERIFY(!m.zoomActive);
    const ChartSelectionStep s = m.selectionMove(172, 40, false, false);
    QCOMPARE(s.kind, ChartSelectionStep::Applied);
    QVERIFY(m.zoomActive && !m.selecting);
    // fx1 = 102 / 510 = 0.2, fx2 = 0.5; fyTop = 1, fyBottom = 1 - 165/330 = 0.5.
    QCOMPARE(s.fx1, 0.2f);
    QCOMPARE(s.fx2, 0.5f);
    QCOMPARE(m.zoom_x1, 20.0f);
    QCOMPARE(m.zoom_x2, 50.0f);
    QCOMPARE(m.zoom_y1, 5.1f);
    QCOMPARE(m.zoom_y2, 10.2f);
    QCOMPARE(m.selStart_x, 172);
    QCOMPARE(m.selEnd_y, 205);
}

void TestChartModel::zeroWidthRectangle() {
    ChartModel m;
    prepare(m, 101, 10.0f);
    m.selectionMove(325, 100, true, true);
    const ChartSelectionStep s = m.selectionMove(325, 100, false, false);
    QCOMPARE(s.kind, ChartSelectionStep::Applied);
    QCOMPARE(m.zoom_x1, m.zoom_x2); // the drawing widens it to one index
    QCOMPARE(m.zoom_y1, m.zoom_y2);
    // Far outside the plot: the factors are clamped to 0 .. 1.
    m.disableZoom();
    m.selectionMove(-50, -50, true, true);
    const ChartSelectionStep out = m.selectionMove(5000, 5000, false, false);
    QCOMPARE(out.fx1, 0.0f);
    QCOMPARE(out.fx2, 1.0f);
    QCOMPARE(m.zoom_x2, 100.0f);
}

void TestChartModel::nestedZoomComesOutNarrower() {
    ChartModel m;
    prepare(m, 101, 10.0f);
    m.zoomActive = true;
    m.zoom_x1 = 20.0f;
    m.zoom_x2 = 60.0f;
    m.zoom_y1 = 0.0f;
    m.zoom_y2 = 10.0f;
    // The rectangle covers 25 % .. 75 % of the view (index 30 .. 50 on screen).
    m.selectionMove(70 + 128, 40, true, true);    // 127.5 -> 128: f = 0.25098
    m.selectionMove(70 + 383, 370, false, false); // f = 0.75098
    // x1' = 40 * 0.25098 + 20 = 30.04; x2' = (60 - 30.04) * 0.75098 + 30.04.
    QVERIFY(qAbs(m.zoom_x1 - 30.039f) < 0.01f);
    QVERIFY(qAbs(m.zoom_x2 - 52.54f) < 0.01f);
    // The window is 22.5 indices wide for the 20 selected, so the selected
    // stretch comes out narrower on screen than the rectangle drawn.
    QVERIFY(m.zoom_x2 - m.zoom_x1 > 22.0f);
}

void TestChartModel::setZoomClampsAndSkipsFullRange() {
    ChartModel m;
    prepare(m, 101, 10.0f);
    float a = -0.5f, b = 1.5f;
    QVERIFY(!m.setZoom_x(a, b)); // clamps to (0, 1): nothing at all
    QCOMPARE(a, 0.0f);
    QCOMPARE(b, 1.0f);
    QVERIFY(!m.zoomActive);

    float c = 0.25f, d = 0.75f;
    QVERIFY(m.setZoom_x(c, d));
    QCOMPARE(m.zoom_x1, 25.0f);
    QCOMPARE(m.zoom_x2, 75.0f);
    float e = 0.0f, f = 1.0f;
    QVERIFY(!m.setZoom_x(e, f)); // leaves the zoom as it is
    QVERIFY(m.zoomActive);
    QCOMPARE(m.zoom_x1, 25.0f);
}

void TestChartModel::setZoomNestsAndResetsDepth() {
    ChartModel m;
    prepare(m, 101, 10.0f);
    m.zoomActive = true;
    m.zoom_x1 = 20.0f;
    m.zoom_x2 = 60.0f;
    m.zoom_y1 = 3.0f;
    m.zoom_y2 = 4.0f;
    float a = 0.5f, b = 0.5f;
    QVERIFY(m.setZoom_x(a, b));
    QCOMPARE(m.zoom_x1, 40.0f);
    QCOMPARE(m.zoom_x2, 50.0f); // (60 - 40) * 0.5 + 40
    QCOMPARE(m.zoom_y1, 0.0f);  // full value range again
    QCOMPARE(m.zoom_y2, 10.2f);
}

QTEST_GUILESS_MAIN(TestChartModel)
#include "tst_chartmodel.moc"
