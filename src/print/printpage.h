#pragma once

#include "chart/chartrender.h"

#include <QRectF>
#include <QSizeF>

#include <functional>

class QPaintDevice;
class QPainter;

// Where the chart page goes on a printer page of `pageSize` (device units):
// 5 % in from the left and the top, 90 % of the width and of the height. The
// 4:3 page is stretched to the paper's shape, so a portrait sheet gets a
// tall chart with the same margins.
QRectF print_placement(const QSizeF &pageSize);

// Paints the chart's 800 x 600 page, in its current state and zoom, into
// `target` of the painter's device, stretched to fill it, as vectors where
// the device keeps them (a printer, a PDF). The one page-painting routine of
// the printed copy and of the exported page. The hooks are chart_draw's; the
// painter's transform is given back unless the page hook ended the painter.
// Returns true, painting nothing, when the chart is busy drawing.
bool print_paintPage(ChartModel &model, QPainter &painter, const QRectF &target,
                     const ChartRenderHooks &hooks = {});

// One chart as one document of its own on `printer`: begins the document,
// paints the page at print_placement of the printer's page, lets pending
// events run and ends the document, all under the chart's drawing guard so
// no drawing of this chart starts in between. Returns true when nothing was
// printed: the chart was busy drawing (the printer is not touched then) or
// the printer failed to begin or to finish the document.
bool print_chartDocument(ChartModel &model, QPaintDevice &printer,
                         const std::function<void()> &pendingEvents = {});
