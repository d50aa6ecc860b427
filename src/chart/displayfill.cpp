#include "chart/displayfill.h"

#include "chart/chartscale.h"
#include "core/store.h"

namespace {

// Bucket averaging of one quantity. The accumulator starts at N / 2 and
// gains 5000 per point; every time it reaches N a bucket closes. The x value
// and date of a plotted mean are those of the point that closed the previous
// bucket (0 for the first), one bucket behind. The charts have always
// labelled their points this way; keep it.
template <typename Value, typename Adjust>
void fillChart(const MeasurementStore &store, int32_t n, ChartModel &chart, Value value,
               Adjust adjust) {
    const int16_t stream = store.stream_selected;
    const DataPoint *points = store.dataPoints.data();
    int32_t accumulator = chart_round(n / 2.0);
    double sum = 0.0;
    int32_t bucket = 0;
    int32_t xIndex = 0;
    for (int32_t i = 0; i < store.dataPoint_count; ++i) {
        const DataPoint &p = points[i];
        if (stream != 0 && p.stream != stream)
            continue;
        sum += value(p);
        ++bucket;
        accumulator += display_targetPoints;
        if (accumulator < n)
            continue;
        accumulator -= n;
        const DataPoint &at = points[xIndex];
        chart.addDataPoint(float(xIndex), adjust(static_cast<float>(sum / bucket)), at.year,
                           at.month, at.day, at.hour, at.minute, at.second);
        sum = 0.0;
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

    const bool percent = store.waterDisplayPercent;
    ChartModel &water = *charts[size_t(ChartQuantity::Water)];
    auto same = [](float v) { return v; };
    fillChart(
        store, n, water, [](const DataPoint &p) { return p.water; },
        [percent](float v) { return percent ? v / 10000.0f : v; });
    fillChart(
        store, n, *charts[size_t(ChartQuantity::Pressure)],
        [](const DataPoint &p) { return p.pressure; }, same);
    fillChart(
        store, n, *charts[size_t(ChartQuantity::Temperature)],
        [](const DataPoint &p) { return p.temperature; },
        [](float v) { return v < -50.0f || v >= 150.0f ? 0.0f : v; });
    fillChart(
        store, n, *charts[size_t(ChartQuantity::Soot)], [](const DataPoint &p) { return p.soot; },
        same);

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
