#include "chart/chartrender.h"

#include "chart/chartscale.h"
#include "chart/linedrawer.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

// No grid is allowed more lines than this, whatever the zoom window.
constexpr int kMaxGridLines = 10000;

double clamp01(double v) {
    if (!(v > 0.0))
        return 0.0;
    return v < 1.0 ? v : 1.0;
}

// Clamps to lo .. hi in this order, which stays defined when a tiny window
// makes hi smaller than lo.
int clampTo(int v, int lo, int hi) {
    if (v < lo)
        v = lo;
    if (v > hi)
        v = hi;
    return v;
}

QString bracketed(const QString &text) {
    return QLatin1Char('[') + text + QLatin1Char(']');
}

// One drawing of one chart: the working values of the steps below.
class Drawing {
public:
    Drawing(ChartModel &m, QPainter &p, const ChartGeometry &g, const ChartRenderHooks &h)
        : m(m), p(p), g(g), hooks(h), lines(p) {}

    void run();

private:
    // Text with its top-left corner at (x, y), as the picture area prints.
    void text(double x, double y, const QString &s) {
        p.drawText(QPoint(chart_round(x), chart_round(y) + p.fontMetrics().ascent()), s);
    }
    int textWidth(const QString &s) const { return p.fontMetrics().horizontalAdvance(s); }
    int textHeight() const { return p.fontMetrics().height(); }

    void frameAndTitle();
    void dataExtent();
    void viewWindow();
    void horizontalAxis();
    void verticalAxis();
    void yGridLine(float y, int decimals);
    void endDates();
    void axisTexts();
    void levelLines();
    void curves();
    int px(double index) const;
    int py(double value) const;

    ChartModel &m;
    QPainter &p;
    const ChartGeometry g;
    const ChartRenderHooks &hooks;
    LineDrawer lines;
    int count = 0;
    float x1 = 0, x2 = 0, y1 = 0, y2 = 0;
};

void Drawing::run() {
    p.setRenderHint(QPainter::Antialiasing, false);
    p.fillRect(QRect(0, 0, g.width, g.height), QColor(m.color_back));
    p.setBackground(QColor(m.color_back));
    p.setBackgroundMode(Qt::TransparentMode);
    p.setBrush(QColor(m.color_lines));
    p.setPen(QColor(m.color_lines));
    p.setFont(chart_font(8));

    frameAndTitle();
    count = m.point_count;
    if (count <= 0)
        return;
    dataExtent();
    viewWindow();
    horizontalAxis();
    verticalAxis();
    endDates();
    axisTexts();
    levelLines();
    curves();
}

void Drawing::frameAndTitle() {
    const int l = g.left, t = g.top, r = g.right, b = g.bottom;
    lines.setColor(m.color_lines);
    lines.line(l - 1, t - 1, r + 1, t - 1);
    lines.line(r + 1, t - 1, r + 1, b + 2);
    lines.line(l - 1, b + 1, r + 1, b + 1);
    lines.line(l - 1, t - 1, l - 1, b + 1);

    p.setFont(chart_font(12, true));
    p.setPen(QColor(m.color_title));
    text((g.width - textWidth(m.title)) / 2.0, 6, m.title);
    p.setFont(chart_font(8));
    p.setPen(QColor(m.color_text));
}

void Drawing::dataExtent() {
    int32_t iMin = 1000000000, iMax = 0;
    float vMin = 0.0f, vMax = 1e-7f; // the value range always includes zero
    for (int i = 0; i < count; ++i) {
        iMin = std::min(iMin, i);
        iMax = std::max(iMax, i);
        const float v = m.points[size_t(i)].value_y;
        if (v < vMin)
            vMin = v;
        if (v > vMax)
            vMax = v;
    }
    m.dataIndex_min = iMin;
    m.dataIndex_max = iMax;
    // Dividing a negative minimum moves it towards zero, so the lowest points
    // may sit just below the plot and are clamped to its edge. Kept so.
    m.dataValue_min = static_cast<float>(vMin / 1.02);
    m.dataValue_max = static_cast<float>(vMax * 1.02);
    m.dataPoints_drawn = count;
}

void Drawing::viewWindow() {
    if (m.zoomActive) {
        x1 = m.zoom_x1;
        x2 = m.zoom_x2;
        y1 = m.zoom_y1;
        y2 = m.zoom_y2;
    } else {
        x1 = float(m.dataIndex_min);
        x2 = float(m.dataIndex_max);
        y1 = m.dataValue_min;
        y2 = m.dataValue_max;
    }
    if (x2 - x1 < 1.0f)
        x2 = x1 + 1.0f;
    // A zoomed window is never shallower than 1 % of the full value range.
    const float minDepth = (m.dataValue_max - m.dataValue_min) / 100.0f;
    if (minDepth > y2 - y1)
        y2 = y1 + minDepth;
}

