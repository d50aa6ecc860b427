// The chart windows: start-up placement and titles, the cursor and drag zoom
// through real mouse events, kept in step across all charts.
#include "chart/ui/chartpicture.h"
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "core/store.h"
#include "support/sessionfixture.h"

#include <QMdiArea>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

int countColour(const QImage &img, QRgb colour, QRect within) {
    int n = 0;
    for (int y = within.top(); y <= within.bottom(); ++y)
        for (int x = within.left(); x <= within.right(); ++x)
            n += (img.pixel(x, y) & 0xffffff) == colour ? 1 : 0;
    return n;
}

// Red ink in either cursor box of a chart, and of the selection outline.
int cursorInk(const DataView *view) {
    const QImage &img = view->picture()->image();
    return countColour(img, 0xff0000, QRect(4, 4, 97, 29)) +
           countColour(img, 0xff0000, QRect(img.width() - 160, 4, 160, 29));
}

int outlineInk(const DataView *view) {
    const QImage &img = view->picture()->image();
    return countColour(img, 0xf00000, img.rect());
}

// A point of the plot at fractions of its width and height.
QPoint plotPoint(const DataView *view, QPointF f) {
    const ChartGeometry &g = view->model().geometry;
    return QPoint(g.left + int(f.x() * g.plotWidth), g.top + int(f.y() * g.plotHeight));
}

} // namespace

class TestChartWindows : public QObject {
    Q_OBJECT
private slots:
    void init() {
        fixture = std::make_unique<SessionFixture>();
        store = &fixture->store();
        for (int i = 0; i < 400; ++i) {
            DataPoint &p = store->dataPoints[size_t(i)];
            p = {.year = 2024, .month = 2, .day = 3, .minute = uint8_t(i / 60)};
            p.second = uint8_t(i % 60);
            p.water = 100.0f + float(i % 50);
        }
        store->dataPoint_count = 400;
        area = std::make_unique<QMdiArea>();
        area->resize(1400, 900);
        area->show();
        QVERIFY(QTest::qWaitForWindowExposed(area.get()));
        set = std::make_unique<ChartSet>(fixture->session, area.get());
        set->createCharts();
        set->display_data();
    }

    void cleanup() {
        set.reset();
        area.reset();
        fixture.reset();
    }

    void startUpCreatesFourCharts() {
        // Half the area, narrower where two columns would not fit beside the
        // control panel's area; water and pressure on top.
        const QSize half(
            std::min(area->viewport()->width() / 2,
                     (area->viewport()->width() - ChartSet::defaultPanelArea().right() - 1) / 2),
            area->viewport()->height() / 2);
        QStringList titles;
        for (int i = 0; i < 4; ++i) {
            const DataView *view = set->slot(i);
            titles << view->windowTitle();
            QCOMPARE((QList<int>{view->get_objectIndex(), view->model().point_count}),
                     (QList<int>{i, 400}));
            QCOMPARE(view->size(), half);
        }
        QCOMPARE(titles, (QStringList{u"Water [ppm]"_s, u"Pressure [mBar]"_s,
                                      u"Temperature [\u00B0C]"_s, u"Soot [%]"_s}));
        QVERIFY(set->chartCount() == 4 && !set->slot(4));
        QCOMPARE(set->slot(0)->pos(), QPoint(ChartSet::defaultPanelArea().right() + 1, 0));
        QCOMPARE(set->slot(2)->pos().y(), half.height());
        QVERIFY(set->slot(1)->x() >= set->slot(0)->geometry().right() &&
                set->slot(1)->geometry().right() < area->viewport()->width());
        // The water unit follows the store when the charts are refilled, even
        // for a stream without points.
        store->waterDisplayPercent = true;
        fixture->session.dataView_selectStream(5);
        QCOMPARE(set->slot(3)->model().point_count, 0);
        QCOMPARE(water()->windowTitle(), u"Water [%]"_s);
    }

