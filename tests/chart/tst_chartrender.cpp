// Pixel rules of the chart drawing, checked on QImages: frame, background,
// grids, level lines, the clamped curve, the single-point line, the dates of
// the visible ends, and the guard against a second drawing.
#include "chart/chartrender.h"
#include "chart/chartscale.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <limits>

namespace {

constexpr int W = 600, H = 400; // plot 70,40 .. 580,370 (510 x 330)
const QRgb kBack = qRgb(240, 240, 255);
const QRgb kGraph = qRgb(30, 30, 150);
const QRgb kLines = qRgb(0, 0, 50);
const QRgb kScaling = qRgb(210, 210, 230);
const QRgb kLevel = qRgb(204, 0, 0);

ChartModel styledModel() {
    ChartModel m;
    m.setCanvasSize(W, H);
    m.color_back = kBack;
    m.color_graph = kGraph;
    m.color_lines = kLines;
    m.color_scaling = kScaling;
    m.title = QStringLiteral("Water [ppm]");
    return m;
}

void addValues(ChartModel &m, std::initializer_list<float> values) {
    int i = m.point_count;
    for (float v : values) {
        m.addDataPoint(float(i), v, int16_t(2024), 1, uint8_t(1 + i % 28), 10, 0, 0);
        ++i;
    }
}

// throughPainter: a clip over the whole image sends every line through
// QPainter, the path a PDF page takes, instead of the direct pixel writer.
QImage draw(ChartModel &m, bool throughPainter = false) {
    QImage img(m.geometry.width, m.geometry.height, QImage::Format_RGB32);
    img.fill(Qt::magenta); // anything the drawing leaves out shows up
    QPainter p(&img);
    if (throughPainter)
        p.setClipRect(img.rect());
    chart_draw(m, p, ChartSurface::Screen);
    return img;
}

QRgb at(const QImage &img, int x, int y) {
    return img.pixel(x, y) & 0xffffff;
}

int countColour(const QImage &img, QRgb colour, QRect within = {}) {
    if (within.isNull())
        within = img.rect();
    int n = 0;
    for (int y = within.top(); y <= within.bottom(); ++y)
        for (int x = within.left(); x <= within.right(); ++x)
            n += at(img, x, y) == (colour & 0xffffff) ? 1 : 0;
    return n;
}

// Row of value v in the unzoomed view 0 .. 1.02 * max of the plot above.
int rowOf(float v, float max) {
    const float y2 = static_cast<float>(max * 1.02);
    return 370 - chart_round(double(v) / double(y2) * 330);
}

} // namespace

class TestChartRender : public QObject {
    Q_OBJECT
private slots:
    void frameAndBackground_data();
    void frameAndBackground();
    void pageFrame();
    void gridsInScalingColour();
    void levelLineOnlyInsideView();
    void curveClampedToPlot_data();
    void curveClampedToPlot();
    void painterPathDrawsTheSameLines();
    void zoomedViewStartsFromPointZero();
    void singlePointLine();
    void extentOfAllZeroValues();
    void singlePointDatesFromSlotOne();
    void pendingEventsUnderGuard();
    void tinyCanvasDrawsWithoutFault();
    void infoBoxes();
};

void TestChartRender::frameAndBackground_data() {
    QTest::addColumn<bool>("withPoints");
    QTest::newRow("empty") << false;
    QTest::newRow("with points") << true;
}

void TestChartRender::frameAndBackground() {
    QFETCH(bool, withPoints);
    ChartModel m = styledModel();
    if (withPoints)
        addValues(m, {1, 2, 3});
    const QImage img = draw(m);
    // The frame runs one pixel outside the plot, corners included.
    for (QPoint p : {QPoint(69, 39), QPoint(581, 39), QPoint(69, 371), QPoint(581, 371),
                     QPoint(300, 39), QPoint(300, 371), QPoint(69, 200), QPoint(581, 200)})
        QCOMPARE(at(img, p.x(), p.y()), kLines & 0xffffff);
    // ... and not beyond it.
    for (QPoint p :
         {QPoint(68, 38), QPoint(582, 372), QPoint(582, 200), QPoint(300, 372), QPoint(581, 372)})
        QCOMPARE(at(img, p.x(), p.y()), kBack & 0xffffff);
    QCOMPARE(countColour(img, qRgb(255, 0, 255)), 0); // whole canvas cleared
    QCOMPARE(at(img, 0, 0), kBack & 0xffffff);
    QCOMPARE(at(img, W - 1, H - 1), kBack & 0xffffff);
    // Some title ink near the top centre.
    QVERIFY(countColour(img, kBack, QRect(250, 6, 100, 16)) < 100 * 16);
}

