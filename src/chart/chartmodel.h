#pragma once

#include <QRgb>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

// One point of a chart: the time stamp of the reading, the number printed
// under the horizontal axis and the plotted value.
struct ChartPoint {
    int16_t date_year = 0;
    uint8_t date_month = 0;
    uint8_t date_day = 0;
    uint8_t date_hour = 0;
    uint8_t date_minute = 0;
    uint8_t date_second = 0;
    float value_x = 0.0f;
    float value_y = 0.0f;
};

// A horizontal level line (an alarm threshold, for example), in units of the
// plotted value. The historical name "X line" is kept.
struct ChartXLine {
    float value = 0.0f;
    QRgb color = 0;
};

// Pixel geometry of the surface a chart is drawn on: the canvas and the plot
// area inside it (left 70, top 40, right width - 20, bottom height - 30).
// Tiny windows give negative plot sizes; every consumer copes with them.
struct ChartGeometry {
    int16_t width = 0;
    int16_t height = 0;
    int16_t left = 70;
    int16_t top = 40;
    int16_t right = 0;
    int16_t bottom = 0;
    int16_t plotWidth = 0;
    int16_t plotHeight = 0;

    static ChartGeometry forCanvas(int width, int height);
    // The fixed page of the printed copy: 800 x 600, plot 70,40 - 780,570.
    static ChartGeometry page() { return forCanvas(800, 600); }
};

// The three texts of the information cursor for one point.
struct ChartInfoTexts {
    QString date;
    QString time;
    QString value;
};

// What a pointer movement did to the zoom selection; the window acts on it.
struct ChartSelectionStep {
    enum Kind { None, Started, Dragging, Applied };
    Kind kind = None;
    float fx1 = 0.0f; // Applied: horizontal factors for the other charts
    float fx2 = 0.0f;
};

// The whole state of one chart window apart from the window itself: its own
// copy of the points it shows (room for 5200, plus a second series), level
// lines, colours, title, axis texts, the geometry of its picture area, the
// data extent of the last drawing, the zoom window, the mouse selection and
// the guard flags. It carries out every chart operation that does not paint,
// including the mouse-to-index and rectangle-to-zoom arithmetic, so both the
// chart window and the headless tools drive the same code. Fields keep the
// names the chart code has always used and are read and written directly by
// the renderer and the window.
class ChartModel {
public:
    static constexpr int capacity = 5200;
    // The drawing may read one slot past the last point (index 5200), so the
    // buffer has one slot more than it ever fills.
    static constexpr int bufferSlots = capacity + 1;
    static constexpr int maxXLines = 2;

    ChartModel();

    // Colours, point count, flags, title, texts and level lines back to their
    // initial state. Geometry and objectIndex are kept.
    void init();
    // Point count 0, zoom and selection off; the second-series flag is kept
    // on purpose (a chart that once had two series keeps drawing both).
    void clearData();
    void disableZoom();

    // Both return false (and drop the point) when the buffer is full.
    bool addDataPoint(float x, float y, int16_t year, uint8_t month, uint8_t day, uint8_t hour,
                      uint8_t minute, uint8_t second);
    bool addMultiDataPoint(float x, float y, float y1, int16_t year, uint8_t month, uint8_t day,
                           uint8_t hour, uint8_t minute, uint8_t second);
    // Returns false when two lines are held already.
    bool addXLine(float value, QRgb color);
    void clearXLines() { xLine_count = 0; }

    void set_xAxis_text(const QString &leftA, const QString &leftB, const QString &rightA,
                        const QString &rightB, const QString &middleA);

    // The picture area's size in pixels (the last step of the window layout).
    void setCanvasSize(int width, int height) {
        geometry = ChartGeometry::forCanvas(width, height);
    }

    // --- interaction (see chartinteraction.cpp) ---

    // The point index under pixel (x, y) of the picture area; -1 outside the plot.
    int16_t infoIndexAt(int x, int y) const;
    // Date, time and value texts of point dataIndex; all empty when out of range.
    ChartInfoTexts infoTexts(int dataIndex) const;
    // One pointer movement for the zoom selection with the given button
    // state. Applied means the zoom window changed and the chart must draw.
    ChartSelectionStep selectionMove(int x, int y, bool leftOnly, bool anyButton);
    // Zooms the horizontal axis to a fraction of the current view; the
    // factors are clamped to 0 .. 1 in place. Returns false for (0, 1), which
    // changes nothing; otherwise the chart must draw.
    bool setZoom_x(float &x1_factor, float &x2_factor);

    // --- state ---

    std::vector<ChartPoint> points; // bufferSlots entries
    std::vector<float> value_y1;    // bufferSlots entries
    int16_t point_count = 0;
    bool multiSeries = false;

    std::array<ChartXLine, maxXLines> xLines{};
    int16_t xLine_count = 0;

    QRgb color_back = 0;
    QRgb color_graph = 0;
    QRgb color_second = 0; // no operation sets it: the second series is black
    QRgb color_lines = 0;
    QRgb color_scaling = 0;
    QRgb color_text = 0;
    QRgb color_title = 0;

    QString title;
    QString x_axis_stringLeft_a;
    QString x_axis_stringLeft_b;
    QString x_axis_stringMiddle_a;
    QString x_axis_stringMiddle_b; // never set by anything; stays empty
    QString x_axis_stringRight_a;
    QString x_axis_stringRight_b;

    ChartGeometry geometry;

    // Data extent of the last drawing; the next zoom computes from these.
    int32_t dataIndex_min = 0;
    int32_t dataIndex_max = 0;
    float dataValue_min = 0.0f; // padded
    float dataValue_max = 0.0f; // padded
    int32_t dataPoints_drawn = 0;

    bool zoomActive = false;
    float zoom_x1 = 0.0f; // point-index units, fractional
    float zoom_x2 = 0.0f;
    float zoom_y1 = 0.0f; // value units
    float zoom_y2 = 0.0f;

    bool selecting = false;
    int16_t selStart_x = 0;
    int16_t selStart_y = 0;
    int16_t selEnd_x = 0;
    int16_t selEnd_y = 0;

    bool active = false;
    bool drawing = false; // a drawing is under way; further draws are dropped
    int16_t objectIndex = 0;

private:
    // Orders the corners and turns the rectangle into the zoom window;
    // returns the horizontal factors for the other charts.
    void applySelection(float &fx1, float &fx2);
};
