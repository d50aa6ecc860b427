#include "chart/displayfill.h"

#include "chart/chartscale.h"
#include "core/store.h"

namespace {

// Bucket averaging of the four quantities in one walk over the store. The
// accumulator starts at N / 2 and gains 5000 per point; every time it
// reaches N a bucket closes. The x value and date of a plotted mean are
// those of the point that closed the previous bucket (0 for the first), one
// bucket behind. The charts have always labelled their points this way;
// keep it.
void fillCharts(const MeasurementStore &store, int32_t n, const DisplayCharts &charts) {
    const int16_t stream = store.stream_selected;
    const bool percent = store.waterDisplayPercent;
    const DataPoint *points = store.dataPoints.data();
    ChartModel &water = *charts[size_t(ChartQuantity::Water)];
    ChartModel &pressure = *charts[size_t(ChartQuantity::Pressure)];
    ChartModel &temperature = *charts[size_t(ChartQuantity::Temperature)];
    ChartModel &soot = *charts[size_t(ChartQuantity::Soot)];
    int32_t accumulator = chart_round(n / 2.0);
    double sumWater = 0.0, sumPressure = 0.0, sumTemperature = 0.0, sumSoot = 0.0;
    int32_t bucket = 0;
    int32_t xIndex = 0;
    for (int32_t i = 0; i < store.dataPoint_count; ++i) {
        const DataPoint &p = points[i];
        if (stream != 0 && p.stream != stream)
            continue;
        sumWater += p.water;
        sumPressure += p.pressure;
        sumTemperature += p.temperature;
        sumSoot += p.soot;
        ++bucket;
        accumulator += display_targetPoints;
        if (accumulator < n)
            continue;
        accumulator -= n;
        const DataPoint &at = points[xIndex];
        const float x = float(xIndex);
        auto add = [&](ChartModel &chart, float value) {
            chart.addDataPoint(x, value, at.year, at.month, at.day, at.hour, at.minute, at.second);
        };
        const float w = static_cast<float>(sumWater / bucket);
        add(water, percent ? w / 10000.0f : w);
        add(pressure, static_cast<float>(sumPressure / bucket));
        const float t = static_cast<float>(sumTemperature / bucket);
        add(temperature, t < -50.0f || t >= 150.0f ? 0.0f : t);
        add(soot, static_cast<float>(sumSoot / bucket));
        sumWater = sumPressure = sumTemperature = sumSoot = 0.0;
        bucket = 0;
        xIndex = i;
    }
}

QString bracketed(const QString &text) {
    return QLatin1Char('[') + text + QLatin1Char(']');
}

} // namespace

bool display_fillCharts(const MeasurementStore &store, const DisplayCharts &charts) {
    const int32_t count = store.dataPoint_count;
    if (count <= 0)
        return false;
    const DataPoint &first = store.dataPoints[0];
    const DataPoint &last = store.dataPoints[size_t(count - 1)];
    const QString firstDate = bracketed(chart_dateText(first.year, first.month, first.day));
    const QString firstTime = bracketed(chart_timeText(first.hour, first.minute, first.second));
    const QString lastDate = bracketed(chart_dateText(last.year, last.month, last.day));
    const QString lastTime = bracketed(chart_timeText(last.hour, last.minute, last.second));

    int32_t n = count;
    if (store.stream_selected != 0) {
        n = 0;
        for (int32_t i = 0; i < count; ++i)
            n += store.dataPoints[size_t(i)].stream == store.stream_selected ? 1 : 0;
    }
    if (n < 1)
        return false;

    fillCharts(store, n, charts);

    const bool percent = store.waterDisplayPercent;
    ChartModel &water = *charts[size_t(ChartQuantity::Water)];

    // Added even when no threshold is known (-1): it then sits just below
    // zero, where it is usually outside the view.
    water.clearXLines();
    water.addXLine(percent ? store.alarmThreshold / 10000.0f : store.alarmThreshold,
                   qRgb(204, 0, 0));

    for (ChartModel *chart : charts)
        chart->set_xAxis_text(firstDate, firstTime, lastDate, lastTime, store.oilName);
    return true;
}

bool display_refreshModels(const MeasurementStore &store, const DisplayCharts &charts) {
    for (ChartModel *chart : charts)
        chart->clearData();
    charts[size_t(ChartQuantity::Water)]->title =
        chart_title(ChartQuantity::Water, store.waterDisplayPercent);
    return display_fillCharts(store, charts);
}
