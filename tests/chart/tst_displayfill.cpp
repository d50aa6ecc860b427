// The display fill: the store averaged into the four charts' buckets.
#include "chart/displayfill.h"
#include "core/store.h"

#include <QTest>

#include <memory>

namespace {

struct Fixture {
    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    ChartModel water, pressure, temperature, soot;
    DisplayCharts charts{&water, &pressure, &temperature, &soot};

    // Point i: water i, pressure 1000 + i, temperature 20, one second apart
    // from 2024-05-06 00:00:00.
    explicit Fixture(int count, int16_t stream = 0) {
        for (int i = 0; i < count; ++i) {
            DataPoint &p = store->dataPoints[size_t(i)];
            p = {.year = 2024, .month = 5, .day = 6, .temperature = 20, .stream = stream};
            p.minute = uint8_t(i / 60 % 60);
            p.second = uint8_t(i % 60);
            p.water = float(i);
            p.pressure = 1000.0f + float(i);
        }
        store->dataPoint_count = count;
    }
    bool refresh() { return display_refreshModels(*store, charts); }
};

} // namespace

class TestDisplayFill : public QObject {
    Q_OBJECT
private slots:
    void buckets_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("plotted");
        QTest::addColumn<int>("index");   // of a plotted point to check, or -1
        QTest::addColumn<float>("water"); // its bucket mean
        QTest::addColumn<int>("x");       // the store index whose x value and date it carries
        // Up to 5000 points plot as themselves; x value and date are those of
        // the point before (the first gets 0).
        QTest::newRow("3: third") << 3 << 3 << 2 << 2.0f << 1;
        QTest::newRow("5000: last") << 5000 << 5000 << 4999 << 4999.0f << 4998;
        // The accumulator starts at N / 2, so the first bucket closes after one
        // point, every further one after two; the last point stays open.
        QTest::newRow("10000: first") << 10000 << 5000 << 0 << 0.0f << 0;
        QTest::newRow("10000: second") << 10000 << 5000 << 1 << 1.5f << 0;
        QTest::newRow("10000: third, one bucket behind") << 10000 << 5000 << 2 << 3.5f << 2;
        QTest::newRow("10000: last") << 10000 << 5000 << 4999 << 9997.5f << 9996;
        QTest::newRow("5001") << 5001 << 5000 << -1 << 0.0f << 0;
        QTest::newRow("130000") << 130000 << 5000 << -1 << 0.0f << 0;
    }

    void buckets() {
        QFETCH(int, count);
        QFETCH(int, plotted);
        QFETCH(int, index);
        QFETCH(float, water);
        QFETCH(int, x);
        Fixture f(count);
        QVERIFY(f.refresh());
        for (ChartModel *c : f.charts)
            QCOMPARE(int(c->point_count), plotted);
        QCOMPARE(f.temperature.points[size_t(plotted - 1)].value_y, 20.0f);
        if (index < 0)
            return;
        const ChartPoint &p = f.water.points[size_t(index)];
        QCOMPARE((QList<float>{p.value_y, f.pressure.points[size_t(index)].value_y, p.value_x}),
                 (QList<float>{water, 1000 + water, float(x)}));
        QCOMPARE((QList<int>{p.date_minute, p.date_second}), (QList<int>{x / 60 % 60, x % 60}));
    }

    void streamFilterAxisTextsAndNothingToShow() {
        Fixture f(6, 1);
        for (int i : {1, 3, 4})
            f.store->dataPoints[size_t(i)].stream = 2;
        f.store->stream_selected = 2;
        f.store->oilName = QStringLiteral("Gear oil 220");
        QVERIFY(f.refresh());
        QCOMPARE(f.water.point_count, 3);
        // Values of the selected stream; x values are store indices (0
        // first, then the point before).
        const ChartPoint *p = f.water.points.data();
        QCOMPARE(
            (QList<float>{p[0].value_y, p[1].value_y, p[2].value_y, p[1].value_x, p[2].value_x}),
            (QList<float>{1, 3, 4, 1, 3}));
        // The axis texts show the first and last stored point, whatever the filter.
        for (ChartModel *c : f.charts)
            QCOMPARE((QStringList{c->x_axis_stringLeft_a, c->x_axis_stringLeft_b,
                                  c->x_axis_stringRight_b, c->x_axis_stringMiddle_a}),
                     (QStringList{QStringLiteral("[2024-05-06]"), QStringLiteral("[00:00:00]"),
                                  QStringLiteral("[00:00:05]"), QStringLiteral("Gear oil 220")}));
        // A filter that matches no point, then an empty store: nothing to
        // show, every chart empty and unzoomed, the water title still set.
        for (int16_t stream : {4, 0}) {
            f.water.zoomActive = true;
            f.store->stream_selected = stream;
            f.store->dataPoint_count = stream ? 6 : 0;
            QVERIFY(!f.refresh());
            for (ChartModel *c : f.charts)
                QCOMPARE(c->point_count, 0);
            QVERIFY(!f.water.zoomActive);
            QCOMPARE(f.water.title, QStringLiteral("Water [ppm]"));
        }
    }

    void limitsPercentAndAlarmLine() {
        // Temperature means outside -50 .. 150 (150 excluded) plot as 0; other
        // quantities are not limited.
        Fixture f(3);
        const float means[] = {150.0f, -50.0f, -50.5f};
        for (int i = 0; i < 3; ++i)
            f.store->dataPoints[size_t(i)].temperature = f.store->dataPoints[size_t(i)].pressure =
                means[i];
        f.store->dataPoints[1].water = 25000.0f;
        f.store->alarmThreshold = -1.0f;
        QVERIFY(f.refresh());
        const auto values = [](const ChartModel &c) {
            return QList<float>{c.points[0].value_y, c.points[1].value_y, c.points[2].value_y};
        };
        QCOMPARE(values(f.temperature), (QList<float>{0, -50, 0}));
        QCOMPARE(values(f.pressure), (QList<float>{150, -50, -50.5f}));
        // The alarm line is added even when no threshold is known, and on the
        // water chart only.
        QCOMPARE((QList<int>{f.water.xLine_count, f.pressure.xLine_count}), (QList<int>{1, 0}));
        QCOMPARE(f.water.xLines[0].value, -1.0f);
        QCOMPARE(f.water.xLines[0].color, qRgb(204, 0, 0));

        f.store->waterDisplayPercent = true;
        f.store->alarmThreshold = 3000.0f;
        QVERIFY(f.refresh());
        QCOMPARE(f.water.title, QStringLiteral("Water [%]"));
        QCOMPARE(f.water.xLine_count, 1); // replaced, not added to
        QCOMPARE((QList<float>{f.water.points[1].value_y, f.water.xLines[0].value,
                               f.pressure.points[1].value_y}),
                 (QList<float>{2.5f, 0.3f, -50}));
    }
};

QTEST_GUILESS_MAIN(TestDisplayFill)
#include "tst_displayfill.moc"
