#pragma once

#include "chart/chartmodel.h"

#include <QFont>
#include <QImage>

#include <functional>

class QPainter;

// Which surface a drawing goes to: the window's picture area, sized by the
// chart's geometry, or the fixed 800 x 600 page of the printed copy.
enum class ChartSurface { Screen, Page };

struct ChartRenderHooks {
    // Called every 1000 points of the curve so a long drawing can let
    // pending window events run; the drawing guard stops a second drawing.
    std::function<void()> pendingEvents;
    // Page mode: called when the page is complete, before the guard is
    // released (the printer takes the page here).
    std::function<void()> pageComposed;
};

// The one drawing routine of the charts: frame, title, both grids with their
// labels, the dates of the visible ends, the axis texts, the level lines and
// the curve(s), onto any painter whose device covers the surface (a widget's
// backing image, a QImage in tests, a PDF page mapped to 800 x 600). The
// drawing stores the data extent, the point count and the end dates in the
// model. Returns false, drawing nothing, when a drawing of this chart is
// already under way.
bool chart_draw(ChartModel &model, QPainter &painter, ChartSurface surface,
                const ChartRenderHooks &hooks = {});

// The page image of the printed copy (800 x 600); a null image when the
// chart is busy drawing.
QImage chart_pageImage(ChartModel &model, const ChartRenderHooks &hooks = {});

// The information cursor's two boxes in the top margin, for point dataIndex
// (blank boxes when it is out of range). The caller skips it while drawing.
void chart_drawInfo(const ChartModel &model, QPainter &painter, int dataIndex);

// The red outline of a zoom selection, corners included.
void chart_drawSelection(QPainter &painter, int x1, int y1, int x2, int y2);

// "Verdana" when it is installed, else the system's sans-serif family.
QString chart_fontFamily();
// The chart font at a point size, taken at 96 dpi so every surface (screen,
// image, PDF page) gets the same pixel size.
QFont chart_font(int points, bool boldUnderlined = false);
