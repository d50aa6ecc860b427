// The display fill: bucket averaging of the store into the four charts with
// its one-bucket offset, the stream filter, per cent water, the temperature
// limits, the alarm line and the axis texts.
#include "chart/displayfill.h"
#include "core/store.h"

#include <QTest>

#include <memory>

namespace {

struct Fixture {
    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    ChartModel water, pressure, temperature, soot;
    DisplayCharts charts{&water, &pressure, &temperature, &soot};

    // Point i: water i, pressure 1000 + i, temperature 20, soot 0.5, one
    // second apart from 2024-05-06 07:00:00.
    void fill(int count, int16_t stream = 0) {
        for (int i = 0; i < count; ++i) {
            DataPoint &p = store->dataPoints[size_t(i)];
            p = DataPoint{};
            p.year = 2024;
            p.month = 5;
            p.day = 6;
            p.hour = uint8_t(7 + i / 3600 % 17);
            p.minute = uint8_t(i / 60 % 60);
            p.second = uint8_t(i % 60);
            p.water = float(i);
            p.pressure = 1000.0f + float(i);
            p.temperature = 20.0f;
            p.soot = 0.5f;
            p.stream = stream;
        }
        store->dataPoint_count = count;
    }
    bool refresh() { return display_refreshModels(*store, charts); }
};

} // namespace

class TestDisplayFill : public QObject {
    Q_OBJECT
private slots:
    void threePointsPlottedAsThemselves();
    void bucketsOfTwo();
    void fullStoreStaysWithinChartCapacity_data();
    void fullStoreStaysWithinChartCapacity();
    void streamFilter();
    void streamFilterMatchingNothing();
    void temperatureLimits_data();
    void temperatureLimits();
    void waterPercentAndAlarmLine();
    void axisTexts();
    void emptyStore();
};

void TestDisplayFill::threePointsPlottedAsThemselves() {
    Fixture f;
    f.fill(3);
    QVERIFY(f.refresh());
    QCOMPARE(f.water.point_count, 3);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(f.water.points[size_t(i)].value_y, float(i));
    // x value and date are those of the point before (the first gets 0).
    QCOMPARE(f.water.points[0].value_x, 0.0f);
    QCOMPARE(f.water.points[1].value_x, 0.0f);
    QCOMPARE(f.water.points[2].value_x, 1.0f);
    QCOMPARE(f.water.points[2].date_second, 1);
    QCOMPARE(f.pressure.points[2].value_y, 1002.0f);
    QCOMPARE(f.soot.point_count, 3);
}

void TestDisplayFill::bucketsOfTwo() {
    Fixture f;
    f.fill(10000);
    QVERIFY(f.refresh());
    // The accumulator starts at N / 2, so the first bucket closes after one
    // point, every further one after two; the last point stays open.
    QCOMPARE(f.water.point_count, 5000);
    QCOMPARE(f.water.points[0].value_y, 0.0f);
    QCOMPARE(f.water.points[1].value_y, 1.5f);
    QCOMPARE(f.water.points[4999].value_y, 9997.5f);
    QCOMPARE(f.water.points[1].value_x, 0.0f);
    QCOMPARE(f.water.points[2].value_x, 2.0f); // one bucket behind
    QCOMPARE(f.water.points[4999].value_x, 9996.0f);
    QCOMPARE(f.water.points[4999].date_second, uint8_t(9996 % 60));
    QCOMPARE(f.water.points[4999].date_minute, uint8_t(9996 / 60 % 60));
}

void TestDisplayFill::fullStoreStaysWithinChartCapacity_data() {
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("plotted");
    QTest::newRow("5000 one each") << 5000 << 5000;
    QTest::newRow("5001") << 5001 << 5000;
    QTest::newRow("5200") << 5200 << 5000;
    QTest::newRow("130000") << 130000 << 5000;
    QTest::newRow("129999") << 129999 << 5000;
}

void TestDisplayFill::fullStoreStaysWithinChartCapacity() {
    QFETCH(int, count);
    QFETCH(int, plotted);
    Fixture f;
    f.fill(count);
    QVERIFY(f.refresh());
    QCOMPARE(int(f.temperature.point_count), plotted);
    QCOMPARE(f.temperature.points[size_t(plotted - 1)].value_y, 20.0f);
}

