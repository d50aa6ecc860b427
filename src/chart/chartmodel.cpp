#include "chart/chartmodel.h"

#include <algorithm>

namespace {

int16_t to16(int v) {
    return static_cast<int16_t>(std::clamp(v, -32768, 32767));
}

} // namespace

ChartGeometry ChartGeometry::forCanvas(int width, int height) {
    ChartGeometry g;
    g.width = to16(width);
    g.height = to16(height);
    g.left = 70;
    g.top = 40;
    g.right = to16(g.width - 20);
    g.bottom = to16(g.height - 30);
    g.plotWidth = to16(g.right - g.left);
    g.plotHeight = to16(g.bottom - g.top);
    return g;
}

ChartModel::ChartModel() : points(bufferSlots), value_y1(bufferSlots, 0.0f) {
    init();
}

void ChartModel::init() {
    color_back = qRgb(255, 255, 240);
    color_graph = qRgb(150, 130, 20);
    color_second = qRgb(0, 0, 0);
    color_lines = qRgb(50, 50, 0);
    color_scaling = qRgb(230, 230, 210);
    color_text = qRgb(0, 0, 0);
    color_title = qRgb(0, 0, 0);
    point_count = 0;
    selecting = false;
    zoomActive = false;
    multiSeries = false;
    drawing = false;
    title.clear();
    x_axis_stringLeft_a.clear();
    x_axis_stringLeft_b.clear();
    x_axis_stringMiddle_a.clear();
    x_axis_stringMiddle_b.clear();
    x_axis_stringRight_a.clear();
    x_axis_stringRight_b.clear();
    clearXLines();
}

void ChartModel::clearData() {
    point_count = 0;
    disableZoom();
}

void ChartModel::disableZoom() {
    zoomActive = false;
    selecting = false;
}

bool ChartModel::addDataPoint(float x, float y, int16_t year, uint8_t month, uint8_t day,
                              uint8_t hour, uint8_t minute, uint8_t second) {
    if (point_count >= capacity)
        return false;
    ChartPoint &p = points[size_t(point_count)];
    p.date_year = year;
    p.date_month = month;
    p.date_day = day;
    p.date_hour = hour;
    p.date_minute = minute;
    p.date_second = second;
    p.value_x = x;
    p.value_y = y;
    ++point_count;
    return true;
}

bool ChartModel::addMultiDataPoint(float x, float y, float y1, int16_t year, uint8_t month,
                                   uint8_t day, uint8_t hour, uint8_t minute, uint8_t second) {
    const int16_t index = point_count;
    if (!addDataPoint(x, y, year, month, day, hour, minute, second))
        return false;
    value_y1[size_t(index)] = y1;
    multiSeries = true;
    return true;
}

bool ChartModel::addXLine(float value, QRgb color) {
    if (xLine_count >= maxXLines)
        return false;
    xLines[size_t(xLine_count)] = ChartXLine{value, color};
    ++xLine_count;
    return true;
}

void ChartModel::set_xAxis_text(const QString &leftA, const QString &leftB, const QString &rightA,
                                const QString &rightB, const QString &middleA) {
    x_axis_stringLeft_a = leftA;
    x_axis_stringLeft_b = leftB;
    x_axis_stringRight_a = rightA;
    x_axis_stringRight_b = rightB;
    x_axis_stringMiddle_a = middleA;
}
