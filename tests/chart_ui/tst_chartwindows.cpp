// The chart windows as the operator meets them: start-up placement, the
// drawing effect of each operation, the cursor and drag zoom through real
// mouse events, kept in step across all charts, the change monitor, the
// stream filter, the display settings, the layout timer and printing.
#include "chart/chartrender.h"
#include "chart/ui/chartpicture.h"
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "core/store.h"

#include <QMdiArea>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

int countColour(const QImage &img, QRgb colour, QRect within) {
    int n = 0;
    within &= img.rect();
    for (int y = within.top(); y <= within.bottom(); ++y)
        for (int x = within.left(); x <= within.right(); ++x)
            n += (img.pixel(x, y) & 0xffffff) == (colour & 0xffffff) ? 1 : 0;
    return n;
}

const QRgb kCursorRed = qRgb(255, 0, 0);
const QRgb kOutlineRed = qRgb(240, 0, 0);

// Red ink in either cursor box of a chart.
int cursorInk(const DataView *view) {
    const QImage &img = view->picture()->image();
    return countColour(img, kCursorRed, QRect(4, 4, 97, 29)) +
           countColour(img, kCursorRed, QRect(img.width() - 160, 4, 160, 29));
}

// A point of the plot at fractions fx, fy of its width and height (from the
// left and the top).
QPoint plotPoint(const DataView *view, double fx, double fy) {
    const ChartGeometry &g = view->model().geometry;
    return QPoint(g.left + int(fx * g.plotWidth), g.top + int(fy * g.plotHeight));
}

} // namespace

class TestChartWindows : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void startUpCreatesFourCharts();
    void displayDataFillsEveryChart();
    void operationsDrawOnlyWhereDocumented();
    void cursorFollowsOnEveryChart();
    void clickWithoutMovementStartsNothing();
    void dragZoomsEveryChart();
    void nestedZoomShowsSelectionNarrower();
    void rightClickResetsEveryChart();
    void tinyWindowDoesNotFail();
    void changeMonitorRedraws();
    void selectStreamFiltersAndUnzooms();
    void visibilityFromSettings();
    void layoutTimerSnapsActiveChart();
    void printComposesPageOnly();

private:
    void fillStore(int count);
    DataView *water() const { return set->chart(ChartQuantity::Water); }

    std::unique_ptr<MeasurementStore> store;
    std::unique_ptr<QMdiArea> area;
    std::unique_ptr<ChartSet> set;
};

void TestChartWindows::init() {
    store = std::make_unique<MeasurementStore>();
    area = std::make_unique<QMdiArea>();
    area->resize(1400, 900);
    area->show();
    QVERIFY(QTest::qWaitForWindowExposed(area.get()));
    set = std::make_unique<ChartSet>(*store, area.get());
    set->createCharts();
    fillStore(400);
    set->display_data();
}

void TestChartWindows::cleanup() {
    set.reset();
    area.reset();
    store.reset();
}

void TestChartWindows::fillStore(int count) {
    for (int i = 0; i < count; ++i) {
        DataPoint &p = store->dataPoints[size_t(i)];
        p = DataPoint{};
        p.year = 2024;
        p.month = 2;
        p.day = 3;
        p.hour = uint8_t(i / 3600);
        p.minute = uint8_t(i / 60 % 60);
        p.second = uint8_t(i % 60);
        p.water = 100.0f + float(i % 50);
        p.pressure = 900.0f + float(i);
        p.temperature = 30.0f + float(i % 7);
        p.soot = 1.0f;
        p.stream = int16_t(1 + i % 2);
    }
    store->dataPoint_count = count;
}

void TestChartWindows::startUpCreatesFourCharts() {
    QCOMPARE(set->chartCount(), 4);
    const QSize half = area->viewport()->size() / 2;
    const char *titles[] = {"Water [ppm]", "Pressure [mBar]", "Temperature [\u00B0C]", "Soot [%]"};
    for (int i = 0; i < 4; ++i) {
        DataView *view = set->slot(i);
        QVERIFY(view);
        QCOMPARE(view->get_objectIndex(), i);
        QCOMPARE(view->windowTitle(), QString::fromUtf8(titles[i]));
        QCOMPARE(view->model().color_back, chart_style(ChartQuantity(i)).back);
        QCOMPARE(view->size(), half);
    }
    QVERIFY(!set->slot(4) && !set->slot(5));
    // Beside the control panel's area, water and pressure on top.
    QCOMPARE(set->slot(0)->pos(), QPoint(ChartSet::defaultPanelArea().right() + 1, 0));
    QCOMPARE(set->slot(2)->pos().y(), half.height());
    QVERIFY(set->slot(1)->x() > set->slot(0)->x());
    QVERIFY(set->slot(1)->geometry().right() < area->viewport()->width());
}