void TestChartRender::pageFrame() {
    ChartModel m = styledModel();
    addValues(m, {1, 2});
    const QImage page = chart_pageImage(m);
    QCOMPARE(page.size(), QSize(800, 600));
    QCOMPARE(at(page, 69, 39), kLines & 0xffffff);
    QCOMPARE(at(page, 781, 571), kLines & 0xffffff);
    QCOMPARE(at(page, 782, 572), kBack & 0xffffff);
    QCOMPARE(m.geometry.width, W); // the screen geometry is not touched
}

void TestChartRender::gridsInScalingColour() {
    ChartModel m = styledModel();
    addValues(m, {10, 10, 10, 10, 10});
    const QImage img = draw(m);
    // The first vertical line sits at x1 (the left edge), the first
    // horizontal one at y1 (the bottom edge).
    QCOMPARE(at(img, 70, 45), kScaling & 0xffffff);
    QCOMPARE(at(img, 400, 370), kScaling & 0xffffff);
    // Ticks in the lines colour outside the plot.
    QCOMPARE(at(img, 67, 370), kLines & 0xffffff); // left of the bottom line
    QCOMPARE(at(img, 70, 374), kLines & 0xffffff); // under the first vertical line
    // The curve at 10 of 0 .. 10.2.
    QCOMPARE(at(img, 300, rowOf(10, 10)), kGraph & 0xffffff);
}

void TestChartRender::levelLineOnlyInsideView() {
    ChartModel m = styledModel();
    addValues(m, {10, 10, 10});
    m.addXLine(5.0f, kLevel);
    m.addXLine(50.0f, qRgb(0, 200, 0)); // above 10.2: not drawn, not clamped
    const QImage img = draw(m);
    const int row = rowOf(5, 10);
    QVERIFY(countColour(img, kLevel, QRect(70, row, 510, 1)) > 100); // dash-dot-dot
    QCOMPARE(countColour(img, kLevel), countColour(img, kLevel, QRect(70, row, 510, 1)));
    QCOMPARE(countColour(img, qRgb(0, 200, 0)), 0);
}

void TestChartRender::curveClampedToPlot_data() {
    QTest::addColumn<bool>("throughPainter");
    QTest::newRow("pixel writer") << false;
    QTest::newRow("QPainter") << true;
}

void TestChartRender::curveClampedToPlot() {
    QFETCH(bool, throughPainter);
    ChartModel m = styledModel();
    // Minimum -5 is padded to -5 / 1.02, so the lowest point lies below the
    // plot and is clamped to its bottom edge. The dips' lowest pixels come
    // from the segments leaving them.
    addValues(m, {3, -5, 3, -5, 3});
    const QImage img = draw(m, throughPainter);
    const QRect plot(70, 40, 511, 331);
    QVERIFY(countColour(img, kGraph) > 0);
    QCOMPARE(countColour(img, kGraph, plot), countColour(img, kGraph));
    QVERIFY(countColour(img, kGraph, QRect(70, 370, 511, 1)) > 0);
    QCOMPARE(m.dataValue_min, static_cast<float>(-5 / 1.02));
    QCOMPARE(m.dataValue_max, static_cast<float>(3 * 1.02));
}

void TestChartRender::painterPathDrawsTheSameLines() {
    // Frame, grids, ticks, a level line and the single-point line are all
    // horizontal or vertical, where both paths must agree to the pixel.
    ChartModel m = styledModel();
    addValues(m, {10});
    m.addXLine(4.0f, kLevel);
    QCOMPARE(draw(m, true), draw(m, false));
}

