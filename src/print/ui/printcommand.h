#pragma once

class ChartPrinter;
class ChartSet;
class PrintDialogSeam;
class QWidget;
struct DisplayFlags;

// The File menu's Print command: asks for a printer, then prints the water,
// temperature and pressure charts, in that order and each only when its
// print setting is on, as one document per chart through the chart window's
// dataView_print. A cancelled dialog prints nothing and says nothing; so
// does a run with every print setting off. The program's instance opens the
// platform dialog on a fresh printer each time; tests hand in scripted seams.
class PrintCommand {
public:
    // The printer dialog appears over `dialogParent`.
    explicit PrintCommand(QWidget *dialogParent = nullptr) : m_parent(dialogParent) {}
    // Both seams must outlive the command.
    PrintCommand(PrintDialogSeam &dialog, ChartPrinter &printer)
        : m_dialog(&dialog), m_printer(&printer) {}

    void file_print(ChartSet &charts, const DisplayFlags &flags);

private:
    QWidget *m_parent = nullptr;
    PrintDialogSeam *m_dialog = nullptr;
    ChartPrinter *m_printer = nullptr;
};
