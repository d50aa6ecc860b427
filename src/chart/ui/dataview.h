#pragma once

#include "chart/chartmodel.h"

#include <QMdiSubWindow>

class ChartPicture;
class DataViewOwner;
class QMouseEvent;
class QPaintDevice;

// A chart window (`dataView`): a child window of the frame that shows one
// measured quantity. It wraps a ChartModel with the chart's public
// operations, each with its exact drawing effect (adding points, lines,
// colours and texts never draws; the caller ends a batch with
// dataView_draw), keeps the picture area laid out inside the window, turns
// mouse movements into the information cursor and drag zoom, and reports
// both to its owner so the other charts follow.
class DataView : public QMdiSubWindow {
    Q_OBJECT
public:
    explicit DataView(DataViewOwner *owner = nullptr, QWidget *parent = nullptr);
    ~DataView() override;

    void dataView_init();
    bool dataview_getState_active() const { return m_model.active; }

    void dataview_setColor_back(QRgb newColor) { m_model.color_back = newColor; }
    void dataview_setColor_graph(QRgb newColor) { m_model.color_graph = newColor; }
    void dataview_setColor_lines(QRgb newColor) { m_model.color_lines = newColor; }
    void dataview_setColor_scaling(QRgb newColor) { m_model.color_scaling = newColor; }
    void dataview_setColor_text(QRgb newColor) { m_model.color_text = newColor; }
    void dataview_setColor_title(QRgb newColor) { m_model.color_title = newColor; }

    void dataView_setTitle(const QString &newTitle);
    void dataView_setWindowPosition(int32_t new_x, int32_t new_y) { move(new_x, new_y); }
    float dataView_getWindowPosition_x() const { return float(x()); }
    float dataView_getWindowPosition_y() const { return float(y()); }
    float dataView_getWindowSize_x() const { return float(width()); }
    float dataView_getWindowSize_y() const { return float(height()); }

    void dataView_clearData();
    void dataView_disableZoom();
    void dataView_addDataPoint(float value_x, float value_y, int16_t date_year, uint8_t date_month,
                               uint8_t date_day, uint8_t date_hour, uint8_t date_minute,
                               uint8_t date_second);
    void dataView_addMultiDataPoint(float value_x, float value_y, float value_y1, int16_t date_year,
                                    uint8_t date_month, uint8_t date_day, uint8_t date_hour,
                                    uint8_t date_minute, uint8_t date_second);
    void dataView_addXLine(float value, QRgb color) { m_model.addXLine(value, color); }
    void dataView_clearXLines() { m_model.clearXLines(); }
    void dataView_set_xAxis_text(const QString &x_axis_stringLeft_a,
                                 const QString &x_axis_stringLeft_b,
                                 const QString &x_axis_stringRight_a,
                                 const QString &x_axis_stringRight_b,
                                 const QString &x_axis_stringMiddle_a);
    void dataView_resize();
    void dataView_draw();
    // Prints the chart, in its current zoom, as one document on `printer`:
    // its 800 x 600 page stretched to 90 % of the printer's page, 5 % in from
    // the edges. The screen picture is not touched. Skipped while the chart
    // is drawing; returns true when nothing was printed.
    bool dataView_print(QPaintDevice &printer);
    void dataView_show() { show(); }
    void dataView_hide() { hide(); }

    void setZoom_x(float &x1_factor, float &x2_factor);
    void setInfoPos(int16_t dataIndex);
    void set_objectIndex(int16_t objectIndex) { m_model.objectIndex = objectIndex; }
    int16_t get_objectIndex() const { return m_model.objectIndex; }

    void setOwner(DataViewOwner *owner) { m_owner = owner; }

    // For the owner's display refresh, which fills the model directly, and
    // for tests.
    ChartModel &model() { return m_model; }
    const ChartModel &model() const { return m_model; }
    ChartPicture *picture() const { return m_picture; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void pictureMouseMove(QMouseEvent *event);
    void pictureMousePress(QMouseEvent *event);
    void drawSelectionOutline(int x, int y);

    ChartModel m_model;
    // Dropped in the destructor: the base class still emits state changes
    // while it is torn down, when this object is gone.
    QMetaObject::Connection m_stateConnection;
    DataViewOwner *m_owner = nullptr;
    QWidget *m_client = nullptr; // the window's inner area
    ChartPicture *m_picture = nullptr;
    bool m_resizePending = false;
};
