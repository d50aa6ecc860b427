#include "print/ui/qtprinter.h"

#include <QPrintDialog>
#include <QPrinter>

std::optional<PrintSetup> QtPrintDialog::print_selectPrinter() {
    m_printer.setPageOrientation(QPageLayout::Landscape);
    QPrintDialog dialog(&m_printer, m_parent);
    dialog.setWindowTitle(QStringLiteral("Select printer"));
    dialog.setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintCollateCopies |
                      QAbstractPrintDialog::PrintShowPageSize);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    PrintSetup setup;
    setup.copies = m_printer.copyCount();
    setup.orientation = m_printer.pageLayout().orientation();
    if (m_printer.outputFormat() == QPrinter::PdfFormat)
        setup.outputFileName = m_printer.outputFileName();
    return setup;
}

QPaintDevice *QtChartPrinter::print_document(ChartQuantity q, int index, const PrintSetup &setup) {
    m_printer.setCopyCount(setup.copies);
    m_printer.setPageOrientation(setup.orientation);
    if (!setup.outputFileName.isEmpty())
        m_printer.setOutputFileName(print_documentFileName(setup.outputFileName, index, q));
    return &m_printer;
}
