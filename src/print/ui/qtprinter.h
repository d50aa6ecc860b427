#pragma once

#include "print/printrun.h"

#include <optional>

class QPrinter;
class QWidget;

// The printer selection of the print command, behind a seam so tests can
// answer it without a dialog.
class PrintDialogSeam {
public:
    virtual ~PrintDialogSeam() = default;
    // Lets the user pick a printer; nullopt when the dialog was cancelled.
    virtual std::optional<PrintSetup> print_selectPrinter() = 0;
};

// The platform's printer dialog on a QPrinter: titled "Select printer",
// landscape preset, without a "selection" or page-range choice (every chart
// is a one-page document of its own, so neither would mean anything). What
// the user picked is read back from the printer as the run's setup.
class QtPrintDialog : public PrintDialogSeam {
public:
    QtPrintDialog(QPrinter &printer, QWidget *parent) : m_printer(printer), m_parent(parent) {}
    std::optional<PrintSetup> print_selectPrinter() override;

private:
    QPrinter &m_printer;
    QWidget *m_parent;
};

// A QPrinter as the print run's printer: before each document it takes the
// dialog's copies and orientation, and when printing to a PDF file it names
// the document's file (print_documentFileName), since every document writes
// its file afresh.
class QtChartPrinter : public ChartPrinter {
public:
    explicit QtChartPrinter(QPrinter &printer) : m_printer(printer) {}
    QPaintDevice *print_document(ChartQuantity q, int index, const PrintSetup &setup) override;

private:
    QPrinter &m_printer;
};
