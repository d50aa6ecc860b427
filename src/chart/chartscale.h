#pragma once

#include <QString>

// The arithmetic of the chart scales: rounding, the step of the vertical
// grid, the label formats and the number texts of labels and the cursor.
// All rounding of the charts is round-half-to-even (2.5 -> 2, 3.5 -> 4),
// both for explicit rounding and for turning a fraction into a pixel; the
// step cascade depends on it.

// Round half to even; NaN gives 0 and values beyond +-1e9 are held there,
// so degenerate input can never overflow a pixel coordinate.
int chart_round(double v);

// The vertical label step rounded up to a "round" number. Steps of 1 or
// less are returned as they are. The uneven results (26 -> 60, 260 -> 600)
// are the chart's established look and are kept.
float chart_stepCascade(float step);

// Decimals of the vertical axis labels for the view y1 .. y2: 3, 2, 1 or 0.
int chart_yLabelDecimals(float y1, float y2);

// v with a fixed number of decimals, always with "." as separator.
QString chart_formatFixed(double v, int decimals);

// The cursor's value text: one decimal when the number's plain text form
// (seven significant digits) has a decimal point, none otherwise.
QString chart_infoValueText(float v);

// "yyyy-mm-dd" / "hh:mm:ss" of separate fields (year padded to four digits).
QString chart_dateText(int year, int month, int day);
QString chart_timeText(int hour, int minute, int second);
