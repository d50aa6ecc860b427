#include "print/printpage.h"

#include <QPaintDevice>
#include <QPainter>
#include <QTransform>

QRectF print_placement(const QSizeF &pageSize) {
    return QRectF(0.05 * pageSize.width(), 0.05 * pageSize.height(), 0.9 * pageSize.width(),
                  0.9 * pageSize.height());
}

bool print_paintPage(ChartModel &model, QPainter &painter, const QRectF &target,
                     const ChartRenderHooks &hooks) {
    if (model.drawing)
        return true;
    const ChartGeometry page = ChartGeometry::page();
    const QTransform previous = painter.worldTransform();
    QTransform toTarget = previous;
    toTarget.translate(target.x(), target.y());
    toTarget.scale(target.width() / page.width, target.height() / page.height);
    painter.setWorldTransform(toTarget);
    chart_draw(model, painter, ChartSurface::Page, hooks);
    if (painter.isActive())
        painter.setWorldTransform(previous);
    return false;
}

bool print_chartDocument(ChartModel &model, QPaintDevice &printer,
                         const std::function<void()> &pendingEvents) {
    // Checked before the document begins: a busy chart must not leave an
    // empty page in the printer.
    if (model.drawing)
        return true;
    QPainter painter;
    if (!painter.begin(&printer))
        return true;
    bool endFailed = false;
    ChartRenderHooks hooks;
    hooks.pendingEvents = pendingEvents;
    // The document ends while the guard still holds: a refresh that the
    // pending events bring is dropped for this chart instead of drawing into
    // a half-finished job.
    hooks.pageComposed = [&] {
        if (pendingEvents)
            pendingEvents();
        endFailed = !painter.end();
    };
    const QSizeF pageSize(printer.width(), printer.height());
    print_paintPage(model, painter, print_placement(pageSize), hooks);
    return endFailed;
}
