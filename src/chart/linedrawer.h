#pragma once

#include <QRgb>
#include <Qt>

class QPainter;

// Draws the solid one-pixel lines of a chart with the picture area's rule:
// every pixel from the start up to, but not including, the end, whichever
// way the line runs (the frame's corners and the joints of the curve rely
// on it). When the painter paints on a 32-bit image without transform or
// clipping (the window's picture and the print page), the pixels are written
// straight into the image, which is many times faster than Qt's stroker for
// the thousands of steep segments of a noisy curve; on any other device
// (a PDF page) the lines go through QPainter. A page enlarged onto a finer
// device (a printer) has no pixels to leave out: there the lines run to
// their ends, so the curve stays one unbroken line on paper.
class LineDrawer {
public:
    explicit LineDrawer(QPainter &painter);

    // Sets the colour (and, for the QPainter path, a solid pen of width 1).
    void setColor(QRgb color);
    void line(int x0, int y0, int x1, int y1);
    // A patterned line (dash-dot-dot level lines) always goes through
    // QPainter, with the same end rule; the pen is left as it was.
    void patternedLine(QRgb color, Qt::PenStyle style, int x0, int y0, int x1, int y1);

private:
    void painterLine(int x0, int y0, int x1, int y1);

    QPainter &m_painter;
    bool m_enlarged = false;
    unsigned char *m_bits = nullptr;
    long long m_bytesPerLine = 0;
    int m_width = 0;
    int m_height = 0;
    unsigned int m_pixel = 0;
};
