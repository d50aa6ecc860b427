// Pixel rules of the chart drawing, checked on QImages.
#include "chart/chartrender.h"
#include "chart/chartscale.h"
#include "chart/chartstyle.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <limits>

namespace {

// The water chart's colours as 0xRRGGBB, and two more.
constexpr QRgb kBack = 0xf0f0ff, kGraph = 0x1e1e96, kLines = 0x000032, kScaling = 0xd2d2e6,
               kLevel = 0xcc0000, kMagenta = 0xff00ff;

// A water chart on a 600 x 400 canvas (plot 70,40 .. 580,370, 510 x 330)
// with the values given, dated one day apart from 2024-01-01.
ChartModel styledModel(std::initializer_list<float> values = {}) {
    ChartModel m;
    m.setCanvasSize(600, 400);
    chart_applyStyle(m, ChartQuantity::Water, false);
    for (float v : values)
        m.addDataPoint(float(m.point_count), v, 2024, 1, uint8_t(1 + m.point_count), 10, 0, 0);
    return m;
}

// throughPainter: a clip over the whole image sends every line through
// QPainter, the path a PDF page takes, instead of the direct pixel writer.
QImage draw(ChartModel &m, bool throughPainter = false) {
    QImage img(m.geometry.width, m.geometry.height, QImage::Format_RGB32);
    img.fill(kMagenta); // anything the drawing leaves out shows up
    QPainter p(&img);
    if (throughPainter)
        p.setClipRect(img.rect());
    chart_draw(m, p, ChartSurface::Screen);
    return img;
}

QRgb at(const QImage &img, int x, int y) {
    return img.pixel(x, y) & 0xffffff;
}

int countColour(const QImage &img, QRgb colour, QRect within = QRect(0, 0, 600, 400)) {
    int n = 0;
    for (int y = within.top(); y <= within.bottom(); ++y)
        for (int x = within.left(); x <= within.right(); ++x)
            n += at(img, x, y) == colour ? 1 : 0;
    return n;
}

// Row of value v in the unzoomed view 0 .. 1.02 * max of the plot.
int rowOf(float v, float max) {
    return 370 - chart_round(double(v) / double(static_cast<float>(max * 1.02)) * 330);
}

} // namespace

class TestChartRender : public QObject {
    Q_OBJECT
private slots:
    void frameAndBackground_data() {
        QTest::addColumn<bool>("page");
        QTest::newRow("empty chart") << false;
        QTest::newRow("printed page with points") << true;
    }

    void frameAndBackground() {
        QFETCH(bool, page);
        ChartModel m = page ? styledModel({1, 2, 3}) : styledModel();
        const QImage img = page ? chart_pageImage(m) : draw(m);
        QCOMPARE(img.size(), page ? QSize(800, 600) : QSize(600, 400));
        QCOMPARE(m.geometry.width, 600); // the page leaves the screen geometry alone
        const int r = img.width() - 19, b = img.height() - 29;
        // The frame runs one pixel outside the plot, corners included, and
        // not beyond it; the whole canvas is cleared.
        for (QPoint p : {QPoint(69, 39), QPoint(r, 39), QPoint(69, b), QPoint(r, b),
                         QPoint(300, 39), QPoint(300, b), QPoint(69, 200), QPoint(r, 200)})
            QCOMPARE(at(img, p.x(), p.y()), kLines);
        for (QPoint p : {QPoint(0, 0), QPoint(68, 38), QPoint(r + 1, b + 1), QPoint(r + 1, 200),
                         QPoint(300, b + 1), QPoint(r, b + 1)})
            QCOMPARE(at(img, p.x(), p.y()), kBack);
        QCOMPARE(countColour(img, kMagenta, img.rect()), 0);
        // Some title ink near the top centre.
        QVERIFY(countColour(img, kBack, QRect(img.width() / 2 - 50, 6, 100, 16)) < 100 * 16);
    }

