#include "chart/chartstyle.h"

ChartStyle chart_style(ChartQuantity q) {
    switch (q) {
    case ChartQuantity::Water:
        return {qRgb(240, 240, 255), qRgb(30, 30, 150), qRgb(0, 0, 50),
                qRgb(210, 210, 230), qRgb(0, 0, 0),     qRgb(0, 0, 0)};
    case ChartQuantity::Pressure:
        return {qRgb(240, 255, 240), qRgb(30, 150, 30), qRgb(0, 50, 0),
                qRgb(210, 230, 210), qRgb(0, 0, 0),     qRgb(0, 0, 0)};
    case ChartQuantity::Temperature:
        return {qRgb(255, 255, 240), qRgb(150, 130, 20), qRgb(50, 50, 0),
                qRgb(230, 230, 210), qRgb(0, 0, 0),      qRgb(0, 0, 0)};
    case ChartQuantity::Soot:
        break;
    }
    return {qRgb(230, 230, 230), qRgb(0, 0, 0), qRgb(50, 50, 50),
            qRgb(210, 210, 210), qRgb(0, 0, 0), qRgb(0, 0, 0)};
}

QString chart_title(ChartQuantity q, bool waterPercent) {
    switch (q) {
    case ChartQuantity::Water:
        return waterPercent ? QStringLiteral("Water [%]") : QStringLiteral("Water [ppm]");
    case ChartQuantity::Pressure:
        return QStringLiteral("Pressure [mBar]");
    case ChartQuantity::Temperature:
        return QStringLiteral("Temperature [\u00B0C]");
    case ChartQuantity::Soot:
        break;
    }
    return QStringLiteral("Soot [%]");
}

void chart_applyStyle(ChartModel &model, ChartQuantity q, bool waterPercent) {
    const ChartStyle s = chart_style(q);
    model.color_back = s.back;
    model.color_graph = s.graph;
    model.color_lines = s.lines;
    model.color_scaling = s.scaling;
    model.color_text = s.text;
    model.color_title = s.title;
    model.title = chart_title(q, waterPercent);
}
