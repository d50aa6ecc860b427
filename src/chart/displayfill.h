#pragma once

#include "chart/chartmodel.h"
#include "chart/chartstyle.h"

#include <array>

class MeasurementStore;

// The four chart models of a display, indexed by ChartQuantity.
using DisplayCharts = std::array<ChartModel *, chart_quantityCount>;

// Number of plotted values a chart gets at most, about; the store is
// thinned to it by bucket averaging.
inline constexpr int display_targetPoints = 5000;

// Fills the four charts from the store, after the caller has cleared them
// and set the water title: bucket means (about 5000 per chart, the stream
// filter applied, water in per cent when chosen, implausible temperatures
// plotted as 0), the alarm line on the water chart and the axis texts of
// every chart. One pass over the store for all four charts and no
// allocation per point. Returns false when there was nothing to show (an empty store or a
// stream filter that matches no point): then the charts are left empty and
// need no further drawing.
bool display_fillCharts(const MeasurementStore &store, const DisplayCharts &charts);

// The whole refresh on models alone (no drawing): clear every chart, set
// the water title by the display unit, then display_fillCharts. For the
// tools and the benchmarks; the windows go through their own operations.
bool display_refreshModels(const MeasurementStore &store, const DisplayCharts &charts);
