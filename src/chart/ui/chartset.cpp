#include "chart/ui/chartset.h"

#include "chart/displayfill.h"
#include "chart/ui/dataview.h"
#include "chart/windowlayout.h"
#include "core/store.h"
#include "session/monitorsession.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMdiArea>

#include <vector>

ChartSet::ChartSet(MonitorSession &session, QMdiArea *area, QObject *parent)
    : QObject(parent), m_store(session.store()), m_area(area) {
    connect(&session, &MonitorSession::displayRequested, this, &ChartSet::display_data);
    connect(&session, &MonitorSession::zoomResetRequested, this, &ChartSet::disableZoom);
    Timer1.setInterval(100);
    connect(&Timer1, &QTimer::timeout, this, &ChartSet::layoutTick);
    Timer1.start();
}

ChartSet::~ChartSet() {
    // The windows belong to the frame's area; only stop them calling back.
    for (const QPointer<DataView> &view : m_slots) {
        if (view)
            view->setOwner(nullptr);
    }
}

DataView *ChartSet::slot(int index) const {
    if (index < 0 || index >= slotCount)
        return nullptr;
    return m_slots[size_t(index)];
}

DataView *ChartSet::chart(ChartQuantity q) const {
    return slot(m_index[size_t(q)]);
}

DataView *ChartSet::createSlot(int index) {
    auto *view = new DataView(this);
    if (m_area)
        m_area->addSubWindow(view);
    m_slots[size_t(index)] = view;
    m_chartCount = index + 1;
    view->dataView_init();
    QCoreApplication::processEvents();
    return view;
}

void ChartSet::createCharts(const QRect &panelArea) {
    for (int i = 0; i < chart_quantityCount; ++i)
        createSlot(i);

    for (int i = 0; i < chart_quantityCount; ++i) {
        DataView *view = slot(i);
        const ChartStyle s = chart_style(ChartQuantity(i));
        view->dataview_setColor_back(s.back);
        view->dataview_setColor_graph(s.graph);
        view->dataview_setColor_lines(s.lines);
        view->dataview_setColor_scaling(s.scaling);
        view->dataview_setColor_text(s.text);
        view->dataview_setColor_title(s.title);
        view->dataView_draw();
        view->set_objectIndex(int16_t(i));
    }

    m_index = {0, 1, 2, 3};
    for (int i = 0; i < chart_quantityCount; ++i) {
        const auto q = ChartQuantity(i);
        chart(q)->dataView_setTitle(chart_title(q, m_store.waterDisplayPercent));
    }

    // Half the frame's inner size, unless that would put the second column
    // over the first: then the two columns share what the panel leaves.
    const QSize area = m_area ? m_area->viewport()->size() : QSize();
    const int room = (area.width() - (panelArea.isNull() ? 0 : panelArea.right() + 1)) / 2;
    for (int i = 0; i < chart_quantityCount; ++i) {
        DataView *view = slot(i);
        if (room >= 200 && view->width() > room)
            view->resize(room, view->height());
    }
    std::array<QSize, 4> sizes;
    for (int i = 0; i < chart_quantityCount; ++i)
        sizes[size_t(i)] = QSize(int(slot(i)->dataView_getWindowSize_x()),
                                 int(slot(i)->dataView_getWindowSize_y()));
    const std::array<QPoint, 4> places = window_chartPlacement(panelArea, area, sizes);
    for (int i = 0; i < chart_quantityCount; ++i)
        slot(i)->dataView_setWindowPosition(places[size_t(i)].x(), places[size_t(i)].y());
}

void ChartSet::display_data() {
    if (m_chartCount < chart_quantityCount)
        return;
    DisplayCharts models;
    for (int i = 0; i < chart_quantityCount; ++i) {
        DataView *view = chart(ChartQuantity(i));
        view->dataView_clearData();
        models[size_t(i)] = &view->model();
    }
    chart(ChartQuantity::Water)
        ->dataView_setTitle(chart_title(ChartQuantity::Water, m_store.waterDisplayPercent));
    if (!display_fillCharts(m_store, models))
        return;
    for (int i = 0; i < chart_quantityCount; ++i)
        chart(ChartQuantity(i))->dataView_draw();
}

void ChartSet::dataView_syncZoom_x(int16_t objectIndex, float x1_factor, float x2_factor,
                                   bool disableZoom) {
    for (int i = 0; i < m_chartCount; ++i) {
        DataView *view = slot(i);
        if (i == objectIndex || !view)
            continue;
        if (disableZoom)
            view->dataView_disableZoom();
        else
            view->setZoom_x(x1_factor, x2_factor);
    }
}

void ChartSet::dataView_syncInfoPos(int16_t objectIndex, int16_t dataIndex) {
    for (int i = 0; i < m_chartCount; ++i) {
        DataView *view = slot(i);
        if (i != objectIndex && view)
            view->setInfoPos(dataIndex);
    }
}

void ChartSet::disableZoom() {
    for (const QPointer<DataView> &view : m_slots) {
        if (view)
            view->dataView_disableZoom();
    }
}

void ChartSet::showCharts(const ChartVisibility &visible) {
    const bool show[chart_quantityCount] = {visible.water, visible.pressure, visible.temperature,
                                            visible.soot};
    for (int i = 0; i < chart_quantityCount; ++i) {
        DataView *view = chart(ChartQuantity(i));
        if (!view)
            continue;
        if (show[i])
            view->dataView_show();
        else
            view->dataView_hide();
    }
}

void ChartSet::applyVisibility(const ChartVisibility &visible) {
    showCharts(visible);
    display_data();
}

void ChartSet::releaseCharts() {
    for (int i = 0; i < 5; ++i) {
        if (DataView *view = slot(i)) {
            view->setOwner(nullptr);
            delete view;
        }
    }
    m_chartCount = 0;
}

void ChartSet::layoutTick() {
    // Snap only once the operator has let go of the window; moving it under
    // a dragging pointer would fight the drag.
    if (QGuiApplication::mouseButtons() != Qt::NoButton)
        return;
    DataView *activeView = nullptr;
    std::vector<QRect> rects;
    rects.reserve(window_snapMaxRects);
    for (int i = 0; i < m_chartCount; ++i) {
        DataView *view = slot(i);
        if (!view || !view->isVisible())
            continue;
        if (view->dataview_getState_active())
            activeView = view;
        rects.push_back(view->geometry());
    }
    if (!activeView)
        return;
    if (m_panel && m_panel->isVisible()) {
        const QWidget *frame = activeView->parentWidget();
        QRect r = m_panel->geometry();
        if (frame && m_panel->parentWidget() != frame)
            r.moveTopLeft(frame->mapFromGlobal(m_panel->mapToGlobal(QPoint(0, 0))));
        rects.push_back(r);
    }
    const QPoint snapped = window_snap(activeView->geometry(), rects);
    if (snapped != activeView->pos())
        activeView->move(snapped);
}