    void cursorOnEveryChart() {
        // A click without movement starts no selection, only the cursor.
        ChartPicture *pic = water()->picture();
        QTest::mousePress(pic, Qt::LeftButton, {}, plotPoint(water(), {0.3, 0.3}));
        QTest::mouseRelease(pic, Qt::LeftButton, {}, plotPoint(water(), {0.3, 0.3}));
        QTest::mouseMove(pic, plotPoint(water(), {0.5, 0.5}));
        for (int i = 0; i < 4; ++i) {
            QVERIFY(!set->slot(i)->model().zoomActive && !set->slot(i)->model().selecting);
            QVERIFY2(cursorInk(set->slot(i)) > 0, qPrintable(QString::number(i)));
        }
        // Leaving the plot blanks the boxes on every chart; a chart busy
        // drawing drops the cursor instead of painting into the drawing.
        QTest::mouseMove(pic, QPoint(20, 20));
        for (int i = 0; i < 4; ++i)
            QCOMPARE(cursorInk(set->slot(i)), 0);
        water()->model().drawing = true;
        QTest::mouseMove(pic, plotPoint(water(), {0.5, 0.5}));
        water()->model().drawing = false;
        QCOMPARE(cursorInk(water()), 0);
        QVERIFY(cursorInk(set->chart(ChartQuantity::Soot)) > 0);
    }

    void dragZoomsEveryChart() {
        drag({0.75, 0.9}, {0.25, 0.1}); // corners in either order
        const ChartModel &w = water()->model();
        QVERIFY(qAbs(w.zoom_x1 - 0.25f * 399) < 2.0f && qAbs(w.zoom_x2 - 0.75f * 399) < 2.0f);
        QVERIFY(w.zoom_y2 < w.dataValue_max);
        for (int i = 1; i < 4; ++i) {
            const ChartModel &m = set->slot(i)->model();
            QVERIFY(m.zoomActive && qAbs(m.zoom_x1 - w.zoom_x1) < 2.0f &&
                    qAbs(m.zoom_x2 - w.zoom_x2) < 2.0f);
            QCOMPARE(m.zoom_y2, m.dataValue_max); // full depth on the others
        }
        // A second rectangle over half the view: the window comes out 0.75 *
        // 0.75 of it, so the selected stretch fills less than the plot.
        const float width1 = w.zoom_x2 - w.zoom_x1;
        drag({0.25, 0.0}, {0.75, 1.0});
        QVERIFY(qAbs(w.zoom_x2 - w.zoom_x1 - width1 * 0.5625f) < 1.0f);
        DataView *temperature = set->chart(ChartQuantity::Temperature);
        QTest::mouseClick(temperature->picture(), Qt::RightButton, {},
                          plotPoint(temperature, {0.5, 0.5}));
        for (int i = 0; i < 4; ++i)
            QVERIFY(!set->slot(i)->model().zoomActive);
    }

private:
    DataView *water() const { return set->chart(ChartQuantity::Water); }

    // Press, the first movement (where the selection starts), the movement
    // to the other corner, the release, and the movement that applies it.
    void drag(QPointF from, QPointF to) {
        ChartPicture *pic = water()->picture();
        // A movement away first, or a press where an earlier drag began would
        // be taken for a double click.
        QTest::mouseMove(pic, QPoint(0, 0));
        QTest::mousePress(pic, Qt::LeftButton, {}, plotPoint(water(), from));
        QTest::mouseMove(pic, plotPoint(water(), from));
        QTest::mouseMove(pic, plotPoint(water(), to));
        QVERIFY(outlineInk(water()) > 0 && water()->model().selecting);
        QTest::mouseRelease(pic, Qt::LeftButton, {}, plotPoint(water(), to));
        QVERIFY(water()->model().selecting); // the release alone does nothing
        QTest::mouseMove(pic, plotPoint(water(), to));
        QVERIFY(water()->model().zoomActive && !water()->model().selecting);
        QCOMPARE(outlineInk(water()), 0);
    }

    std::unique_ptr<SessionFixture> fixture;
    MeasurementStore *store = nullptr;
    std::unique_ptr<QMdiArea> area;
    std::unique_ptr<ChartSet> set;
};

QTEST_MAIN(TestChartWindows)
#include "tst_chartwindows.moc"
