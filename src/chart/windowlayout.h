#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <array>
#include <span>

// Where start-up puts the four chart windows: in two columns and two rows
// (water, pressure / temperature, soot) right of the control panel's area.
// The second column is pulled left so it ends at the right edge of the
// frame's area, but never further left than the first; windows may then
// overlap, which is better than hiding half a chart off-screen.
std::array<QPoint, 4> window_chartPlacement(const QRect &panel, const QSize &area,
                                            const std::array<QSize, 4> &chartSizes);

// Snapping of a chart window to the windows around it, run by the window
// layout timer: an edge of the moving window that comes within `distance`
// pixels of an edge of another window (one it overlaps or nearly overlaps
// across that axis) is moved onto it, either touching it from outside or
// flush with the same edge. Each axis snaps on its own, to the nearest
// candidate; nothing farther than `distance` moves the window.
inline constexpr int window_snapDistance = 10;
// The layout timer looks at no more windows than this.
inline constexpr int window_snapMaxRects = 100;

// The snapped top-left corner of `moving` (its own when nothing is close).
QPoint window_snap(const QRect &moving, std::span<const QRect> others,
                   int distance = window_snapDistance);
