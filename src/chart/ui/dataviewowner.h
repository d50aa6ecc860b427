#pragma once

#include <cstdint>

// What a chart window asks of the window that owns it (the main window, or
// the chart set acting for it): to copy a zoom or a cursor position to the
// other charts. The chart passes its own objectIndex first.
class DataViewOwner {
public:
    virtual ~DataViewOwner() = default;
    // disableZoom: every other chart returns to its full view; otherwise each
    // zooms to the fractions x1_factor .. x2_factor of its current view.
    virtual void dataView_syncZoom_x(int16_t objectIndex, float x1_factor, float x2_factor,
                                     bool disableZoom) = 0;
    virtual void dataView_syncInfoPos(int16_t objectIndex, int16_t dataIndex) = 0;
};