    void gridsLevelLinesAndClampedCurve() {
        // Minimum -5 is padded to -5 / 1.02, so the dips lie below the plot
        // and are clamped to its bottom edge.
        ChartModel m = styledModel({10, -5, 10, -5, 10});
        m.addXLine(5.0f, kLevel);
        m.addXLine(11.0f, 0x00c800); // above 10.2: left out, neither clamped nor in the margin
        const int levelRow = 370 - chart_round((5 + 5 / 1.02) / (10.2 + 5 / 1.02) * 330);
        // The pixel writer and QPainter (the path of a PDF page) agree.
        for (bool throughPainter : {false, true}) {
            const QImage img = draw(m, throughPainter);
            // The first vertical grid line sits at the left edge, the first
            // horizontal one at the bottom edge; ticks in the lines colour
            // outside the plot.
            QCOMPARE((QList<QRgb>{at(img, 70, 200), at(img, 400, 370), at(img, 67, 370),
                                  at(img, 70, 374)}),
                     (QList<QRgb>{kScaling, kScaling, kLines, kLines}));
            const QRect level(70, levelRow, 510, 1);
            QVERIFY(countColour(img, kLevel, level) > 100); // dash-dot-dot
            QCOMPARE(countColour(img, kLevel), countColour(img, kLevel, level));
            QCOMPARE(countColour(img, 0x00c800), 0);
            QVERIFY(countColour(img, kGraph, QRect(70, 370, 511, 1)) > 0);
            QCOMPARE(countColour(img, kGraph, QRect(70, 40, 511, 331)), countColour(img, kGraph));
        }
        QCOMPARE(m.dataValue_min, static_cast<float>(-5 / 1.02));
        QCOMPARE(m.dataValue_max, static_cast<float>(10 * 1.02));
        // All zeros: the view still has a height.
        ChartModel zeros = styledModel({0, 0, 0});
        draw(zeros);
        QCOMPARE(zeros.dataValue_max, static_cast<float>(1e-7f * 1.02));
    }

    void zoomedViewStartsFromPointZero() {
        ChartModel m = styledModel({10, 0, 0, 0, 0, 0, 0, 0, 0, 0});
        draw(m);
        float from = 5.0f / 9, to = 1; // indices 5 .. 9, handed over from another chart
        m.setZoom_x(from, to);
        const QImage img = draw(m);
        // The first segment comes from the left edge at point 0's height.
        QCOMPARE(at(img, 70, rowOf(10, 10)), kGraph);
        QCOMPARE((QStringList{m.x_axis_stringLeft_a, m.x_axis_stringRight_a}),
                 (QStringList{QStringLiteral("[2024-01-06]"), QStringLiteral("[2024-01-10]")}));
    }

    void singlePoint() {
        ChartModel m = styledModel();
        m.addMultiDataPoint(0, 1, 2, 2023, 6, 7, 8, 9, 10);
        m.addDataPoint(1, 2, 2022, 11, 12, 13, 14, 15);
        m.clearData();
        m.addDataPoint(0, 10, 999, 1, 2, 3, 4, 5);
        m.set_xAxis_text({}, {}, {}, {}, QStringLiteral("oil"));
        const QImage img = draw(m);
        // A line across the whole plot at the value. Cleared and refilled
        // with single values, the chart keeps drawing the second series (in
        // black) from the value it still holds.
        const int row = rowOf(10, 10);
        for (int x : {70, 200, 400, 579})
            QCOMPARE(at(img, x, row), kGraph);
        QCOMPARE(countColour(img, kGraph, QRect(0, 0, 600, row)), 0);
        QCOMPARE(at(img, 300, rowOf(2, 10)), 0u);
        // x2 becomes 1: the right texts come from whatever buffer slot 1 holds.
        QCOMPARE((QStringList{m.x_axis_stringLeft_a, m.x_axis_stringLeft_b, m.x_axis_stringRight_a,
                              m.x_axis_stringRight_b, m.x_axis_stringMiddle_a}),
                 (QStringList{QStringLiteral("[0999-01-02]"), QStringLiteral("[03:04:05]"),
                              QStringLiteral("[2022-11-12]"), QStringLiteral("[13:14:15]"),
                              QStringLiteral("oil")}));
    }

    void pendingEventsUnderGuard() {
        // Events let through during a long drawing cannot start another one.
        ChartModel m = styledModel();
        for (int i = 0; i < 3000; ++i)
            m.addDataPoint(float(i), float(i % 17), 2024, 1, 1, 0, 0, 0);
        int calls = 0;
        ChartRenderHooks hooks;
        hooks.pendingEvents = [&] {
            ++calls;
            QVERIFY(chart_pageImage(m).isNull());
        };
        QVERIFY(!chart_pageImage(m, hooks).isNull());
        QCOMPARE(calls, 3); // at indices 0, 1000 and 2000
        QVERIFY(!m.drawing);
    }

    void oddInputDrawsWithoutFault() {
        // Values the readers should never produce must not hang or crash it,
        // nor must canvases too small for the plot.
        const float inf = std::numeric_limits<float>::infinity();
        ChartModel odd = styledModel({inf, 1, std::numeric_limits<float>::quiet_NaN(), -inf});
        QCOMPARE(draw(odd).size(), QSize(600, 400));
        ChartModel m = styledModel({-3, 4, 1e30f, -1e30f});
        m.addXLine(1.0f, kLevel);
        for (QSize s : {QSize(1, 1), QSize(1, 200), QSize(200, 1), QSize(85, 60)}) {
            m.setCanvasSize(s.width(), s.height());
            QCOMPARE(draw(m).size(), s);
            QVERIFY(!m.drawing);
        }
    }
};

QTEST_MAIN(TestChartRender)
#include "tst_chartrender.moc"