int Drawing::px(double index) const {
    return chart_round((index - x1) / (double(x2) - x1) * g.plotWidth) + g.left;
}

int Drawing::py(double value) const {
    return g.bottom - chart_round((value - y1) / (double(y2) - y1) * g.plotHeight);
}

void Drawing::horizontalAxis() {
    int labels = chart_round(double(g.plotWidth) / textWidth(QStringLiteral("1000.0")));
    if (labels < 1)
        labels = 1;
    float step = (x2 - x1) / float(labels);
    if (step < 1.0f)
        step = 1.0f;
    int n = 0;
    for (float x = x1; x <= x2 && n < kMaxGridLines; x += step, ++n) {
        const int lx = px(x);
        lines.setColor(m.color_lines);
        lines.line(lx, g.bottom + 1, lx, g.bottom + 6);
        lines.setColor(m.color_scaling);
        lines.line(lx, g.top, lx, g.bottom);
        const int index = chart_round(x);
        if (index < 0 || index >= ChartModel::bufferSlots)
            continue;
        const QString label = chart_formatFixed(m.points[size_t(index)].value_x, 0);
        p.setPen(QColor(m.color_text));
        text(lx - textWidth(label) / 2.0, g.bottom + 10, label);
    }
}

void Drawing::verticalAxis() {
    const int decimals = chart_yLabelDecimals(y1, y2);
    // The label spacing is measured on a string with the font's full ascent
    // and descent.
    int labels = chart_round(double(g.plotHeight) / (2.0 * textHeight()));
    if (labels < 1)
        labels = 1;
    const float step = chart_stepCascade((y2 - y1) / float(labels));
    if (!(step > 0.0f) || !std::isfinite(step) || !std::isfinite(y1) || !std::isfinite(y2))
        return;
    // Upwards from y1 itself (not from a multiple of the step), then a second
    // set anchored at zero downwards; the overlap is the established look.
    int n = 0;
    for (float y = y1; y <= y2 && n < kMaxGridLines; y += step, ++n)
        yGridLine(y, decimals);
    n = 0;
    for (float y = -step; y >= y1 && n < kMaxGridLines; y -= step, ++n)
        yGridLine(y, decimals);
}

void Drawing::yGridLine(float y, int decimals) {
    const int ly = py(y);
    lines.setColor(m.color_lines);
    lines.line(g.left - 5, ly, g.left - 1, ly);
    lines.setColor(m.color_scaling);
    lines.line(g.left, ly, g.right, ly);
    const QString label = chart_formatFixed(y, decimals);
    p.setPen(QColor(m.color_text));
    text(g.left - 10 - textWidth(label), ly - textHeight() / 2.0, label);
}

void Drawing::endDates() {
    // Bounded by the buffer, not the point count: with a single point the
    // right end is slot 1, whatever an earlier batch left there.
    const int i1 = chart_round(x1);
    const int i2 = chart_round(x2);
    auto dateOf = [this](int i) {
        const ChartPoint &pt = m.points[size_t(i)];
        return bracketed(chart_dateText(pt.date_year, pt.date_month, pt.date_day));
    };
    auto timeOf = [this](int i) {
        const ChartPoint &pt = m.points[size_t(i)];
        return bracketed(chart_timeText(pt.date_hour, pt.date_minute, pt.date_second));
    };
    if (i1 >= 0 && i1 <= ChartModel::capacity) {
        m.x_axis_stringLeft_a = dateOf(i1);
        m.x_axis_stringLeft_b = timeOf(i1);
    }
    if (i2 >= 0 && i2 <= ChartModel::capacity) {
        m.x_axis_stringRight_a = dateOf(i2);
        m.x_axis_stringRight_b = timeOf(i2);
    }
}

void Drawing::axisTexts() {
    p.setBackgroundMode(Qt::OpaqueMode);
    p.setPen(QColor(m.color_text));
    const int ha = textHeight();
    const int hb = textHeight();
    const double yA = g.bottom - (ha + hb) - 5;
    const double yB = g.bottom - hb - 5;

    text(g.left + 5, yA, m.x_axis_stringLeft_a);
    text(g.left + 5, yB, m.x_axis_stringLeft_b);

    // The second middle line is centred with the width of the first; it is
    // always empty, so this never shows.
    const int cx = chart_round(g.plotWidth / 2.0 + g.left);
    const double middleX = cx - textWidth(m.x_axis_stringMiddle_a) / 2.0;
    text(middleX, yA, m.x_axis_stringMiddle_a);
    text(middleX, yB, m.x_axis_stringMiddle_b);

    text(g.right - textWidth(m.x_axis_stringRight_a) - 5, yA, m.x_axis_stringRight_a);
    text(g.right - textWidth(m.x_axis_stringRight_b) - 5, yB, m.x_axis_stringRight_b);
    p.setBackgroundMode(Qt::TransparentMode);
}

