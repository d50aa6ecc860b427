#include "chart/windowlayout.h"

#include <algorithm>
#include <cstdlib>

namespace {

// Best shift along one axis: from the moving span [lo, hi] to the edges
// of another span [olo, ohi]; keeps `best` when nothing is nearer.
void consider(int lo, int hi, int olo, int ohi, int distance, int &best, bool &found) {
    const int shifts[] = {
        (ohi + 1) - lo, // our low edge touching its high edge
        olo - lo,       // low edges flush
        (olo - 1) - hi, // our high edge touching its low edge
        ohi - hi,       // high edges flush
    };
    for (int s : shifts) {
        if (std::abs(s) > distance)
            continue;
        if (!found || std::abs(s) < std::abs(best)) {
            best = s;
            found = true;
        }
    }
}

bool nearOverlap(int lo, int hi, int olo, int ohi, int distance) {
    return lo <= ohi + distance && hi >= olo - distance;
}

} // namespace

QPoint window_snap(const QRect &moving, std::span<const QRect> others, int distance) {
    int dx = 0, dy = 0;
    bool foundX = false, foundY = false;
    const size_t n =
        others.size() < size_t(window_snapMaxRects) ? others.size() : size_t(window_snapMaxRects);
    for (size_t k = 0; k < n; ++k) {
        const QRect &o = others[k];
        if (o.isEmpty() || o == moving)
            continue;
        if (nearOverlap(moving.top(), moving.bottom(), o.top(), o.bottom(), distance))
            consider(moving.left(), moving.right(), o.left(), o.right(), distance, dx, foundX);
        if (nearOverlap(moving.left(), moving.right(), o.left(), o.right(), distance))
            consider(moving.top(), moving.bottom(), o.top(), o.bottom(), distance, dy, foundY);
    }
    return moving.topLeft() + QPoint(dx, dy);
}

std::array<QPoint, 4> window_chartPlacement(const QRect &panel, const QSize &area,
                                            const std::array<QSize, 4> &chartSizes) {
    const int x0 = panel.isNull() ? 0 : panel.right() + 1;
    const int firstWidth = std::max(chartSizes[0].width(), chartSizes[2].width());
    const int secondWidth = std::max(chartSizes[1].width(), chartSizes[3].width());
    const int x1 = std::max(x0, std::min(x0 + firstWidth, area.width() - secondWidth));
    const int y1 = std::max(chartSizes[0].height(), chartSizes[1].height());
    return {QPoint(x0, 0), QPoint(x1, 0), QPoint(x0, y1), QPoint(x1, y1)};
}