void TestChartRender::zoomedViewStartsFromPointZero() {
    ChartModel m = styledModel();
    addValues(m, {10, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    draw(m);
    m.zoomActive = true;
    m.zoom_x1 = 5;
    m.zoom_x2 = 9;
    m.zoom_y1 = m.dataValue_min;
    m.zoom_y2 = m.dataValue_max;
    const QImage img = draw(m);
    // The first segment comes from the left edge at point 0's height.
    QCOMPARE(at(img, 70, rowOf(10, 10)), kGraph & 0xffffff);
    QCOMPARE(m.x_axis_stringLeft_a, QStringLiteral("[2024-01-06]"));
    QCOMPARE(m.x_axis_stringRight_a, QStringLiteral("[2024-01-10]"));
}

void TestChartRender::singlePointLine() {
    ChartModel m = styledModel();
    addValues(m, {10});
    const QImage img = draw(m);
    const int row = rowOf(10, 10);
    for (int x : {70, 200, 400, 579})
        QCOMPARE(at(img, x, row), kGraph & 0xffffff);
    QCOMPARE(countColour(img, kGraph, QRect(0, 0, W, row)), 0);

    m.addMultiDataPoint(1, 5, 2, 2024, 1, 1, 0, 0, 0); // second-series flag on
    m.clearData();
    addValues(m, {10});
    m.value_y1[0] = 5.0f;
    const QImage two = draw(m);
    QCOMPARE(at(two, 300, rowOf(5, 10)), 0u); // second series in black
}

void TestChartRender::extentOfAllZeroValues() {
    ChartModel m = styledModel();
    addValues(m, {0, 0, 0});
    draw(m);
    QCOMPARE(m.dataValue_min, 0.0f);
    QCOMPARE(m.dataValue_max, static_cast<float>(1e-7f * 1.02));
    QCOMPARE(m.dataIndex_min, 0);
    QCOMPARE(m.dataIndex_max, 2);
    QCOMPARE(m.dataPoints_drawn, 3);
}

void TestChartRender::singlePointDatesFromSlotOne() {
    ChartModel m = styledModel();
    m.addDataPoint(0, 1, 2023, 6, 7, 8, 9, 10);
    m.addDataPoint(1, 2, 2022, 11, 12, 13, 14, 15);
    m.clearData();
    m.addDataPoint(0, 5, 2024, 1, 2, 3, 4, 5);
    m.set_xAxis_text({}, {}, {}, {}, QStringLiteral("oil"));
    draw(m);
    QCOMPARE(m.x_axis_stringLeft_a, QStringLiteral("[2024-01-02]"));
    QCOMPARE(m.x_axis_stringLeft_b, QStringLiteral("[03:04:05]"));
    // x2 becomes 1: the right texts come from whatever buffer slot 1 holds.
    QCOMPARE(m.x_axis_stringRight_a, QStringLiteral("[2022-11-12]"));
    QCOMPARE(m.x_axis_stringRight_b, QStringLiteral("[13:14:15]"));
    QCOMPARE(m.x_axis_stringMiddle_a, QStringLiteral("oil"));
}

void TestChartRender::pendingEventsUnderGuard() {
    ChartModel m = styledModel();
    for (int i = 0; i < 3000; ++i)
        m.addDataPoint(float(i), float(i % 17), 2024, 1, 1, 0, 0, 0);
    int calls = 0;
    bool nestedDrew = true;
    ChartRenderHooks hooks;
    hooks.pendingEvents = [&] {
        ++calls;
        QVERIFY(m.drawing);
        QImage other(10, 10, QImage::Format_RGB32);
        QPainter p(&other);
        nestedDrew = chart_draw(m, p, ChartSurface::Screen);
    };
    QImage img(W, H, QImage::Format_RGB32);
    QPainter p(&img);
    QVERIFY(chart_draw(m, p, ChartSurface::Screen, hooks));
    QCOMPARE(calls, 3); // at indices 0, 1000 and 2000
    QVERIFY(!nestedDrew);
    QVERIFY(!m.drawing);
}

void TestChartRender::tinyCanvasDrawsWithoutFault() {
    ChartModel m = styledModel();
    addValues(m, {-3, 4, 1e30f, -1e30f});
    // Values the readers should never produce must not hang or crash it.
    ChartModel odd = styledModel();
    addValues(odd,
              {std::numeric_limits<float>::infinity(), 1, std::numeric_limits<float>::quiet_NaN(),
               -std::numeric_limits<float>::infinity()});
    QCOMPARE(draw(odd).size(), QSize(W, H));
    m.addXLine(1.0f, kLevel);
    for (QSize s : {QSize(1, 1), QSize(1, 200), QSize(200, 1), QSize(85, 60)}) {
        m.setCanvasSize(s.width(), s.height());
        const QImage img = draw(m);
        QCOMPARE(img.size(), s);
        QVERIFY(!m.drawing);
    }
}

void TestChartRender::infoBoxes() {
    ChartModel m = styledModel();
    addValues(m, {12.5f, 20});
    QImage img = draw(m);
    {
        QPainter p(&img);
        chart_drawInfo(m, p, 0);
    }
    const QRgb red = qRgb(255, 0, 0);
    QVERIFY(countColour(img, red, QRect(4, 4, 97, 29)) > 0);
    QVERIFY(countColour(img, red, QRect(W - 160, 4, 160, 29)) > 0);
    {
        QPainter p(&img);
        chart_drawInfo(m, p, -1); // blanks both boxes
    }
    QCOMPARE(countColour(img, kBack, QRect(4, 4, 97, 29)), 97 * 29);
    QCOMPARE(countColour(img, kBack, QRect(W - 160, 4, 160, 29)), 160 * 29);
}

QTEST_MAIN(TestChartRender)
#include "tst_chartrender.moc"
