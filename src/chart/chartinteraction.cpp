// The mouse arithmetic of a chart: which point lies under the pointer, the
// cursor texts, the zoom selection and the zoom handed over from another
// chart. Nothing here paints; the chart window draws when told to.
#include "chart/chartmodel.h"

#include "chart/chartscale.h"

#include <algorithm>
#include <cmath>

namespace {

// Clamp to 0 .. 1; NaN (from a plot of zero width) counts as 0.
float clamp01(double v) {
    if (!(v > 0.0))
        return 0.0f;
    return v < 1.0 ? static_cast<float>(v) : 1.0f;
}

int16_t to16(int v) {
    return static_cast<int16_t>(std::clamp(v, -32768, 32767));
}

} // namespace

int16_t ChartModel::infoIndexAt(int x, int y) const {
    const ChartGeometry &g = geometry;
    if (x < g.left || x > g.right || y < g.top || y > g.bottom)
        return -1;
    const double f = double(x - g.left) / g.plotWidth;
    int index;
    if (zoomActive)
        index = chart_round(f * (double(zoom_x2) - zoom_x1) + zoom_x1);
    else
        // The point count (not count - 1) is used on purpose: the cursor runs
        // slightly ahead of the curve towards the right.
        index = chart_round(f * dataPoints_drawn);
    if (index >= capacity)
        index = capacity - 1;
    if (index >= point_count)
        index = point_count > 0 ? point_count - 1 : 0;
    return to16(index);
}

ChartInfoTexts ChartModel::infoTexts(int dataIndex) const {
    ChartInfoTexts t;
    if (dataIndex < 0 || dataIndex >= point_count)
        return t;
    const ChartPoint &p = points[size_t(dataIndex)];
    t.date = chart_dateText(p.date_year, p.date_month, p.date_day);
    t.time = chart_timeText(p.date_hour, p.date_minute, p.date_second);
    t.value = chart_infoValueText(p.value_y);
    return t;
}

ChartSelectionStep ChartModel::selectionMove(int x, int y, bool leftOnly, bool anyButton) {
    ChartSelectionStep step;
    if (!selecting) {
        // A selection starts at the first movement with the left button held,
        // not at the press: a plain click never zooms.
        if (leftOnly) {
            selStart_x = to16(x);
            selStart_y = to16(y);
            selecting = true;
            step.kind = ChartSelectionStep::Started;
        }
        return step;
    }
    if (anyButton) {
        step.kind = ChartSelectionStep::Dragging;
        return step;
    }
    // The release is only noticed at the next movement without a button.
    selEnd_x = to16(x);
    selEnd_y = to16(y);
    selecting = false;
    step.kind = ChartSelectionStep::Applied;
    applySelection(step.fx1, step.fx2);
    return step;
}

void ChartModel::applySelection(float &fx1, float &fx2) {
    if (selEnd_x < selStart_x)
        std::swap(selStart_x, selEnd_x);
    if (selEnd_y < selStart_y)
        std::swap(selStart_y, selEnd_y);
    const ChartGeometry &g = geometry;
    const double w = g.right - g.left;
    const double h = g.bottom - g.top;
    fx1 = clamp01((selStart_x - g.left) / w);
    fx2 = clamp01((selEnd_x - g.left) / w);
    const float fyTop = clamp01(1.0 - (selStart_y - g.top) / h);
    const float fyBottom = clamp01(1.0 - (selEnd_y - g.top) / h);
    if (!zoomActive) {
        const double xSpan = double(dataIndex_max) - dataIndex_min;
        const double ySpan = double(dataValue_max) - dataValue_min;
        zoom_x1 = static_cast<float>(xSpan * fx1 + dataIndex_min);
        zoom_x2 = static_cast<float>(xSpan * fx2 + dataIndex_min);
        zoom_y1 = static_cast<float>(ySpan * fyBottom + dataValue_min);
        zoom_y2 = static_cast<float>(ySpan * fyTop + dataValue_min);
    } else {
        // The second edge is measured from the new first edge, so a zoom
        // inside a zoom comes out narrower than the rectangle drawn. Users
        // know the charts this way; keep it.
        zoom_x1 = static_cast<float>((double(zoom_x2) - zoom_x1) * fx1 + zoom_x1);
        zoom_x2 = static_cast<float>((double(zoom_x2) - zoom_x1) * fx2 + zoom_x1);
        zoom_y1 = static_cast<float>((double(zoom_y2) - zoom_y1) * fyBottom + zoom_y1);
        zoom_y2 = static_cast<float>((double(zoom_y2) - zoom_y1) * fyTop + zoom_y1);
    }
    zoomActive = true;
}

bool ChartModel::setZoom_x(float &x1_factor, float &x2_factor) {
    x1_factor = clamp01(x1_factor);
    x2_factor = clamp01(x2_factor);
    if (x1_factor == 0.0f && x2_factor == 1.0f)
        return false;
    if (!zoomActive) {
        const double span = double(dataIndex_max) - dataIndex_min;
        zoom_x1 = static_cast<float>(span * x1_factor + dataIndex_min);
        zoom_x2 = static_cast<float>(span * x2_factor + dataIndex_min);
    } else {
        zoom_x1 = static_cast<float>((double(zoom_x2) - zoom_x1) * x1_factor + zoom_x1);
        zoom_x2 = static_cast<float>((double(zoom_x2) - zoom_x1) * x2_factor + zoom_x1);
    }
    zoom_y1 = dataValue_min;
    zoom_y2 = dataValue_max;
    zoomActive = true;
    return true;
}
