#pragma once

#include "chart/chartstyle.h"

#include <QPageLayout>
#include <QString>

#include <functional>
#include <vector>

struct DisplayFlags;
class QPaintDevice;

// What the printer dialog hands on to the print run: the copies and the
// orientation the user chose, and the file when printing to a PDF file
// (empty for a printer).
struct PrintSetup {
    int copies = 1;
    QPageLayout::Orientation orientation = QPageLayout::Landscape;
    QString outputFileName;
};

// The printer as the print run sees it: one device per printed document.
// The program's implementation wraps a QPrinter; tests hand out pages they
// can look at afterwards.
class ChartPrinter {
public:
    virtual ~ChartPrinter() = default;
    // Readies the printer for the document of chart `q`, the `index`-th
    // document of this run (from 0), with the dialog's copies, orientation
    // and file. Returns the device to paint it on, or nullptr when there is
    // none; the document begins only when a painter begins on the device.
    virtual QPaintDevice *print_document(ChartQuantity q, int index, const PrintSetup &setup) = 0;
};

// Prints chart `q` as one document on the device (the chart window's
// dataView_print). Returns true when nothing was printed.
using ChartDocumentPrinter = std::function<bool(ChartQuantity q, QPaintDevice &device)>;

// The charts a print run takes, in the order they are printed: water,
// temperature, pressure, each only when its print setting is on.
std::vector<ChartQuantity> print_selection(const DisplayFlags &flags);

// The print run after the dialog: every chart of print_selection as a
// document of its own, with the dialog's setup applied to the printer before
// each. A chart that prints nothing (busy drawing, printer failure) is left
// out and does not count as a document. Returns the charts printed.
std::vector<ChartQuantity> print_charts(const DisplayFlags &flags, const PrintSetup &setup,
                                        ChartPrinter &printer,
                                        const ChartDocumentPrinter &printChart);

// The lower-case name of a printed quantity ("water", "temperature",
// "pressure"), as nakos-tool spells it.
QString print_quantityName(ChartQuantity q);

// The file of the `index`-th document when printing to a file: the first
// keeps the name chosen in the dialog, each further one gets its quantity
// before the extension ("charts.pdf", then "charts-pressure.pdf"), so one run
// never overwrites its own first file.
QString print_documentFileName(const QString &chosen, int index, ChartQuantity q);
