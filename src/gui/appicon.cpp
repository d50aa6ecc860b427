#include "gui/appicon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {

QPainterPath drop(QRectF r) {
    // A drop: a circle at the bottom, a point at the top.
    QPainterPath p;
    const double cx = r.center().x();
    const double radius = r.width() / 2;
    const double cy = r.bottom() - radius;
    p.moveTo(cx, r.top());
    p.cubicTo(cx + radius * 0.2, r.top() + radius * 0.6, cx + radius, cy - radius * 0.5,
              cx + radius, cy);
    p.arcTo(QRectF(cx - radius, cy - radius, 2 * radius, 2 * radius), 0, -180);
    p.cubicTo(cx - radius, cy - radius * 0.5, cx - radius * 0.2, r.top() + radius * 0.6, cx,
              r.top());
    p.closeSubpath();
    return p;
}

QPixmap render(int size) {
    QPixmap pm(size, size);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    const double s = size;
    p.setPen(QPen(QColor(60, 40, 0), s / 32));
    p.setBrush(QColor(200, 150, 30));
    p.drawPath(drop(QRectF(s * 0.18, s * 0.04, s * 0.64, s * 0.92)));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(30, 30, 150));
    p.drawPath(drop(QRectF(s * 0.36, s * 0.42, s * 0.28, s * 0.44)));
    return pm;
}

} // namespace

QIcon appIcon() {
    QIcon icon;
    for (int size : {16, 24, 32, 48, 64, 128})
        icon.addPixmap(render(size));
    return icon;
}
