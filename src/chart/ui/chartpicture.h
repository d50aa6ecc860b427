#pragma once

#include <QImage>
#include <QWidget>

// The picture area of a chart window: a widget showing a persistent image.
// Everything the chart draws (the chart itself, the cursor boxes, the zoom
// outline) goes into the image and stays there until the next drawing
// clears it; painting the widget only copies the image.
class ChartPicture : public QWidget {
    Q_OBJECT
public:
    explicit ChartPicture(QWidget *parent = nullptr);

    QImage &image() { return m_image; }
    const QImage &image() const { return m_image; }
    // A new image of the given size keeping what the old one showed, the
    // rest in `fill`. Sizes are the widget's; the image has the screen's
    // pixel density (devicePixelRatio) on top.
    void resizeImage(int width, int height, QRgb fill);

protected:
    void paintEvent(QPaintEvent *event) override;
    // The chart window handles the mouse (through an event filter); the
    // events end here instead of travelling on to the window frame.
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    QImage m_image;
};
