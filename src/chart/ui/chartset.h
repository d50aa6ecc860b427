#pragma once

#include "chart/chartstyle.h"
#include "chart/ui/dataviewowner.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QTimer>

#include <array>

class DataView;
class MeasurementStore;
class MonitorSession;
class QMdiArea;

// Which charts the display settings want on screen.
struct ChartVisibility {
    bool water = true;
    bool pressure = true;
    bool temperature = true;
    bool soot = false;
};

// The chart windows of the main window and everything done to them as a
// set: creating the four charts at start-up with their colours, titles and
// places, rebuilding them from the store (display_data), copying a zoom or a
// cursor from one chart to the others, showing and hiding them by the
// display settings, and the layout timer that snaps an active chart window
// to its neighbours. It follows the session's display rebuilds and zoom
// resets itself; the main window owns one and stays a thin frame.
class ChartSet : public QObject, public DataViewOwner {
    Q_OBJECT
public:
    static constexpr int slotCount = 6; // slots 0 .. 3 hold the four charts
    // The control panel's size at start-up, 4770 x 5100 twips at 15 twips
    // per pixel: the area the charts are placed beside when no panel
    // window is given.
    static QRect defaultPanelArea() { return QRect(0, 0, 318, 340); }

    ChartSet(MonitorSession &session, QMdiArea *area, QObject *parent = nullptr);
    ~ChartSet() override;

    // Start-up: creates the charts in slots 0 .. 3 (letting events run after
    // each), colours and draws them, gives them their slot numbers, titles
    // and quantity indices, and places them beside `panelArea` (in the
    // frame area's coordinates).
    void createCharts(const QRect &panelArea = defaultPanelArea());
    // The window whose rectangle the layout timer also snaps to.
    void setPanelWindow(QWidget *panel) { m_panel = panel; }

    void display_data();
    void dataView_syncZoom_x(int16_t objectIndex, float x1_factor, float x2_factor,
                             bool disableZoom) override;
    void dataView_syncInfoPos(int16_t objectIndex, int16_t dataIndex) override;
    // Every chart window back to its full view (after reading files).
    void disableZoom();
    // Shows or hides each chart (start-up and settings OK).
    void showCharts(const ChartVisibility &visible);
    // Settings OK: shows or hides each chart, then rebuilds the display.
    void applyVisibility(const ChartVisibility &visible);
    // Shutdown: releases slots 0 .. 4 (slot 5 is never touched).
    void releaseCharts();

    int chartCount() const { return m_chartCount; }
    DataView *slot(int index) const;
    DataView *chart(ChartQuantity q) const;

    QTimer Timer1; // 100 ms: window layout

private:
    void layoutTick();
    DataView *createSlot(int index);

    const MeasurementStore &m_store;
    QPointer<QMdiArea> m_area;
    QPointer<QWidget> m_panel;
    std::array<QPointer<DataView>, slotCount> m_slots;
    int m_chartCount = 0;
    // Slot of each quantity's chart, indexed by ChartQuantity.
    std::array<int16_t, chart_quantityCount> m_index{0, 1, 2, 3};
};
