#include "chart/ui/dataview.h"

#include "chart/chartrender.h"
#include "chart/ui/chartpicture.h"
#include "chart/ui/dataviewowner.h"
#include "print/printpage.h"

#include <QCoreApplication>
#include <QMdiArea>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace {

// Pending events run every 1000 points of a long drawing, so the program
// stays responsive; the drawing guard drops any drawing they would start.
void letEventsRun() {
    QCoreApplication::processEvents();
}

} // namespace

DataView::DataView(DataViewOwner *owner, QWidget *parent)
    : QMdiSubWindow(parent), m_owner(owner), m_client(new QWidget),
      m_picture(new ChartPicture(m_client)) {
    setWidget(m_client);
    m_client->installEventFilter(this);
    m_picture->installEventFilter(this);
    m_picture->move(10, 10);
    m_stateConnection = connect(this, &QMdiSubWindow::windowStateChanged, this,
                                [this](Qt::WindowStates, Qt::WindowStates now) {
                                    m_model.active = now.testFlag(Qt::WindowActive);
                                });
}

DataView::~DataView() {
    disconnect(m_stateConnection);
}

void DataView::dataView_init() {
    show();
    if (QMdiArea *area = mdiArea())
        resize(area->viewport()->width() / 2, area->viewport()->height() / 2);
    m_model.init();
    setWindowTitle(QString());
    dataView_clearXLines();
    dataView_resize();
    dataView_draw();
}

void DataView::dataView_setTitle(const QString &newTitle) {
    m_model.title = newTitle;
    setWindowTitle(newTitle);
    dataView_draw();
}

void DataView::dataView_clearData() {
    m_model.point_count = 0;
    // Resetting the zoom draws, and clearing draws again; nothing changes
    // in between and an empty chart lets no events run, so one drawing
    // leaves the same picture.
    m_model.disableZoom();
    dataView_draw();
}

void DataView::dataView_disableZoom() {
    m_model.disableZoom();
    dataView_draw();
}

void DataView::dataView_addDataPoint(float value_x, float value_y, int16_t date_year,
                                     uint8_t date_month, uint8_t date_day, uint8_t date_hour,
                                     uint8_t date_minute, uint8_t date_second) {
    m_model.addDataPoint(value_x, value_y, date_year, date_month, date_day, date_hour, date_minute,
                         date_second);
}

void DataView::dataView_addMultiDataPoint(float value_x, float value_y, float value_y1,
                                          int16_t date_year, uint8_t date_month, uint8_t date_day,
                                          uint8_t date_hour, uint8_t date_minute,
                                          uint8_t date_second) {
    m_model.addMultiDataPoint(value_x, value_y, value_y1, date_year, date_month, date_day,
                              date_hour, date_minute, date_second);
}

void DataView::dataView_set_xAxis_text(const QString &x_axis_stringLeft_a,
                                       const QString &x_axis_stringLeft_b,
                                       const QString &x_axis_stringRight_a,
                                       const QString &x_axis_stringRight_b,
                                       const QString &x_axis_stringMiddle_a) {
    m_model.set_xAxis_text(x_axis_stringLeft_a, x_axis_stringLeft_b, x_axis_stringRight_a,
                           x_axis_stringRight_b, x_axis_stringMiddle_a);
}

void DataView::dataView_resize() {
    // The picture area sits 10 pixels inside the window on every side; a
    // window too small for that keeps a picture of one pixel.
    int w = m_client->width() - 20;
    int h = m_client->height() - 20;
    if (w < 2)
        w = 1;
    if (h < 2)
        h = 1;
    m_picture->setGeometry(10, 10, w, h);
    m_model.setCanvasSize(w, h);
    // A drawing in progress paints into the current image; it is replaced
    // once that drawing is done.
    if (m_model.drawing)
        m_resizePending = true;
    else
        m_picture->resizeImage(w, h, m_model.color_back);
}

void DataView::dataView_draw() {
    if (m_model.drawing)
        return;
    {
        QPainter painter(&m_picture->image());
        ChartRenderHooks hooks;
        hooks.pendingEvents = letEventsRun;
        chart_draw(m_model, painter, ChartSurface::Screen, hooks);
    }
    m_picture->update();
    if (m_resizePending) {
        m_resizePending = false;
        dataView_resize();
        dataView_draw();
    }
}

bool DataView::dataView_print(QPaintDevice &printer) {
    const bool failed = print_chartDocument(m_model, printer, letEventsRun);
    // A resize that came while the page was printing was held back; the
    // picture catches up now, as after a drawing.
    if (m_resizePending && !m_model.drawing) {
        m_resizePending = false;
        dataView_resize();
        dataView_draw();
    }
    return failed;
}

void DataView::setZoom_x(float &x1_factor, float &x2_factor) {
    if (m_model.setZoom_x(x1_factor, x2_factor))
        dataView_draw();
}

void DataView::setInfoPos(int16_t dataIndex) {
    if (m_model.drawing)
        return;
    {
        QPainter painter(&m_picture->image());
        chart_drawInfo(m_model, painter, dataIndex);
    }
    m_picture->update();
}

bool DataView::eventFilter(QObject *watched, QEvent *event) {
    if (watched == m_client && event->type() == QEvent::Resize) {
        dataView_resize();
        dataView_draw();
    } else if (watched == m_picture) {
        if (event->type() == QEvent::MouseMove)
            pictureMouseMove(static_cast<QMouseEvent *>(event));
        else if (event->type() == QEvent::MouseButtonPress)
            pictureMousePress(static_cast<QMouseEvent *>(event));
    }
    return QMdiSubWindow::eventFilter(watched, event);
}

void DataView::pictureMousePress(QMouseEvent *event) {
    if (event->button() != Qt::RightButton)
        return;
    dataView_disableZoom();
    if (m_owner)
        m_owner->dataView_syncZoom_x(m_model.objectIndex, 0.0f, 1.0f, true);
}

void DataView::pictureMouseMove(QMouseEvent *event) {
    const int x = int(std::lround(event->position().x()));
    const int y = int(std::lround(event->position().y()));

    const int16_t dataIndex = m_model.infoIndexAt(x, y);
    setInfoPos(dataIndex);
    if (m_owner)
        m_owner->dataView_syncInfoPos(m_model.objectIndex, dataIndex);

    const Qt::MouseButtons buttons = event->buttons();
    const ChartSelectionStep step =
        m_model.selectionMove(x, y, buttons == Qt::LeftButton, buttons != Qt::NoButton);
    if (step.kind == ChartSelectionStep::Dragging) {
        dataView_draw();
        drawSelectionOutline(x, y);
    } else if (step.kind == ChartSelectionStep::Applied) {
        dataView_draw();
        if (m_owner)
            m_owner->dataView_syncZoom_x(m_model.objectIndex, step.fx1, step.fx2, false);
    }
}

void DataView::drawSelectionOutline(int x, int y) {
    // While a drawing is still running its painter owns the picture.
    if (m_model.drawing)
        return;
    {
        QPainter painter(&m_picture->image());
        chart_drawSelection(painter, m_model.selStart_x, m_model.selStart_y, x, y);
    }
    m_picture->update();
}