void TestChartWindows::displayDataFillsEveryChart() {
    for (int i = 0; i < 4; ++i)
        QCOMPARE(set->slot(i)->model().point_count, 400);
    QCOMPARE(water()->model().xLine_count, 1);
    store->waterDisplayPercent = true;
    set->display_data();
    QCOMPARE(water()->windowTitle(), QStringLiteral("Water [%]"));
    QCOMPARE(water()->model().points[0].value_y, 0.01f);
    // An empty store leaves the charts titled and empty.
    store->dataPoint_count = 0;
    set->display_data();
    QCOMPARE(water()->model().point_count, 0);
}

void TestChartWindows::operationsDrawOnlyWhereDocumented() {
    DataView *view = set->chart(ChartQuantity::Pressure);
    const QImage before = view->picture()->image().copy();
    view->dataview_setColor_back(qRgb(1, 2, 3));
    view->dataView_addDataPoint(400, 5000, 2024, 2, 3, 1, 1, 1);
    view->dataView_addXLine(950, qRgb(0, 0, 255));
    view->dataView_set_xAxis_text({}, {}, {}, {}, QStringLiteral("changed"));
    QCOMPARE(view->picture()->image(), before);
    view->dataView_draw();
    QCOMPARE(view->picture()->image().pixel(0, 0) & 0xffffff, qRgb(1, 2, 3) & 0xffffff);

    const QImage drawn = view->picture()->image().copy();
    view->dataView_setTitle(QStringLiteral("Another title"));
    QCOMPARE(view->windowTitle(), QStringLiteral("Another title"));
    QVERIFY(view->picture()->image() != drawn);

    // While a drawing is under way, a further drawing and the cursor are
    // dropped, not queued.
    const QImage idle = view->picture()->image().copy();
    view->model().drawing = true;
    view->setInfoPos(0);
    view->dataView_draw();
    QCOMPARE(view->picture()->image(), idle);
    view->model().drawing = false;
    view->setInfoPos(0);
    QVERIFY(cursorInk(view) > 0);

    view->model().zoomActive = true;
    view->dataView_clearData();
    QCOMPARE(view->model().point_count, 0);
    QVERIFY(!view->model().zoomActive);
}

void TestChartWindows::cursorFollowsOnEveryChart() {
    QTest::mouseMove(water()->picture(), plotPoint(water(), 0.5, 0.5));
    for (int i = 0; i < 4; ++i)
        QVERIFY2(cursorInk(set->slot(i)) > 0, qPrintable(QString::number(i)));
    // Outside the plot the boxes go blank on every chart.
    QTest::mouseMove(water()->picture(), QPoint(20, 20));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(cursorInk(set->slot(i)), 0);
}

void TestChartWindows::clickWithoutMovementStartsNothing() {
    ChartPicture *pic = water()->picture();
    const QPoint p = plotPoint(water(), 0.3, 0.3);
    QTest::mousePress(pic, Qt::LeftButton, {}, p);
    QTest::mouseRelease(pic, Qt::LeftButton, {}, p);
    QTest::mouseMove(pic, plotPoint(water(), 0.6, 0.6));
    for (int i = 0; i < 4; ++i) {
        QVERIFY(!set->slot(i)->model().zoomActive);
        QVERIFY(!set->slot(i)->model().selecting);
    }
}

void TestChartWindows::dragZoomsEveryChart() {
    ChartPicture *pic = water()->picture();
    QTest::mousePress(pic, Qt::LeftButton, {}, plotPoint(water(), 0.25, 0.1));
    QTest::mouseMove(pic, plotPoint(water(), 0.25, 0.1)); // the selection starts here
    QTest::mouseMove(pic, plotPoint(water(), 0.75, 0.9));
    QVERIFY(countColour(pic->image(), kOutlineRed, pic->image().rect()) > 0);
    QVERIFY(!water()->model().zoomActive);
    QTest::mouseRelease(pic, Qt::LeftButton, {}, plotPoint(water(), 0.75, 0.9));
    QVERIFY(!water()->model().zoomActive); // the release alone does nothing
    QTest::mouseMove(pic, plotPoint(water(), 0.75, 0.9));
    const ChartModel &w = water()->model();
    QVERIFY(w.zoomActive);
    QVERIFY(qAbs(w.zoom_x1 - 0.25f * 399) < 2.0f);
    QVERIFY(qAbs(w.zoom_x2 - 0.75f * 399) < 2.0f);
    QCOMPARE(countColour(pic->image(), kOutlineRed, pic->image().rect()), 0);
    for (int i = 1; i < 4; ++i) {
        const ChartModel &m = set->slot(i)->model();
        QVERIFY(m.zoomActive);
        QVERIFY(qAbs(m.zoom_x1 - w.zoom_x1) < 2.0f);
        QVERIFY(qAbs(m.zoom_x2 - w.zoom_x2) < 2.0f);
        QCOMPARE(m.zoom_y2, m.dataValue_max); // full depth on the others
    }
}