void Drawing::levelLines() {
    // A level outside the view is left out, not clamped to the edge.
    for (int k = 0; k < m.xLine_count && k < ChartModel::maxXLines; ++k) {
        const ChartXLine &line = m.xLines[size_t(k)];
        if (line.value < y1 || line.value > y2)
            continue;
        const int ly = py(line.value);
        lines.patternedLine(line.color, Qt::DashDotDotLine, g.left, ly, g.right, ly);
    }
}

void Drawing::curves() {
    const bool multi = m.multiSeries;
    const double spanX = double(x2) - x1;
    const double spanY = double(y2) - y1;
    auto xPixel = [&](double index) {
        return clampTo(chart_round(g.plotWidth * clamp01((index - x1) / spanX)) + g.left, g.left,
                       g.right);
    };
    auto yPixel = [&](double value) {
        return clampTo(g.bottom - chart_round(g.plotHeight * clamp01((value - y1) / spanY)), g.top,
                       g.bottom);
    };

    if (count == 1) {
        lines.setColor(m.color_graph);
        const int ly = yPixel(m.points[0].value_y);
        lines.line(g.left, ly, g.right, ly);
        if (multi) {
            lines.setColor(m.color_second);
            const int ly1 = yPixel(m.value_y1[0]);
            lines.line(g.left, ly1, g.right, ly1);
        }
        return;
    }

    // The previous point starts at index 0 and only advances inside the
    // view, so a zoomed view begins with a segment from the left edge at the
    // height of point 0. That is how the charts have always looked.
    int prev = 0;
    float prevY = m.points[0].value_y;
    float prevY1 = m.value_y1[0];
    lines.setColor(m.color_graph);
    for (int i = 0; i < count; ++i) {
        if (i >= x1 && i <= double(x2) + 1.0) {
            const float y = m.points[size_t(i)].value_y;
            const int ax = xPixel(prev), bx = xPixel(i);
            lines.line(ax, yPixel(prevY), bx, yPixel(y));
            if (multi) {
                const float yb = m.value_y1[size_t(i)];
                lines.setColor(m.color_second);
                lines.line(ax, yPixel(prevY1), bx, yPixel(yb));
                lines.setColor(m.color_graph);
                prevY1 = yb;
            }
            prev = i;
            prevY = y;
        }
        if (i % 1000 == 0 && hooks.pendingEvents)
            hooks.pendingEvents();
    }
}

} // namespace

bool chart_draw(ChartModel &model, QPainter &painter, ChartSurface surface,
                const ChartRenderHooks &hooks) {
    if (model.drawing)
        return false;
    model.drawing = true;
    const ChartGeometry g = surface == ChartSurface::Page ? ChartGeometry::page() : model.geometry;
    painter.save();
    Drawing(model, painter, g, hooks).run();
    painter.restore();
    if (surface == ChartSurface::Page && hooks.pageComposed)
        hooks.pageComposed();
    model.drawing = false;
    return true;
}

QImage chart_pageImage(ChartModel &model, const ChartRenderHooks &hooks) {
    if (model.drawing)
        return {};
    const ChartGeometry g = ChartGeometry::page();
    QImage page(g.width, g.height, QImage::Format_RGB32);
    QPainter painter(&page);
    chart_draw(model, painter, ChartSurface::Page, hooks);
    return page;
}

void chart_drawInfo(const ChartModel &model, QPainter &painter, int dataIndex) {
    const ChartInfoTexts texts = model.infoTexts(dataIndex);
    const int w = model.geometry.width;
    const QColor back(model.color_back);
    painter.save();
    painter.setFont(chart_font(8));
    painter.setPen(QColor(255, 0, 0));
    painter.setBackground(back);
    painter.setBackgroundMode(Qt::OpaqueMode);
    const int ascent = painter.fontMetrics().ascent();
    painter.fillRect(QRect(QPoint(4, 4), QPoint(100, 32)), back);
    painter.drawText(QPoint(4, 4 + ascent), texts.date);
    painter.drawText(QPoint(4, 16 + ascent), texts.time);
    painter.fillRect(QRect(QPoint(w - 160, 4), QPoint(w - 1, 32)), back);
    const int valueX = w - (painter.fontMetrics().horizontalAdvance(texts.value) + 5);
    painter.drawText(QPoint(valueX, 16 + ascent), texts.value);
    painter.restore();
}

void chart_drawSelection(QPainter &painter, int x1, int y1, int x2, int y2) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(240, 0, 0), 1));
    painter.drawRect(
        QRect(std::min(x1, x2), std::min(y1, y2), std::abs(x2 - x1), std::abs(y2 - y1)));
    painter.restore();
}
