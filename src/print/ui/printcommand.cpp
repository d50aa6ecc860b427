#include "print/ui/printcommand.h"

#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "print/ui/qtprinter.h"

#include <QPrinter>

namespace {

void run(PrintDialogSeam &dialog, ChartPrinter &printer, ChartSet &charts,
         const DisplayFlags &flags) {
    const std::optional<PrintSetup> setup = dialog.print_selectPrinter();
    if (!setup)
        return;
    print_charts(flags, *setup, printer, [&charts](ChartQuantity q, QPaintDevice &device) {
        DataView *view = charts.chart(q);
        return view == nullptr || view->dataView_print(device);
    });
}

} // namespace

void PrintCommand::file_print(ChartSet &charts, const DisplayFlags &flags) {
    if (m_dialog && m_printer) {
        run(*m_dialog, *m_printer, charts, flags);
        return;
    }
    // A fresh printer each time, as the dialog always starts from the
    // default printer; it also keeps an earlier run's per-chart file names
    // out of the dialog.
    QPrinter printer(QPrinter::HighResolution);
    QtPrintDialog dialog(printer, m_parent);
    QtChartPrinter chartPrinter(printer);
    run(dialog, chartPrinter, charts, flags);
}