void TestDisplayFill::streamFilter() {
    Fixture f;
    f.fill(6, 1);
    for (int i : {1, 3, 4})
        f.store->dataPoints[size_t(i)].stream = 2;
    f.store->stream_selected = 2;
    QVERIFY(f.refresh());
    QCOMPARE(f.water.point_count, 3);
    QCOMPARE(f.water.points[0].value_y, 1.0f);
    QCOMPARE(f.water.points[1].value_y, 3.0f);
    QCOMPARE(f.water.points[2].value_y, 4.0f);
    // x values are store indices: 0 first, then the point before.
    QCOMPARE(f.water.points[1].value_x, 1.0f);
    QCOMPARE(f.water.points[2].value_x, 3.0f);
}

void TestDisplayFill::streamFilterMatchingNothing() {
    Fixture f;
    f.fill(3);
    f.refresh();
    f.store->stream_selected = 4;
    f.store->waterDisplayPercent = true;
    QVERIFY(!f.refresh());
    for (ChartModel *c : f.charts)
        QCOMPARE(c->point_count, 0);
    QCOMPARE(f.water.title, QStringLiteral("Water [%]"));
}

void TestDisplayFill::temperatureLimits_data() {
    QTest::addColumn<float>("mean");
    QTest::addColumn<float>("plotted");
    QTest::newRow("151") << 151.0f << 0.0f;
    QTest::newRow("150") << 150.0f << 0.0f;
    QTest::newRow("149.5") << 149.5f << 149.5f;
    QTest::newRow("-50") << -50.0f << -50.0f;
    QTest::newRow("-50.5") << -50.5f << 0.0f;
}

void TestDisplayFill::temperatureLimits() {
    QFETCH(float, mean);
    QFETCH(float, plotted);
    Fixture f;
    f.fill(1);
    f.store->dataPoints[0].temperature = mean;
    f.store->dataPoints[0].pressure = mean; // other quantities are not limited
    QVERIFY(f.refresh());
    QCOMPARE(f.temperature.points[0].value_y, plotted);
    QCOMPARE(f.pressure.points[0].value_y, mean);
}

void TestDisplayFill::waterPercentAndAlarmLine() {
    Fixture f;
    f.fill(2);
    f.store->dataPoints[1].water = 25000.0f;
    f.store->alarmThreshold = -1.0f;
    QVERIFY(f.refresh());
    QCOMPARE(f.water.title, QStringLiteral("Water [ppm]"));
    QCOMPARE(f.water.xLine_count, 1);
    QCOMPARE(f.water.xLines[0].value, -1.0f); // added even when none is known
    QCOMPARE(f.water.xLines[0].color, qRgb(204, 0, 0));
    QCOMPARE(f.pressure.xLine_count, 0);

    f.store->waterDisplayPercent = true;
    f.store->alarmThreshold = 3000.0f;
    QVERIFY(f.refresh());
    QCOMPARE(f.water.title, QStringLiteral("Water [%]"));
    QCOMPARE(f.water.points[1].value_y, 2.5f);
    QCOMPARE(f.water.xLine_count, 1); // replaced, not added to
    QCOMPARE(f.water.xLines[0].value, 0.3f);
    QCOMPARE(f.pressure.points[1].value_y, 1001.0f);
}

void TestDisplayFill::axisTexts() {
    Fixture f;
    f.fill(4, 1);
    f.store->dataPoints[3].stream = 2;
    f.store->stream_selected = 1;
    f.store->oilName = QStringLiteral("Gear oil 220");
    QVERIFY(f.refresh());
    // First and last stored point, whatever the filter.
    for (ChartModel *c : f.charts) {
        QCOMPARE(c->x_axis_stringLeft_a, QStringLiteral("[2024-05-06]"));
        QCOMPARE(c->x_axis_stringLeft_b, QStringLiteral("[07:00:00]"));
        QCOMPARE(c->x_axis_stringRight_b, QStringLiteral("[07:00:03]"));
        QCOMPARE(c->x_axis_stringMiddle_a, QStringLiteral("Gear oil 220"));
    }
}

void TestDisplayFill::emptyStore() {
    Fixture f;
    f.fill(5);
    f.refresh();
    f.water.zoomActive = true;
    f.store->dataPoint_count = 0;
    QVERIFY(!f.refresh());
    QCOMPARE(f.water.point_count, 0);
    QVERIFY(!f.water.zoomActive);
}

QTEST_GUILESS_MAIN(TestDisplayFill)
#include "tst_displayfill.moc"