void TestChartWindows::nestedZoomShowsSelectionNarrower() {
    ChartPicture *pic = water()->picture();
    auto drag = [&](double fx1, double fx2) {
        QTest::mousePress(pic, Qt::LeftButton, {}, plotPoint(water(), fx1, 0.0));
        QTest::mouseMove(pic, plotPoint(water(), fx1, 0.0));
        QTest::mouseMove(pic, plotPoint(water(), fx2, 1.0));
        QTest::mouseRelease(pic, Qt::LeftButton, {}, plotPoint(water(), fx2, 1.0));
        QTest::mouseMove(pic, plotPoint(water(), fx2, 1.0));
    };
    drag(0.0, 0.5);
    const float width1 = water()->model().zoom_x2 - water()->model().zoom_x1;
    drag(0.25, 0.75);
    const float width2 = water()->model().zoom_x2 - water()->model().zoom_x1;
    // The second rectangle covered half the view; the window comes out
    // 0.75 * 0.75 of it, so the selected stretch fills less than the plot.
    QVERIFY(width2 > width1 * 0.5f + 5.0f);
    QVERIFY(qAbs(width2 - width1 * 0.5625f) < 1.0f);
}

void TestChartWindows::rightClickResetsEveryChart() {
    float a = 0.2f, b = 0.4f;
    for (int i = 0; i < 4; ++i)
        set->slot(i)->setZoom_x(a, b);
    DataView *temperature = set->chart(ChartQuantity::Temperature);
    QTest::mouseClick(temperature->picture(), Qt::RightButton, {},
                      plotPoint(temperature, 0.5, 0.5));
    for (int i = 0; i < 4; ++i)
        QVERIFY(!set->slot(i)->model().zoomActive);
}

void TestChartWindows::tinyWindowDoesNotFail() {
    DataView *view = water();
    view->resize(15, 15);
    QTRY_COMPARE(view->picture()->size(), QSize(1, 1));
    QCOMPARE(view->model().geometry.width, 1);
    QVERIFY(view->model().geometry.plotWidth < 0);
    view->dataView_draw();
    QTest::mouseMove(view->picture(), QPoint(0, 0));
    view->resize(500, 400);
    QTRY_COMPARE(view->picture()->image().size(), view->picture()->size());
    QVERIFY(view->picture()->width() > 400);
}

void TestChartWindows::changeMonitorRedraws() {
    set->startChangeMonitor();
    QCOMPARE(set->Timer_monitorChanges.interval(), 500);
    fillStore(700);
    store->display_update_pending = true;
    QTRY_VERIFY(!store->display_update_pending);
    QCOMPARE(water()->model().point_count, 700);
}

void TestChartWindows::selectStreamFiltersAndUnzooms() {
    float a = 0.2f, b = 0.4f;
    water()->setZoom_x(a, b);
    set->dataView_selectStream(2);
    QCOMPARE(store->stream_selected, 2);
    QCOMPARE(water()->model().point_count, 200);
    QVERIFY(!water()->model().zoomActive);
    set->dataView_selectStream(5); // no point of stream 5: empty but titled
    QCOMPARE(water()->model().point_count, 0);
    QCOMPARE(water()->windowTitle(), QStringLiteral("Water [ppm]"));
}

void TestChartWindows::visibilityFromSettings() {
    ChartVisibility v;
    v.pressure = false;
    v.soot = true;
    set->applyVisibility(v);
    QVERIFY(water()->isVisible());
    QVERIFY(!set->chart(ChartQuantity::Pressure)->isVisible());
    QVERIFY(set->chart(ChartQuantity::Soot)->isVisible());
    QCOMPARE(set->chart(ChartQuantity::Soot)->model().point_count, 400);
}

void TestChartWindows::layoutTimerSnapsActiveChart() {
    QCOMPARE(set->Timer1.interval(), 100);
    QVERIFY(set->Timer1.isActive());
    DataView *pressure = set->chart(ChartQuantity::Pressure);
    area->setActiveSubWindow(water());
    QTRY_VERIFY(water()->dataview_getState_active());
    // A click into the picture activates its window.
    QTest::mouseClick(pressure->picture(), Qt::LeftButton, {}, QPoint(5, 5));
    QTRY_VERIFY(pressure->dataview_getState_active());
    QVERIFY(!water()->dataview_getState_active());
    // Dropped 6 pixels right of the water chart's right edge, 4 below its top.
    const QRect w = water()->geometry();
    pressure->move(w.right() + 7, w.top() + 4);
    QTRY_COMPARE(pressure->pos(), QPoint(w.right() + 1, w.top()));
}

void TestChartWindows::printComposesPageOnly() {
    QImage printed;
    water()->setPagePrinter([&](const QImage &page) {
        QVERIFY(water()->model().drawing); // still under the guard
        printed = page.copy();
    });
    const QImage screen = water()->picture()->image().copy();
    water()->dataView_print();
    QCOMPARE(printed.size(), QSize(800, 600));
    QCOMPARE(printed.pixel(69, 39) & 0xffffff, chart_style(ChartQuantity::Water).lines & 0xffffff);
    QCOMPARE(water()->picture()->image(), screen);
    QVERIFY(!water()->model().drawing);
}

QTEST_MAIN(TestChartWindows)
#include "tst_chartwindows.moc"
