#pragma once

#include <QPoint>
#include <QRect>

#include <span>

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
