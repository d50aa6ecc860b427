#include "chart/ui/chartpicture.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

ChartPicture::ChartPicture(QWidget *parent) : QWidget(parent), m_image(1, 1, QImage::Format_RGB32) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);         // the cursor follows the pointer without a button
    setFocusPolicy(Qt::ClickFocus); // a click activates the chart window
    m_image.fill(Qt::white);
}

void ChartPicture::resizeImage(int width, int height, QRgb fill) {
    // The image holds a pixel for every pixel of the screen, so on a scaled
    // screen text and lines stay sharp; the chart draws in the widget's own
    // coordinates all the same.
    const qreal ratio = devicePixelRatioF();
    if (m_image.deviceIndependentSize() == QSizeF(width, height) &&
        m_image.devicePixelRatio() == ratio)
        return;
    QImage next(QSize(width, height) * ratio, QImage::Format_RGB32);
    next.setDevicePixelRatio(ratio);
    next.fill(fill);
    QPainter p(&next);
    p.drawImage(0, 0, m_image);
    p.end();
    m_image = std::move(next);
}

void ChartPicture::paintEvent(QPaintEvent *event) {
    QPainter p(this);
    p.fillRect(event->rect(), palette().window());
    p.drawImage(0, 0, m_image);
}

void ChartPicture::mousePressEvent(QMouseEvent *event) {
    event->accept();
}

void ChartPicture::mouseReleaseEvent(QMouseEvent *event) {
    event->accept();
}

void ChartPicture::mouseMoveEvent(QMouseEvent *event) {
    event->accept();
}
