#include "chart/linedrawer.h"

#include "chart/chartscale.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

LineDrawer::LineDrawer(QPainter &painter) : m_painter(painter) {
    const QTransform t = painter.deviceTransform();
    m_enlarged = std::max(std::hypot(t.m11(), t.m12()), std::hypot(t.m21(), t.m22())) > 1.01;
    QPaintDevice *device = painter.device();
    if (!device || device->devType() != QInternal::Image)
        return;
    auto *image = static_cast<QImage *>(device);
    const QImage::Format f = image->format();
    const bool plain32 = f == QImage::Format_RGB32 || f == QImage::Format_ARGB32 ||
                         f == QImage::Format_ARGB32_Premultiplied;
    if (!plain32 || painter.deviceTransform().type() != QTransform::TxNone ||
        painter.hasClipping() ||
        painter.compositionMode() != QPainter::CompositionMode_SourceOver ||
        painter.opacity() != 1.0)
        return;
    // The painter has detached the image when it began, so the const
    // pointer is the very buffer it paints into; asking for the non-const
    // one could detach it again behind the painter's back.
    m_bits = const_cast<unsigned char *>(image->constBits());
    m_bytesPerLine = image->bytesPerLine();
    m_width = image->width();
    m_height = image->height();
}

void LineDrawer::setColor(QRgb color) {
    m_pixel = 0xff000000u | color;
    if (!m_bits)
        m_painter.setPen(QPen(QColor(color), 1, Qt::SolidLine, Qt::SquareCap));
}

void LineDrawer::line(int x0, int y0, int x1, int y1) {
    // Coordinates from degenerate views can lie far outside any canvas; held
    // to a range where the error terms below cannot overflow.
    constexpr int far = 1 << 20;
    x0 = std::clamp(x0, -far, far);
    y0 = std::clamp(y0, -far, far);
    x1 = std::clamp(x1, -far, far);
    y1 = std::clamp(y1, -far, far);
    if (!m_bits) {
        painterLine(x0, y0, x1, y1);
        return;
    }
    const int dx = x1 - x0, dy = y1 - y0;
    const int adx = std::abs(dx), ady = std::abs(dy);
    const int n = std::max(adx, ady); // pixels drawn: the end is left out
    if (n == 0)
        return;
    // Bresenham along the longer axis. A line wholly inside the image (the
    // usual case) walks a pixel pointer; others check every pixel.
    const bool xMajor = adx >= ady;
    const int major = xMajor ? adx : ady;
    const int minor = xMajor ? ady : adx;
    const int sx = dx > 0 ? 1 : -1, sy = dy > 0 ? 1 : -1;
    const bool inside = std::min(x0, x1) >= 0 && std::max(x0, x1) < m_width &&
                        std::min(y0, y1) >= 0 && std::max(y0, y1) < m_height;
    int err = 2 * minor - major;
    if (inside) {
        const long long majorStep = xMajor ? sx * 4 : sy * m_bytesPerLine;
        const long long minorStep = xMajor ? sy * m_bytesPerLine : sx * 4;
        unsigned char *at = m_bits + y0 * m_bytesPerLine + x0 * 4LL;
        for (int k = 0; k < n; ++k) {
            *reinterpret_cast<uint32_t *>(at) = m_pixel;
            if (err > 0) {
                at += minorStep;
                err -= 2 * major;
            }
            err += 2 * minor;
            at += majorStep;
        }
        return;
    }
    int x = x0, y = y0;
    for (int k = 0; k < n; ++k) {
        if (unsigned(x) < unsigned(m_width) && unsigned(y) < unsigned(m_height))
            reinterpret_cast<uint32_t *>(m_bits + y * m_bytesPerLine)[x] = m_pixel;
        if (err > 0) {
            (xMajor ? y : x) += xMajor ? sy : sx;
            err -= 2 * major;
        }
        err += 2 * minor;
        (xMajor ? x : y) += xMajor ? sx : sy;
    }
}

void LineDrawer::patternedLine(QRgb color, Qt::PenStyle style, int x0, int y0, int x1, int y1) {
    const QPen pen = m_painter.pen();
    m_painter.setPen(QPen(QColor(color), 1, style, Qt::SquareCap));
    painterLine(x0, y0, x1, y1);
    m_painter.setPen(pen);
}

void LineDrawer::painterLine(int x0, int y0, int x1, int y1) {
    // Each segment stopping a pixel short shows as a dashed curve once a
    // pixel is several device pixels wide.
    if (m_enlarged) {
        if (x0 != x1 || y0 != y1)
            m_painter.drawLine(x0, y0, x1, y1);
        return;
    }
    // Qt's line includes both ends with square caps; stop one pixel short
    // of the end along the longer axis instead.
    const int dx = x1 - x0, dy = y1 - y0;
    const int n = std::max(std::abs(dx), std::abs(dy));
    if (n == 0)
        return;
    if (n == 1) {
        m_painter.drawPoint(x0, y0);
        return;
    }
    const double back = double(n - 1) / n;
    int ex, ey;
    if (std::abs(dx) >= std::abs(dy)) {
        ex = x1 - (dx > 0 ? 1 : -1);
        ey = y0 + chart_round(dy * back);
    } else {
        ey = y1 - (dy > 0 ? 1 : -1);
        ex = x0 + chart_round(dx * back);
    }
    m_painter.drawLine(x0, y0, ex, ey);
}
