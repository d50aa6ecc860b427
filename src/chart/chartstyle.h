#pragma once

#include "chart/chartmodel.h"

#include <QString>

// The four measured quantities in the order of their chart slots.
enum class ChartQuantity { Water = 0, Pressure = 1, Temperature = 2, Soot = 3 };
inline constexpr int chart_quantityCount = 4;

// Colours of one chart as the program shows it.
struct ChartStyle {
    QRgb back;
    QRgb graph;
    QRgb lines;
    QRgb scaling;
    QRgb text;
    QRgb title;
};

// The program's colour table of the four charts (water in blue, pressure in
// green, temperature in ochre, soot in grey).
ChartStyle chart_style(ChartQuantity q);
// "Water [ppm]" or "Water [%]", "Pressure [mBar]", "Temperature [°C]", "Soot [%]".
QString chart_title(ChartQuantity q, bool waterPercent);
// Colours and title of quantity q on a model (what start-up does to a chart).
void chart_applyStyle(ChartModel &model, ChartQuantity q, bool waterPercent);
